#include "rlx-printer-app/job_turns.h"

#include <algorithm>

namespace rlx::printer_app {

bool JobTurns::enter(int printer_id, int job_id) {
  const Job job(printer_id, job_id);
  const std::lock_guard lock(changing_);
  if (std::find(before_.begin(), before_.end(), job) != before_.end()) {
    return false;
  }
  before_.push_back(job);
  if (before_.size() > kRemembered) {
    before_.pop_front();
  }
  inside_.insert(job);
  return true;
}

/// True when nobody of the same printer prints or comes first.
bool JobTurns::is_first(const Job& job) const {
  const auto same_printer = [&job](const Job& other) { return other.first == job.first; };
  return std::none_of(printing_.begin(), printing_.end(), same_printer) &&
         *std::find_if(inside_.begin(), inside_.end(), same_printer) == job;
}

void JobTurns::wait(int printer_id, int job_id) {
  const Job job(printer_id, job_id);
  std::unique_lock lock(changing_);
  left_.wait(lock, [this, &job] { return is_first(job); });
  printing_.insert(job);
}

void JobTurns::leave(int printer_id, int job_id) {
  const Job job(printer_id, job_id);
  const std::lock_guard lock(changing_);
  inside_.erase(job);
  printing_.erase(job);
  left_.notify_all();
}

}  // namespace rlx::printer_app
