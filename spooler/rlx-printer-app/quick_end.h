#pragma once

#include <pappl/pappl.h>

#include <chrono>
#include <functional>
#include <thread>

#include "rlx-printer-app/job_queue.h"
#include "running/cancellation.h"

namespace rlx::printer_app {

/// Ends the server soon after SIGTERM, SIGINT or a request to shut down. PAPPL waits for all jobs
/// that have not ended, held ones and those of a printer that is away too, a minute at most. Here
/// only those are waited for that have begun to reach their printer: the others begin anew with the
/// next server, for which the journal has them.
///
/// It has a thread of its own. PAPPL's timers do not do: of two that are due in the same second it
/// may forget one.
class QuickEnd {
 public:
  /// Takes the signals from PAPPL, soon after the system has taken them. One object a process.
  /// @param end  ends the process.
  QuickEnd(pappl_system_t* system, JobQueue& queue, std::function<void()> end);
  ~QuickEnd();
  QuickEnd(const QuickEnd&) = delete;
  QuickEnd& operator=(const QuickEnd&) = delete;

 private:
  using Clock = std::chrono::steady_clock;

  void watch();
  bool is_asked() const;

  pappl_system_t* system_;
  JobQueue& queue_;
  std::function<void()> end_;
  spooler::Cancellation done_;
  std::thread thread_;
};

}  // namespace rlx::printer_app
