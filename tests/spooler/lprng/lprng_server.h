#pragma once

#include <sys/types.h>

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "spooler/printer.h"
#include "spooler/process.h"

namespace rlx::testing {

/// A queue of lpd. Its entry is the sample entry with these in it.
struct LprngQueue {
  std::string name;
  int printer_port = 0;     ///< of 127.0.0.1
  std::string arguments{};  ///< behind rlx-lpd in the printcap entry
  std::string more{};       ///< further lines of the entry, such as ":rt#1"
};

/// How lpd sees a job.
struct LprngJob {
  std::string
      state;  ///< first word of its line in lpq: "active", "done", "hold"; empty without one
};

/// A real lpd of LPRng with folders, a port, a host name and an /etc of its own, in a mount
/// namespace of its own. Its programs are those that unpack.sh brought. Every process of it is in
/// that namespace, so that it can be told when none is left.
class LprngServer {
 public:
  explicit LprngServer(const std::vector<LprngQueue>& queues);
  ~LprngServer();
  LprngServer(const LprngServer&) = delete;
  LprngServer& operator=(const LprngServer&) = delete;

  /// Submits a job by lpr. @return its number.
  std::string submit(const std::string& queue, std::string_view job,
                     const std::vector<std::string>& options = {});
  /// The same with files of these contents.
  std::string submit_files(const std::string& queue, const std::vector<std::string>& files,
                           const std::vector<std::string>& options = {});

  /// All that `lpq -L` tells.
  std::string status(const std::string& queue);
  LprngJob job(const std::string& queue, const std::string& number);
  /// Waits until a job is in a state. @return false when it is not in time.
  bool wait_for_state(const std::string& queue, const std::string& number, const std::string& state,
                      Seconds patience = Seconds(20));

  /// Runs one of LPRng's programs, such as {"lprm", "-Plines", "12"}.
  Outcome run(std::vector<std::string> words, std::string_view input = {});

  /// Processes of lpd: the daemon, its servers of queues, filters.
  std::vector<pid_t> processes() const;
  /// Of those the ones that run a program of this name, such as "rlx-lpd".
  std::vector<pid_t> processes_of(const std::string& program) const;

 private:
  void make_folders(const std::vector<LprngQueue>& queues);
  std::string entry(const LprngQueue& queue) const;
  void write_settings(const std::vector<LprngQueue>& queues);
  void start();
  std::set<std::string> jobs_of(const std::string& queue) const;
  std::vector<std::string> inside(std::vector<std::string> words) const;

  std::string directory_;
  int port_;
  std::unique_ptr<Process> daemon_;
  std::string name_space_;  ///< the daemon's mount namespace, as /proc names it
};

}  // namespace rlx::testing
