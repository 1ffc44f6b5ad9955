#include "rlx-printer-app/job_order.h"

#include <algorithm>

namespace rlx::printer_app {

namespace {

using State = QueuedJob::State;

bool waits(const QueuedJob& job) {
  return job.state == State::held || job.state == State::pending;
}

bool may_print(const QueuedJob& job) {
  return job.ready && !job.held_by_operator && waits(job);
}

}  // namespace

OrderStep next_step(std::span<const QueuedJob> jobs) {
  OrderStep step;
  const bool all_may_wait = std::any_of(
      jobs.begin(), jobs.end(), [](const QueuedJob& job) { return job.state == State::printing; });
  const auto first = std::find_if(jobs.begin(), jobs.end(), may_print);
  for (const QueuedJob& job : jobs) {
    const bool may_be_pending = all_may_wait || (first != jobs.end() && job.id == first->id);
    if (may_print(job)) {
      if (may_be_pending && job.state == State::held) {
        step.release.push_back(job.id);
      } else if (!may_be_pending && job.state == State::pending) {
        step.hold.push_back(job.id);
      }
    } else if (job.held_by_operator && job.state == State::pending) {
      // Held in the very moment in which it was released here.
      step.hold.push_back(job.id);
    } else if (!job.ready && !job.held_by_operator && !job.waits_when_ready && waits(job) &&
               !all_may_wait && jobs.size() > 1) {
      step.hold_when_ready.push_back(job.id);
    }
  }
  return step;
}

}  // namespace rlx::printer_app
