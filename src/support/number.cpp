#include "support/number.h"

#include <cstddef>
#include <limits>

namespace rlx {

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

/// Minus the value of the digits at the start of a text; the smallest number when they say less.
/// There is one negative number more than there are positive ones.
std::int64_t negated_digits(std::string_view text) {
  constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
  std::int64_t value = 0;
  for (const char character : text) {
    if (!is_digit(static_cast<std::uint8_t>(character))) {
      break;
    }
    const int digit = character - '0';
    if (value < (kSmallest + digit) / 10) {
      return kSmallest;
    }
    value = value * 10 - digit;
  }
  return value;
}

std::int64_t negated(std::int64_t value) {
  constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
  return value == kSmallest ? std::numeric_limits<std::int64_t>::max() : -value;
}

}  // namespace

std::int32_t decimal_value(std::string_view text) {
  const std::size_t blanks = text.find_first_not_of(kBlanks);
  if (blanks == std::string_view::npos) {
    return 0;
  }
  text.remove_prefix(blanks);
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') {
    text.remove_prefix(1);
  }
  const std::int64_t value = negated_digits(text);
  return static_cast<std::int32_t>(negative ? value : negated(value));
}

}  // namespace rlx
