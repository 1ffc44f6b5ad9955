#include "support/condition_columns.h"

#include <algorithm>
#include <string_view>

#include "support/number.h"

namespace rlx {

namespace {

constexpr std::size_t kLengthPosition = 4;
/// From the blank behind the data length to the layout digit.
constexpr std::size_t kBlankToLayout = 4;

/// The first blank at or behind the data length.
std::size_t blank_position(const CommandRecord& record) {
  std::size_t blank = kLengthPosition;
  while (column_at(record, blank) != ' ') {
    ++blank;
  }
  return blank;
}

}  // namespace

std::int32_t decimal_column(const CommandRecord& record, std::size_t position, std::size_t width) {
  const std::string_view text(reinterpret_cast<const char*>(record.bytes.data()),
                              static_cast<std::size_t>(record.length));
  return decimal_value(text.substr(std::min(position, text.size()), width));
}

std::size_t layout_position(const CommandRecord& record) {
  return blank_position(record) + kBlankToLayout;
}

CommandShape command_shape(const CommandRecord& record) {
  const std::size_t blank = blank_position(record);
  if (blank == kLengthPosition) {
    return {};
  }
  return {.has_length = true,
          .data_length = decimal_column(record, kLengthPosition, blank - kLengthPosition),
          .layout = blank + kBlankToLayout};
}

}  // namespace rlx
