#include "rlx-printer-app/job_order.h"

#include <algorithm>

namespace rlx::printer_app {

namespace {

using State = QueuedJob::State;

bool may_print(const QueuedJob& job) {
  return job.ready && !job.held_by_operator && job.state != State::printing;
}

}  // namespace

OrderStep next_step(std::span<const QueuedJob> jobs) {
  OrderStep step;
  const auto first = std::find_if(jobs.begin(), jobs.end(), may_print);
  for (const QueuedJob& job : jobs) {
    const bool is_first = first != jobs.end() && job.id == first->id;
    if (!is_first && job.state == State::pending) {
      step.hold.push_back(job.id);
    }
  }
  if (first != jobs.end() && first->state == State::held) {
    step.release = first->id;
  }
  return step;
}

}  // namespace rlx::printer_app
