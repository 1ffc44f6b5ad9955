#pragma once

#include <pappl/pappl.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "rlx-printer-app/job_order.h"

namespace rlx::printer_app {

/// Takes the reasons away that a job has while it waits.
void say_nothing_of_waiting(pappl_job_t* job);

/// Lets each printer's jobs print in the order of their numbers. PAPPL takes the newest of those
/// that are pending: so in the moment between two jobs all but the oldest are held, and while one
/// prints they are pending again. Holds of operators, and of those who submit, stay until somebody
/// releases the job.
///
/// A new job is held, when that is necessary, before its document is here: PAPPL has no call
/// between. When that comes too late and the printer becomes free in the same moment, the job
/// prints out of turn; it never prints twice, nor is it lost.
class JobQueue {
 public:
  JobQueue() = default;
  ~JobQueue();
  JobQueue(const JobQueue&) = delete;
  JobQueue& operator=(const JobQueue&) = delete;

  /// Takes over the jobs that the system has: those held stay so. Works from when the system runs
  /// until it is shut down.
  void start(pappl_system_t* system);
  /// Ends its work. Not with PAPPL's locks.
  void stop();

  /// A job was created. May be called with PAPPL's locks, as all of these.
  void add(int printer_id, int job_id, bool held_by_operator);
  /// Somebody has held or released a job.
  void set_held(int printer_id, int job_id, bool held_by_operator);
  /// Something has ended.
  void wake();
  /// From now on no job is released: the server is about to end.
  void rest();

  /// A job has its printer, and prints.
  void begin(int printer_id, int job_id);
  /// A job has printed; PAPPL starts the next one when the caller returns. Not with PAPPL's locks.
  void end(int printer_id, int job_id);
  /// Waits until what has come before the call has its place, a moment at most. Not with PAPPL's
  /// locks.
  void settle();

 private:
  using Clock = std::chrono::steady_clock;

  enum class Phase : std::uint8_t { before, printing, ending };
  struct Known {
    bool held_by_operator = false;
    bool waits_when_ready = false;
    Phase phase = Phase::before;
    Clock::time_point created = Clock::now();
    Clock::time_point arrived{};  ///< when its document was seen first
  };
  using Jobs = std::map<int, Known>;

  static void adopt(pappl_printer_t* printer, void* data);
  void wait_for_system();
  void work();
  void arrange_all();
  void arrange(pappl_printer_t* printer, Jobs& jobs);
  void take_news();
  static bool look_at(pappl_job_t* job, Known& known, QueuedJob& seen);
  std::chrono::milliseconds pause() const;

  pappl_system_t* system_ = nullptr;
  std::mutex changing_;
  std::condition_variable changed_;
  std::map<int, Jobs> printers_;  ///< the thread's own
  std::vector<std::pair<std::pair<int, int>, Known>> added_;
  std::map<std::pair<int, int>, bool> holds_;    ///< changes of them
  std::map<std::pair<int, int>, Phase> phases_;  ///< changes of them
  std::uint64_t asked_ = 0;                      ///< calls of wake()
  std::uint64_t done_ = 0;                       ///< of which so many have been followed
  bool ended_ = false;
  std::atomic<bool> rests_ = false;
  std::thread thread_;
};

}  // namespace rlx::printer_app
