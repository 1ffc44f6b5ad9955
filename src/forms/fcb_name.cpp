#include "forms/fcb_name.h"

#include <array>

#include "job/status.h"
#include "support/columns.h"
#include "support/messages.h"
#include "support/number.h"

namespace rlx {

namespace {

constexpr std::size_t kLengthPosition = 4;
/// From the blank behind the data length to the layout digit.
constexpr std::size_t kBlankToLayout = 4;

constexpr std::size_t kNameBytes = 4;
constexpr std::size_t kNameColumn = 11;
constexpr std::size_t kNameColumnLongFormName = 15;
constexpr std::uint8_t kLongFormNameLayout = '2';

std::array<char, kNameBytes + 1> fcb_name;

/// Copies the name to fcb_name; false when it holds a character that no name has.
bool copy_name(const CommandRecord& record, std::size_t position) {
  fcb_name = {};
  for (std::size_t i = 0; i < kNameBytes; ++i) {
    const std::uint8_t byte = column_at(record, position + i);
    if (byte == ' ') {
      return true;
    }
    if (!is_letter_or_digit(byte)) {
      return false;
    }
    fcb_name[i] = static_cast<char>(byte);
  }
  return true;
}

}  // namespace

RecordShape record_shape(const CommandRecord& record) {
  std::size_t blank = kLengthPosition;
  while (column_at(record, blank) != ' ') {
    ++blank;
  }
  if (blank == kLengthPosition) {
    return {};
  }
  return {.has_length = true,
          .data_length = decimal_column(record, kLengthPosition, blank - kLengthPosition),
          .layout = blank + kBlankToLayout};
}

int fcb_name_from_record(const CommandRecord& record, const char*& name) {
  const RecordShape shape = record_shape(record);
  if (!shape.has_length || shape.data_length <= kShortRecordLength) {
    report("FCB data error");
    return kExitFailure;
  }
  const bool long_form_name = column_at(record, shape.layout) == kLongFormNameLayout;
  if (!copy_name(record, shape.layout + (long_form_name ? kNameColumnLongFormName : kNameColumn))) {
    report("FCB name error");
    return kExitFailure;
  }
  name = fcb_name.data();
  return 0;
}

}  // namespace rlx
