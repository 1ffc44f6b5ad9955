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

/// A reason that PAPPL tells of; of its own "job-hold-until-specified" it tells nothing at all.
void say_queued(pappl_job_t* job) {
  papplJobSetReasons(job, PAPPL_JREASON_JOB_QUEUED, PAPPL_JREASON_NONE);
}

/// PAPPL does not release it by itself when its document is here.
void hold_when_ready(pappl_job_t* job) {
  papplJobHold(job, nullptr, "indefinite", 0);
  say_queued(job);
}

/// Does not look as if somebody had held it.
void hold(pappl_job_t* job) {
  papplJobHold(job, nullptr, nullptr, 0);
  say_queued(job);
}

QueuedJob::State state_of(pappl_job_t* job) {
  switch (papplJobGetState(job)) {
    case IPP_JSTATE_HELD:
      return QueuedJob::State::held;
    case IPP_JSTATE_PENDING:
      return QueuedJob::State::pending;
    default:
      return QueuedJob::State::starting;
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

void JobQueue::begin(int printer_id, int job_id) {
  {
    const std::lock_guard lock(changing_);
    phases_[{printer_id, job_id}] = Phase::printing;
  }
  wake();
}

void JobQueue::end(int printer_id, int job_id) {
  {
    const std::lock_guard lock(changing_);
    phases_[{printer_id, job_id}] = Phase::ending;
  }
  settle();
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

void JobQueue::take_news() {
  const std::lock_guard lock(changing_);
  for (const auto& [job, known] : std::exchange(added_, {})) {
    printers_[job.first].emplace(job.second, known);
  }
  const auto change = [this](const std::pair<int, int>& job, auto apply) {
    if (const auto printer = printers_.find(job.first); printer != printers_.end()) {
      if (const auto found = printer->second.find(job.second); found != printer->second.end()) {
        apply(found->second);
      }
    }
  };
  for (const auto& [job, held] : std::exchange(holds_, {})) {
    change(job, [held = held](Known& known) { known.held_by_operator = held; });
  }
  for (const auto& [job, phase] : std::exchange(phases_, {})) {
    change(job, [phase = phase](Known& known) { known.phase = phase; });
  }
}

void JobQueue::arrange_all() {
  take_news();
  for (auto at = printers_.begin(); at != printers_.end();) {
    pappl_printer_t* const printer = papplSystemFindPrinter(system_, nullptr, at->first, nullptr);
    if (printer != nullptr) {
      arrange(printer, at->second);
    }
    at = printer == nullptr || at->second.empty() ? printers_.erase(at) : std::next(at);
  }
}

/// Tells how a job stands for PAPPL. @return false when it has ended.
bool JobQueue::look_at(pappl_job_t* job, Known& known, QueuedJob& seen) {
  if (job == nullptr) {
    return false;
  }
  if (papplJobGetState(job) >= IPP_JSTATE_CANCELED) {
    say_nothing_of_waiting(job);
    return false;
  }
  const bool has_document = papplJobGetFilename(job) != nullptr;
  if (has_document && known.arrived == Clock::time_point{}) {
    known.arrived = Clock::now();
  }
  seen.state = state_of(job);
  seen.ready = has_document && Clock::now() - known.arrived >= kSettles;
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
  // An operator who has held a job just now was heard before it could be seen.
  take_news();
  for (QueuedJob& job : seen) {
    const Known& known = jobs[job.id];
    job.held_by_operator = known.held_by_operator;
    job.waits_when_ready = known.waits_when_ready;
    if (job.state == QueuedJob::State::starting && known.phase != Phase::before) {
      job.state =
          known.phase == Phase::printing ? QueuedJob::State::printing : QueuedJob::State::ending;
    }
  }
  const OrderStep step = next_step(seen);
  for (const int id : step.hold_when_ready) {
    hold_when_ready(papplPrinterFindJob(printer, id));
    jobs[id].waits_when_ready = true;
  }
  for (const int id : step.hold) {
    hold(papplPrinterFindJob(printer, id));
  }
  for (const int id : step.release) {
    if (!rests_) {
      papplJobRelease(papplPrinterFindJob(printer, id), nullptr);
    }
  }
}

}  // namespace rlx::printer_app
