#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace rlx::printer_app {

/// A job that has not ended, as far as its turn goes.
struct QueuedJob {
  enum class State : std::uint8_t {
    held,
    pending,
    starting,  ///< PAPPL looks for its printer
    printing,
    ending  ///< PAPPL starts another one in a moment
  };

  int id = 0;
  State state = State::held;
  bool ready = false;             ///< its document is here
  bool held_by_operator = false;  ///< or by whoever submitted it; that is left alone
  bool waits_when_ready = false;  ///< PAPPL does not start it when its document comes
};

/// What makes the oldest job the next one.
struct OrderStep {
  std::vector<int> hold;             ///< jobs that would come too early
  std::vector<int> hold_when_ready;  ///< jobs that may come too early when their documents are here
  std::vector<int> release;          ///< jobs that may be pending
};

/// PAPPL starts the newest of the jobs that are pending. So they may be pending while another one
/// prints, but when a printer is free, or about to be, only the oldest: the first that is ready and
/// that nobody wants to wait.
/// @param jobs  all of one printer, by rising number.
OrderStep next_step(std::span<const QueuedJob> jobs);

}  // namespace rlx::printer_app
