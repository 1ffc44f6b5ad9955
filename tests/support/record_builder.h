#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "job/command_record.h"

namespace rlx::testing {

/// A record of a command with the given bytes. The room behind them is filled with '9's, so that a
/// reader that looks there is found out.
CommandRecord make_record(std::uint32_t code, std::string_view bytes);

/// The columns of a print-condition command. Each is written at its place as it stands, cut or not
/// as the test wants it; an empty one leaves blanks.
struct ConditionColumns {
  std::string layout = "0";     ///< b
  std::string form_overlay{};   ///< from b + 1
  std::string overlay_count{};  ///< from b + 9
  std::string copies{};         ///< from b + 12
  /// From b + 15 with layout "2", otherwise from b + 11, over the counts.
  std::string fcb_name{};
  std::string form_code{};       ///< from b + 35
  std::string orientation{};     ///< from b + 57
  std::string paper_size{};      ///< from b + 59
  std::string tray{};            ///< from b + 62
  std::string duplex{};          ///< b + 66
  std::string binding_margin{};  ///< from b + 73
  // With an orientation that begins with "L" the edge and the mode stand 2 bytes and the offsets 10
  // bytes further right.
  std::string binding_edge{};   ///< b + 69
  std::string binding_mode{};   ///< b + 70
  std::string first_offset{};   ///< from b + 78
  std::string second_offset{};  ///< from b + 83
  /// Data bytes; the columns behind them are cut off. The longest column ends with the 100th.
  std::size_t data_length = 100;
};

/// The data of a print-condition command: two blanks, the layout (b is the third byte), the
/// columns.
std::string condition_data(const ConditionColumns& columns);

/// The sequence as it stands in a job: ESC "Q1;", the length of the data, " n", the data.
std::string condition_sequence(std::string_view data);

/// condition_sequence of condition_data.
std::string condition_sequence(const ConditionColumns& columns);

/// The CommandRecord of condition_sequence.
CommandRecord condition_record(const ConditionColumns& columns);

}  // namespace rlx::testing
