#pragma once

#include <array>
#include <cstdint>

namespace rlx {

/// The print conditions of the job, as the last print-condition command gave them. The job header
/// sends them to the printer. Texts are NUL-terminated; an empty text or a 0 means "not given".
///
/// Each comment tells the key of the job header, or the sequence, that sends the value; the columns
/// of the record that bring it, counted from the layout digit at 0 (support/condition_columns.h);
/// and, in parentheses, the older names of the value, from before its meaning was known.
struct PrintConditions {
  /// FOV: form overlay, up to 8 characters. Columns 1-4, or 1-8 in layout 2. (condition_form_name)
  std::array<char, 9> form_overlay{};
  /// OVS: overlay count; the copies when it is 0 and there is an overlay. Columns
  /// 9-11. (condition_count_a)
  std::int32_t overlay_count = 0;
  /// CPS: copies. Columns 12-14. (condition_count_b)
  std::int32_t copies = 0;
  /// FRM: form code, up to 4 characters. Columns 35-38. (condition_code_4)
  std::array<char, 5> form_code{};
  /// ORT: orientation "P", "L", "PZ", "LZ" or "LP". Columns 57-58 of a long record.
  /// (condition_code_2)
  std::array<char, 3> orientation{};
  /// ESC Q ... !W: edge to bind at, "U", "L" or other. Column 69, or 71 when the orientation begins
  /// with "L". (condition_flag_1, bind_edge)
  std::array<char, 2> binding_edge{};
  /// With DUP: a change of it alone sends the binding anew. Column 70 or 72. (condition_flag_2,
  /// bind_mode)
  std::array<char, 2> binding_mode{};
  /// ESC Q ... !H: first offset, 1/7200 inch. Columns 78-82, or 88-92 when the orientation begins
  /// with "L". (condition_value_1)
  std::int32_t first_offset = 0;
  /// ESC Q ... !H: second offset, 1/7200 inch. Columns 83-87 or 93-97. (condition_value_2)
  std::int32_t second_offset = 0;
  /// PSZ: paper size, such as "A4" or "LTR". The job header replaces it by "LP" when a form length
  /// is sent. Columns 59-61. (condition_code_3)
  std::array<char, 4> paper_size{};
  /// BIN: tray "P1" to "P4", or "P". Columns 62-63. (condition_code_2b)
  std::array<char, 3> tray{};
  /// DUP: "B" is duplex. Column 66. (condition_flag_3)
  std::array<char, 2> duplex{};
  /// ESC Q ... !W: binding margin, 1/7200 inch. Columns 73-77. (condition_value_3)
  std::int32_t binding_margin = 0;
};

}  // namespace rlx
