#include "driver/loop/print_condition_command.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "support/condition_columns.h"
#include "support/number.h"

namespace rlx {

namespace {

using namespace command_columns;

/// A command and where its columns begin.
struct Columns {
  const CommandRecord& record;
  std::size_t layout;
};

/// Puts the letters and digits of a column into a text field.
template <std::size_t Room>
void take_text(const Columns& columns, Column column, std::array<char, Room>& field) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < column.width && length < Room - 1; ++i) {
    const std::uint8_t byte = column_at(columns.record, columns.layout + column.offset + i);
    if (is_letter_or_digit(byte)) {
      field[length++] = static_cast<char>(byte);
    }
  }
}

std::int32_t number(const Columns& columns, Column column) {
  return decimal_column(columns.record, columns.layout + column.offset, column.width);
}

/// The columns that every command has.
void take_common(const Columns& columns, Column form_overlay, PrintConditions& conditions) {
  take_text(columns, form_overlay, conditions.form_overlay);
  conditions.overlay_count = number(columns, kOverlayCount);
  conditions.copies = number(columns, kCopies);
  if (conditions.overlay_count == 0 && conditions.form_overlay[0] != '\0') {
    conditions.overlay_count = conditions.copies;
  }
  take_text(columns, kFormCode, conditions.form_code);
}

void take_binding(const Columns& columns, const Binding& binding, PrintConditions& conditions) {
  take_text(columns, binding.edge, conditions.binding_edge);
  take_text(columns, binding.mode, conditions.binding_mode);
  conditions.first_offset = number(columns, binding.first_offset);
  conditions.second_offset = number(columns, binding.second_offset);
}

void take_long_command(const Columns& columns, PrintConditions& conditions) {
  const std::uint8_t layout = column_at(columns.record, columns.layout);
  if (layout != '0' && layout != '1' && layout != '2') {
    return;
  }
  take_common(columns, layout == kLongOverlayLayout ? kLongFormOverlay : kFormOverlay, conditions);
  take_text(columns, kOrientation, conditions.orientation);
  take_binding(columns, conditions.orientation[0] == 'L' ? kLandscapeBinding : kPortraitBinding,
               conditions);
  take_text(columns, kPaperSize, conditions.paper_size);
  take_text(columns, kTray, conditions.tray);
  take_text(columns, kDuplex, conditions.duplex);
  conditions.binding_margin = number(columns, kBindingMargin);
}

}  // namespace

Status parse_print_condition_command(const Messages& messages, const CommandRecord& record,
                                     PrintConditions& conditions) {
  conditions = PrintConditions{};
  const CommandShape shape = command_shape(record);
  if (!shape.has_length) {
    report(messages, "FCB data error");
    return ST_FAILED;
  }
  const Columns columns{record, shape.layout};
  if (shape.data_length <= kShortCommandLength) {
    take_common(columns, kFormOverlay, conditions);
  } else {
    take_long_command(columns, conditions);
  }
  return ST_OK;
}

}  // namespace rlx
