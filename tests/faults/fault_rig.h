#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "faults/fault_board.h"
#include "faults/fault_jobs.h"
#include "support/descriptors.h"

namespace rlx::testing {

/// Added to the number of the signal that ended a program, where its exit status would stand.
inline constexpr int kEndedBySignal = 1000;

/// What came of a run.
struct Outcome {
  int status = 0;  ///< exit status, or kEndedBySignal and the signal
  std::string output;
  std::string messages;
  Tally tally;
};

/// Descriptors that a program starts with.
struct Streams {
  int input;
  int output;
  int messages;
};

/// Another program than the project's may stand in for the filter: its path is in this variable.
/// What only the filter promises is not asked of it then.
inline constexpr const char* kProgramVariable = "RLX_FAULT_PROGRAM";
bool is_other_program();

/// A fresh directory in which a program runs with the shim in front of the C library, again and
/// again. While it lives it is the current directory.
class FaultRig {
 public:
  /// The filter, with the job's files.
  explicit FaultRig(const Job& job);
  /// Another program. It is called "filter" as well.
  FaultRig(std::string program, std::vector<std::string> options);
  ~FaultRig();
  FaultRig(const FaultRig&) = delete;
  FaultRig& operator=(const FaultRig&) = delete;

  void set_input(std::string_view input) const;

  /// A whole run; input, output and messages are files in memory.
  Outcome run(const Plan& plan = {});

  /// Starts a run on other descriptors and returns when the shim stands.
  pid_t start(const Plan& plan, const Streams& streams);
  /// Waits for the end of such a run. @return as Outcome::status.
  static int wait_for(pid_t process);

  const Tally& tally() const { return board_->tally; }

 private:
  pid_t spawn(const Plan& plan, const Streams& streams);

  ScratchDirectory scratch_;
  std::string program_;
  std::vector<std::string> options_;
  FaultBoard* board_;
  Streams files_;
};

/// Where the calls of a function went in a run.
std::uint32_t calls_of(const Tally& tally, Call call, Role role);

/// A file in memory that holds the bytes, its offset at the start.
int open_memory_file(std::string_view bytes);
/// All bytes of a file in memory.
std::string memory_file_bytes(int descriptor);

}  // namespace rlx::testing
