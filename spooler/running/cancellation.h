#pragma once

#include <atomic>

#include "running/descriptor.h"

namespace rlx::spooler {

/// The wish to end something early. It is asked for from a signal handler or another thread, at any
/// time, and stays.
class Cancellation {
 public:
  /// @param whole  whoever cancels that cancels this, too; it must stay as long as this lives, and
  ///               has no whole of its own.
  /// @throws std::system_error when there is no pipe.
  explicit Cancellation(const Cancellation* whole = nullptr);

  /// Safe in a signal handler.
  void ask() noexcept;
  bool is_asked() const noexcept;

  /// Waits until a descriptor can be read or written (`events`, as for poll), has ended, or the
  /// cancellation is asked for. @return false in the last case.
  bool wait_for(int descriptor, short events) const;

  /// Waits for some time. @return false when the cancellation is asked for before it is over.
  bool pause(int milliseconds) const;

 private:
  bool wait(int descriptor, short events, int milliseconds) const;

  const Cancellation* whole_;
  std::atomic<bool> asked_ = false;
  Pipe pipe_;  ///< can be read when it is asked for
};

/// Asks for the cancellation when the process is told to end (SIGTERM, SIGINT, SIGHUP, SIGQUIT; lpd
/// sends more than one of them). A broken pipe becomes a failed write. The ends of children can be
/// waited for, also when whoever started this process has switched that off.
/// @param cancellation  must stay until the process ends.
void cancel_on_signals(Cancellation& cancellation);

}  // namespace rlx::spooler
