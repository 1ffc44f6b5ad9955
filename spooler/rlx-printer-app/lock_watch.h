#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "running/cancellation.h"

namespace rlx::printer_app {

/// Looks again and again whether something can still be done, and calls for help when it takes too
/// long. A server in which two threads wait for each other's locks is ended, for systemd to start
/// it again.
class LockWatch {
 public:
  /// @param touch  does what may take for ever.
  /// @param help   is called once, in another thread, when `touch` has not come back in time.
  LockWatch(std::function<void()> touch, std::function<void()> help,
            std::chrono::milliseconds patience);
  /// Waits for `touch` to come back.
  ~LockWatch();
  LockWatch(const LockWatch&) = delete;
  LockWatch& operator=(const LockWatch&) = delete;

 private:
  void touch_again();
  void watch();

  std::function<void()> touch_;
  std::function<void()> help_;
  std::chrono::milliseconds patience_;
  std::atomic<unsigned> touches_ = 0;
  spooler::Cancellation done_;
  std::thread touching_;
  std::thread watching_;
};

}  // namespace rlx::printer_app
