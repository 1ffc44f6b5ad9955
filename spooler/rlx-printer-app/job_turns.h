#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <utility>

namespace rlx::printer_app {

/// One job at a time for each printer, the one with the lowest number first. PAPPL starts several
/// when they come at the same moment, and may start the same one twice: it looks whether a printer
/// is busy before it takes the printer's lock.
class JobTurns {
 public:
  /// Takes a job's part, once. @return false for a job that has been here before: whoever calls
  /// then must go without a trace.
  bool enter(int printer_id, int job_id);
  /// Waits for the job's turn. To be called behind enter().
  void wait(int printer_id, int job_id);
  /// Ends the turn, or the wait for it.
  void leave(int printer_id, int job_id);

 private:
  using Job = std::pair<int, int>;

  bool is_first(const Job& job) const;

  std::mutex changing_;
  std::condition_variable left_;
  std::set<Job> inside_;    ///< waiting or printing
  std::set<Job> printing_;  ///< at most one of a printer
  std::deque<Job> before_;  ///< the last ones that entered
  static constexpr std::size_t kRemembered = 4096;
};

}  // namespace rlx::printer_app
