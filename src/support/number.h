#pragma once

#include <cstdint>
#include <string_view>

namespace rlx {

/// True for 0-9.
constexpr bool is_digit(std::uint8_t byte) {
  return byte >= '0' && byte <= '9';
}

/// True for 0-9, A-Z and a-z, whatever the locale.
constexpr bool is_letter_or_digit(std::uint8_t byte) {
  return is_digit(byte) || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

/// The decimal number at the start of a text of any length: leading blanks (space, and TAB to CR)
/// and a sign are allowed, what follows the digits is ignored, no digits give 0. A number too large
/// for 64 bits counts as the largest one; the low 32 bits are kept, with no range check.
std::int32_t decimal_value(std::string_view text);

}  // namespace rlx
