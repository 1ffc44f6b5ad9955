#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "faults/fault_rig.h"

namespace rlx::testing {

/// How a run between two pipes goes on.
struct PipedRun {
  bool nonblocking = false;                           ///< the program's ends of the pipes
  std::size_t portion = 4096;                         ///< bytes that host and printer move at once
  int idle_turns = 0;                                 ///< turns before the printer reads anything
  std::function<void(pid_t)> disturb = [](pid_t) {};  ///< called once a turn
};

/// Feeds a job to the program through a pipe and reads what it prints from another. The first
/// portion is there before the program starts.
Outcome run_between_pipes(FaultRig& rig, std::string_view job, const PipedRun& how,
                          const Plan& plan = {});

/// A signal that does no harm; the plan has to be an interruptible one.
void interrupt(pid_t process);

/// Stops a process, and lets it go on when it has stopped.
void pause_and_continue(pid_t process);

}  // namespace rlx::testing
