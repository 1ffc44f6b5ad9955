#include "driver/print_condition_record.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "forms/fcb_name.h"
#include "job/print_conditions.h"
#include "job/status.h"
#include "support/columns.h"
#include "support/messages.h"
#include "support/number.h"

namespace rlx {

namespace {

/// A column, counted from the layout digit.
struct Column {
  std::size_t offset;
  std::size_t width;
};

constexpr Column kFormName{1, 4};
constexpr Column kLongFormName{1, 8};
constexpr Column kCountA{9, 3};
constexpr Column kCountB{12, 3};
constexpr Column kCode4{35, 4};
constexpr Column kCode2{57, 2};
constexpr Column kCode3{59, 3};
constexpr Column kCode2b{62, 2};
constexpr Column kFlag3{66, 1};
constexpr Column kValue3{73, 5};

/// The columns whose place depends on the orientation.
struct BindingColumns {
  Column flag_1;
  Column flag_2;
  Column value_1;
  Column value_2;
};

constexpr BindingColumns kPortraitBinding{{69, 1}, {70, 1}, {78, 5}, {83, 5}};
constexpr BindingColumns kLandscapeBinding{{71, 1}, {72, 1}, {88, 5}, {93, 5}};

/// A record and where its columns begin.
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

/// The columns that every record has.
void take_common(const Columns& columns, Column form_name) {
  PrintConditions& conditions = print_conditions;
  take_text(columns, form_name, conditions.condition_form_name);
  conditions.condition_count_a = number(columns, kCountA);
  conditions.condition_count_b = number(columns, kCountB);
  if (conditions.condition_count_a == 0 && conditions.condition_form_name[0] != '\0') {
    conditions.condition_count_a = conditions.condition_count_b;
  }
  take_text(columns, kCode4, conditions.condition_code_4);
}

void take_binding(const Columns& columns, const BindingColumns& binding) {
  take_text(columns, binding.flag_1, print_conditions.condition_flag_1);
  take_text(columns, binding.flag_2, print_conditions.condition_flag_2);
  print_conditions.condition_value_1 = number(columns, binding.value_1);
  print_conditions.condition_value_2 = number(columns, binding.value_2);
}

void take_long_record(const Columns& columns) {
  const std::uint8_t layout = column_at(columns.record, columns.layout);
  if (layout != '0' && layout != '1' && layout != '2') {
    return;
  }
  PrintConditions& conditions = print_conditions;
  take_common(columns, layout == '2' ? kLongFormName : kFormName);
  take_text(columns, kCode2, conditions.condition_code_2);
  take_binding(columns,
               conditions.condition_code_2[0] == 'L' ? kLandscapeBinding : kPortraitBinding);
  take_text(columns, kCode3, conditions.condition_code_3);
  take_text(columns, kCode2b, conditions.condition_code_2b);
  take_text(columns, kFlag3, conditions.condition_flag_3);
  conditions.condition_value_3 = number(columns, kValue3);
}

}  // namespace

int parse_print_condition_record(const CommandRecord& record) {
  reset_print_conditions();
  const RecordShape shape = record_shape(record);
  if (!shape.has_length) {
    report("FCB data error");
    return kExitFailure;
  }
  const Columns columns{record, shape.layout};
  if (shape.data_length <= kShortRecordLength) {
    take_common(columns, kFormName);
  } else {
    take_long_record(columns);
  }
  return 0;
}

}  // namespace rlx
