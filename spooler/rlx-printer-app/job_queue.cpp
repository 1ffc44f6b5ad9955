#include "rlx-printer-app/job_queue.h"

#include <algorithm>
#include <utility>

namespace rlx::printer_app {

namespace {

using namespace std::chrono_literals;

/// PAPPL names a job's file, and only then looks whether the job is held.
constexpr auto kSettles = 10ms;
constexpr auto kLongestSettling = 1000ms;
constexpr auto kUpload = 2s;

/// Released at once when its document is here, but not by PAPPL.
void hold_until_ready(pappl_job_t* job) {
  papplJobHold(job, nullptr, "indefinite", 0);
}

void hold_plainly(pappl_job_t* job) {
  papplJobHold(job, nullptr, nullptr, 0);
}

/// A reason that PAPPL tells of; of its own "job-hold-until-specified" it tells nothing at all.
void say_queued(pappl_job_t* job) {
  papplJobSetReasons(job, PAPPL_JREASON_JOB_QUEUED, PAPPL_JREASON_NONE);
}

bool says_held(pappl_job_t* job) {
  return (papplJobGetReasons(job) & PAPPL_JREASON_JOB_HOLD_UNTIL_SPECIFIED) != 0;
}

QueuedJob::State state_of(pappl_job_t* job) {
  switch (papplJobGetState(job)) {
    case IPP_JSTATE_HELD:
      return QueuedJob::State::held;
    case IPP_JSTATE_PENDING:
      return QueuedJob::State::pending;
    default:
      return QueuedJob::State::printing;
  }
}

}  // namespace

void say_nothing_of_waiting(pappl_job_t* job) {
  papplJobSetReasons(job, PAPPL_JREASON_NONE,
                     PAPPL_JREASON_JOB_HOLD_UNTIL_SPECIFIED | PAPPL_JREASON_JOB_QUEUED);
}

JobQueue::~JobQueue() {
  stop();
}

void JobQueue::stop() {
  {
    const std::lock_guard lock(changing_);
    ended_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) {
    thread_.join();
  }
}

void JobQueue::adopt(pappl_printer_t* printer, void* data) {
  papplPrinterIterateActiveJobs(
      printer,
      [](pappl_job_t* job, void* queue) {
        static_cast<JobQueue*>(queue)->add(papplPrinterGetID(papplJobGetPrinter(job)),
                                           papplJobGetID(job),
                                           papplJobGetState(job) == IPP_JSTATE_HELD);
      },
      data, 1, 0);
}

void JobQueue::start(pappl_system_t* system) {
  system_ = system;
  papplSystemIteratePrinters(system, adopt, this);
  thread_ = std::thread([this] { work(); });
}

void JobQueue::add(int printer_id, int job_id, bool held_by_operator) {
  {
    const std::lock_guard lock(changing_);
    Known known;
    known.held_by_operator = held_by_operator;
    added_.push_back({{printer_id, job_id}, known});
  }
  wake();
}

void JobQueue::set_held(int printer_id, int job_id, bool held_by_operator) {
  {
    const std::lock_guard lock(changing_);
    holds_[{printer_id, job_id}] = held_by_operator;
  }
  wake();
}

void JobQueue::wake() {
  {
    const std::lock_guard lock(changing_);
    ++asked_;
  }
  changed_.notify_all();
}

void JobQueue::rest() {
  rests_ = true;
}

void JobQueue::settle() {
  std::unique_lock lock(changing_);
  const std::uint64_t wanted = ++asked_;
  changed_.notify_all();
  changed_.wait_for(lock, kLongestSettling, [&] { return done_ >= wanted || ended_; });
}

/// Waits until the system runs: before, PAPPL would start jobs and give them up again.
void JobQueue::wait_for_system() {
  std::unique_lock lock(changing_);
  while (!ended_ && !papplSystemIsRunning(system_)) {
    changed_.wait_for(lock, kSettles);
  }
}

void JobQueue::work() {
  wait_for_system();
  while (papplSystemIsRunning(system_)) {
    std::uint64_t followed = 0;
    {
      const std::lock_guard lock(changing_);
      followed = asked_;
    }
    arrange_all();
    std::unique_lock lock(changing_);
    done_ = followed;
    changed_.notify_all();
    changed_.wait_for(lock, pause(), [&] { return ended_ || asked_ != followed; });
    if (ended_) {
      return;
    }
  }
}

/// How long nothing need be looked at, unless somebody calls.
std::chrono::milliseconds JobQueue::pause() const {
  constexpr auto kIdle = 500ms;
  constexpr auto kSlowUpload = 100ms;
  std::chrono::milliseconds least = kIdle;
  for (const auto& [printer, jobs] : printers_) {
    for (const auto& [job, known] : jobs) {
      if (known.arrived == Clock::time_point{}) {
        const bool is_new = Clock::now() - known.created < kUpload;
        least = std::min<std::chrono::milliseconds>(least, is_new ? kSettles / 2 : kSlowUpload);
      } else if (Clock::now() - known.arrived < kSettles) {
        least = std::min<std::chrono::milliseconds>(least, kSettles / 2);
      }
    }
  }
  return least;
}

void JobQueue::arrange_all() {
  {
    const std::lock_guard lock(changing_);
    for (const auto& [job, known] : std::exchange(added_, {})) {
      printers_[job.first].emplace(job.second, known);
    }
    for (const auto& [job, held] : std::exchange(holds_, {})) {
      Jobs& jobs = printers_[job.first];
      if (const auto found = jobs.find(job.second); found != jobs.end()) {
        found->second.held_by_operator = held;
      }
    }
  }
  for (auto at = printers_.begin(); at != printers_.end();) {
    pappl_printer_t* const printer = papplSystemFindPrinter(system_, nullptr, at->first, nullptr);
    if (printer != nullptr) {
      arrange(printer, at->second);
    }
    at = printer == nullptr || at->second.empty() ? printers_.erase(at) : std::next(at);
  }
}

/// Holds a new job, and tells how a job stands. @return false when it has ended.
bool JobQueue::look_at(pappl_job_t* job, Known& known, QueuedJob& seen) const {
  if (job == nullptr) {
    return false;
  }
  if (papplJobGetState(job) >= IPP_JSTATE_CANCELED) {
    say_nothing_of_waiting(job);
    return false;
  }
  if (!known.is_placed) {
    say_queued(job);
  }
  const bool has_document = papplJobGetFilename(job) != nullptr;
  if (!known.is_placed && !known.held_by_operator && !has_document) {
    hold_until_ready(job);
  }
  known.is_placed = true;
  if (has_document && known.arrived == Clock::time_point{}) {
    known.arrived = Clock::now();
  }
  seen.state = state_of(job);
  seen.held_by_operator = known.held_by_operator;
  seen.ready = has_document && Clock::now() - known.arrived >= kSettles;
  if (seen.state == QueuedJob::State::printing) {
    say_nothing_of_waiting(job);
  }
  return true;
}

void JobQueue::arrange(pappl_printer_t* printer, Jobs& jobs) {
  std::vector<QueuedJob> seen;
  for (auto at = jobs.begin(); at != jobs.end();) {
    QueuedJob job;
    job.id = at->first;
    const bool goes_on = look_at(papplPrinterFindJob(printer, job.id), at->second, job);
    if (goes_on) {
      seen.push_back(job);
    }
    at = goes_on ? std::next(at) : jobs.erase(at);
  }
  const OrderStep step = next_step(seen);
  for (const int id : step.hold) {
    hold_plainly(papplPrinterFindJob(printer, id));
  }
  if (step.release.has_value() && !rests_) {
    papplJobRelease(papplPrinterFindJob(printer, *step.release), nullptr);
  }
  for (const QueuedJob& job : seen) {
    // Those that wait for their turn only are not to look as if somebody had held them.
    pappl_job_t* const waiting = papplPrinterFindJob(printer, job.id);
    if (job.ready && !job.held_by_operator && job.state == QueuedJob::State::held &&
        step.release != job.id && says_held(waiting)) {
      hold_plainly(waiting);
    }
  }
}

}  // namespace rlx::printer_app
