#pragma once

#include <array>
#include <cstdint>

namespace rlx {

/// The print conditions of the job, as the last print-condition command gave them. The job header
/// sends them to the printer. Texts are NUL-terminated; an empty text or a 0 means "not given".
///
/// Each comment tells the key of the job header, or the sequence, that sends the value, and in
/// parentheses the older names of the value, from before its meaning was known. The columns that
/// bring it are in support/condition_columns.h.
struct PrintConditions {
  /// FOV: form overlay, up to 8 characters. (condition_form_name)
  std::array<char, 9> form_overlay{};
  /// OVS: overlay count; the copies when it is 0 and there is an overlay. (condition_count_a)
  std::int32_t overlay_count = 0;
  /// CPS: copies. (condition_count_b)
  std::int32_t copies = 0;
  /// FRM: form code, up to 4 characters. (condition_code_4)
  std::array<char, 5> form_code{};
  /// ORT: orientation "P", "L", "PZ", "LZ" or "LP". (condition_code_2)
  std::array<char, 3> orientation{};
  /// ESC Q ... !W: edge to bind at, "U", "L" or other. (condition_flag_1, bind_edge)
  std::array<char, 2> binding_edge{};
  /// With DUP: a change of it alone sends the binding anew. (condition_flag_2, bind_mode)
  std::array<char, 2> binding_mode{};
  /// ESC Q ... !H: first offset, 1/7200 inch. (condition_value_1)
  std::int32_t first_offset = 0;
  /// ESC Q ... !H: second offset, 1/7200 inch. (condition_value_2)
  std::int32_t second_offset = 0;
  /// PSZ: paper size, such as "A4" or "LTR". The job header replaces it by "LP" when a form length
  /// is sent. (condition_code_3)
  std::array<char, 4> paper_size{};
  /// BIN: tray "P1" to "P4", or "P". (condition_code_2b)
  std::array<char, 3> tray{};
  /// DUP: "B" is duplex. (condition_flag_3)
  std::array<char, 2> duplex{};
  /// ESC Q ... !W: binding margin, 1/7200 inch. (condition_value_3)
  std::int32_t binding_margin = 0;
};

}  // namespace rlx
