#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "running/child_process.h"

namespace rlx::printer_app {

/// What a program may take at most.
struct ProgramLimits {
  std::chrono::milliseconds time{15000};
  std::size_t output_bytes = std::size_t{4} << 20U;
};

struct ProgramResult {
  spooler::ProcessEnd end;
  std::string output;      ///< standard output
  std::string messages;    ///< standard error, at most kMostMessageBytes
  bool timed_out = false;  ///< killed because of the time
  bool cut = false;        ///< killed because of the length of its output; `output` is its front

  static constexpr std::size_t kMostMessageBytes = 16384;
};

/// Runs a program to its end, or to its limits: then it is killed, and what it has started.
/// @param input  what it reads as its standard input.
/// @throws std::system_error when it cannot be started.
ProgramResult run_program(const std::string& program, const std::vector<std::string>& arguments,
                          std::string_view input, const ProgramLimits& limits = {});

/// A place among the few requests that may run programs at the same time. A request takes one, not
/// one for each program.
class RunPlace {
 public:
  /// Waits for a place, but not for ever.
  RunPlace();
  ~RunPlace();
  RunPlace(const RunPlace&) = delete;
  RunPlace& operator=(const RunPlace&) = delete;

  /// False when there was none for kMostWait.
  bool is_there() const { return is_there_; }

  static constexpr int kPlaces = 2;
  static constexpr std::chrono::seconds kMostWait{20};

 private:
  bool is_there_;
};

}  // namespace rlx::printer_app
