#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "mapping/filter_arguments.h"

namespace rlx::lpd {

/// What the command line says. Its words come from two places:
///
/// - The printcap entry of the queue. These are ours and begin with two hyphens; a value stands
///   behind "=" or in the next word.
///
///       --mode N              emulation mode of the printer: 1, 2, 3, 4, 6 or 7
///       --resolution N        dots per inch
///       --capabilities LIST   what the printer can do, such as D240!D400
///       --flags LETTERS       of A, D, f and q
///       --forms DIR           forms stand below, in fcbe/NAME; may be given more than once
///       --options OPTIONS     job options of all jobs of the queue, written as with lpr -Z
///       --cancel-seconds N    how long a cancelled job may take to end in the printer
///       --verbose             the filter's command line is told, too
///       --help, --version
///
/// - LPRng, which puts the job's properties behind them (filter_options in printcap(5)): a hyphen,
///   a letter and, in the same word or in the next one, a value. Of these -Z, -e, -P and -j matter
///   here. All others, and words without a hyphen (the accounting file), are LPRng's own and go no
///   further.
struct LpdArguments {
  enum class Task : std::uint8_t { print, help, version };

  Task task = Task::print;
  spooler::QueueSettings queue;
  std::string queue_options;  ///< --options
  std::string job_options;    ///< -Z: lpr -Z
  std::string data_file;      ///< -e: name of the job's file that is being printed
  std::string printer;        ///< -P: the queue's name
  std::string job_number;     ///< -j
  std::chrono::seconds cancel_time = kUsualCancelTime;
  bool verbose = false;
  /// What is wrong with the printcap entry; empty when nothing is.
  std::string fault;

  static constexpr std::chrono::seconds kUsualCancelTime{30};
  static constexpr std::chrono::seconds kMostCancelTime{86400};
};

/// @param words  those behind the program's name.
LpdArguments read_arguments(const std::vector<std::string>& words);

}  // namespace rlx::lpd
