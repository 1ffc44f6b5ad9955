#pragma once

#include <cstddef>
#include <cstdint>

#include "job/command_record.h"

namespace rlx {

// Print-condition records have fixed columns. Positions count the command's bytes from ESC as 0.

/// The byte at a position of a record; a column behind the record's end reads as a blank.
inline std::uint8_t column_at(const CommandRecord& record, std::size_t position) {
  return position < static_cast<std::size_t>(record.length) ? record.bytes[position]
                                                            : std::uint8_t{' '};
}

/// True for 0-9, A-Z and a-z, whatever the locale.
constexpr bool is_letter_or_digit(std::uint8_t byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z');
}

/// True for 0-9.
constexpr bool is_digit(std::uint8_t byte) {
  return byte >= '0' && byte <= '9';
}

/// The decimal number at the start of a NUL-terminated text: leading blanks and a sign are allowed,
/// what follows the digits is ignored, no digits give 0. A number too large for 64 bits counts as
/// the largest one; the low 32 bits are kept, with no range check.
std::int32_t decimal_value(const char* text);

/// decimal_value of `width` columns of a record from `position` on.
std::int32_t decimal_column(const CommandRecord& record, std::size_t position, std::size_t width);

}  // namespace rlx
