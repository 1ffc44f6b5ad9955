#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace rlx::printer_app {

/// A job that has not ended, as far as its turn goes.
struct QueuedJob {
  enum class State : std::uint8_t { held, pending, printing };

  int id = 0;
  State state = State::held;
  bool ready = false;             ///< its document is here
  bool held_by_operator = false;  ///< or by whoever submitted it; that is left alone
};

/// What makes the oldest job the next one.
struct OrderStep {
  std::vector<int> hold;       ///< jobs that would come too early
  std::optional<int> release;  ///< the oldest, when it is held
};

/// PAPPL starts the newest of the jobs that are pending, so at most one of a printer may be: the
/// oldest that is ready and that nobody wants to wait.
/// @param jobs  all of one printer, by rising number.
OrderStep next_step(std::span<const QueuedJob> jobs);

}  // namespace rlx::printer_app
