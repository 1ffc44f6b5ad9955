#pragma once

#include <array>
#include <cstdint>

namespace rlx {

/// The print conditions of the job, as the last print-condition record gave them. The job header
/// sends them to the printer. Texts are NUL-terminated; an empty text or a 0 means "not given".
struct PrintConditions {
  std::array<char, 9> condition_form_name{};  ///< FOV: form overlay name, up to 8 characters
  std::int32_t condition_count_a = 0;         ///< OVS: overlay count
  std::int32_t condition_count_b = 0;         ///< CPS: copies
  std::array<char, 5> condition_code_4{};     ///< FRM: form code, up to 4 characters
  std::array<char, 3> condition_code_2{};     ///< ORT: orientation "P", "L", "PZ", "LZ" or "LP"
  std::array<char, 2> condition_flag_1{};     ///< `bind_edge`: edge to bind at, "U", "L" or other
  std::array<char, 2> condition_flag_2{};     ///< `bind_mode`
  std::int32_t condition_value_1 = 0;         ///< first offset, 1/7200 inch
  std::int32_t condition_value_2 = 0;         ///< second offset, 1/7200 inch
  /// PSZ: paper size, such as "A4" or "LTR". The job header replaces it by "LP" when a form length
  /// is sent.
  std::array<char, 4> condition_code_3{};
  std::array<char, 3> condition_code_2b{};  ///< BIN: tray "P1" to "P4", or "P"
  std::array<char, 2> condition_flag_3{};   ///< DUP: "B" is duplex
  std::int32_t condition_value_3 = 0;       ///< binding margin, 1/7200 inch
};

/// The conditions in force, for the whole process.
extern PrintConditions print_conditions;

/// Forgets all conditions.
void reset_print_conditions();

}  // namespace rlx
