#include "forms/fcb_name.h"

#include "job/status.h"
#include "support/condition_columns.h"
#include "support/messages.h"
#include "support/number.h"

namespace rlx {

namespace {

/// Copies a name; false when it holds a character that no name has.
bool copy_name(const CommandRecord& record, std::size_t position, Column column, FcbName& name) {
  name = {};
  position += column.offset;
  for (std::size_t i = 0; i < column.width; ++i) {
    const std::uint8_t byte = column_at(record, position + i);
    if (byte == ' ') {
      return true;
    }
    if (!is_letter_or_digit(byte)) {
      return false;
    }
    name[i] = static_cast<char>(byte);
  }
  return true;
}

}  // namespace

Status fcb_name_from_command(const Messages& messages, const CommandRecord& record, FcbName& name) {
  const CommandShape shape = command_shape(record);
  if (!shape.has_length || shape.data_length <= kShortCommandLength) {
    report(messages, "FCB data error");
    return ST_FAILED;
  }
  const bool long_overlay = column_at(record, shape.layout) == kLongOverlayLayout;
  const Column column =
      long_overlay ? command_columns::kFcbNameLongOverlay : command_columns::kFcbName;
  if (!copy_name(record, shape.layout, column, name)) {
    report(messages, "FCB name error");
    return ST_FAILED;
  }
  return ST_OK;
}

}  // namespace rlx
