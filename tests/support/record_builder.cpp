#include "support/record_builder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace rlx::testing {

namespace {

/// The layout digit's place in the data.
constexpr std::size_t kLayout = 2;

/// Writes a column that is counted from the layout digit, as far as the data reaches.
void put(std::string& data, std::size_t offset, std::string_view column) {
  for (std::size_t i = 0; i < column.size() && kLayout + offset + i < data.size(); ++i) {
    data[kLayout + offset + i] = column[i];
  }
}

}  // namespace

CommandRecord make_record(std::uint32_t code, std::string_view bytes) {
  CommandRecord record;
  EXPECT_LE(bytes.size(), record.bytes.size());
  record.code = code;
  record.length = static_cast<std::int32_t>(bytes.size());
  record.bytes.fill('9');
  std::ranges::copy(bytes, record.bytes.begin());
  return record;
}

std::string condition_data(const ConditionColumns& columns) {
  std::string data(columns.data_length, ' ');
  put(data, 0, columns.layout);
  put(data, 1, columns.form_name);
  put(data, 9, columns.count_a);
  put(data, 12, columns.count_b);
  put(data, columns.layout == "2" ? 15 : 11, columns.fcb_name);
  put(data, 35, columns.code_4);
  put(data, 57, columns.code_2);
  put(data, 59, columns.code_3);
  put(data, 62, columns.code_2b);
  put(data, 66, columns.flag_3);
  put(data, 73, columns.value_3);
  const bool landscape = columns.code_2.starts_with('L');
  put(data, landscape ? 71 : 69, columns.flag_1);
  put(data, landscape ? 72 : 70, columns.flag_2);
  put(data, landscape ? 88 : 78, columns.value_1);
  put(data, landscape ? 93 : 83, columns.value_2);
  return data;
}

std::string condition_sequence(std::string_view data) {
  std::string sequence = "\x1bQ1;" + std::to_string(data.size()) + " n";
  sequence += data;
  return sequence;
}

std::string condition_sequence(const ConditionColumns& columns) {
  return condition_sequence(condition_data(columns));
}

CommandRecord condition_record(const ConditionColumns& columns) {
  return make_record(CMD_Q_NL_SP, condition_sequence(columns));
}

}  // namespace rlx::testing
