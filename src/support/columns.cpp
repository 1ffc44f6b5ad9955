#include "support/columns.h"

#include <array>
#include <cstdlib>

namespace rlx {

namespace {
constexpr std::size_t kWidestNumber = 31;
}  // namespace

std::int32_t decimal_value(const char* text) {
  return static_cast<std::int32_t>(std::strtol(text, nullptr, 10));
}

std::int32_t decimal_column(const CommandRecord& record, std::size_t position, std::size_t width) {
  std::array<char, kWidestNumber + 1> text{};
  for (std::size_t i = 0; i < width && i < kWidestNumber; ++i) {
    text[i] = static_cast<char>(column_at(record, position + i));
  }
  return decimal_value(text.data());
}

}  // namespace rlx
