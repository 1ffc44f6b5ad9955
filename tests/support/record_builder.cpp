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
  put(data, 1, columns.form_overlay);
  put(data, 9, columns.overlay_count);
  put(data, 12, columns.copies);
  put(data, columns.layout == "2" ? 15 : 11, columns.fcb_name);
  put(data, 35, columns.form_code);
  put(data, 57, columns.orientation);
  put(data, 59, columns.paper_size);
  put(data, 62, columns.tray);
  put(data, 66, columns.duplex);
  put(data, 73, columns.binding_margin);
  const bool landscape = columns.orientation.starts_with('L');
  put(data, landscape ? 71 : 69, columns.binding_edge);
  put(data, landscape ? 72 : 70, columns.binding_mode);
  put(data, landscape ? 88 : 78, columns.first_offset);
  put(data, landscape ? 93 : 83, columns.second_offset);
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
