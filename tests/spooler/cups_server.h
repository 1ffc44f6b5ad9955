#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "spooler/printer.h"
#include "spooler/process.h"

namespace rlx::testing {

/// Who runs cupsd. As root it runs filters and backends as another user, each job in a process
/// group of its own, and ends a job by a signal to the group; as anybody else it runs them as
/// itself and signals each process.
enum class ServerUser : std::uint8_t { root, unprivileged };

struct CupsSetup {
  ServerUser user = ServerUser::root;
  std::string settings{};         ///< further lines of cupsd.conf
  std::string spool_directory{};  ///< for jobs; the server's own without it
  int job_kill_delay = 5;         ///< seconds
};

/// A job as CUPS tells of it.
struct CupsJob {
  int id = 0;
  std::string state;    ///< such as "completed", "processing-stopped"
  std::string reasons;  ///< job-state-reasons
  std::string message;  ///< job-printer-state-message
  std::string format;   ///< document-format-detected, or what it was said to be
  long impressions = 0;
  std::string name;
};

/// True when CUPS does nothing more about a job by itself.
bool is_settled(const CupsJob& job);

/// A cupsd of the test's own: folders, socket and port, nothing of the system's is written. It runs
/// the programs of installed_tree(), and the system's backends and filters.
class CupsServer {
 public:
  explicit CupsServer(CupsSetup setup = {});
  /// Ends it. Fails the test when a process of it is left.
  ~CupsServer();
  CupsServer(const CupsServer&) = delete;
  CupsServer& operator=(const CupsServer&) = delete;

  void start();
  /// Ends it as the system does.
  void stop();
  /// Ends it as a crash does. What it has started goes on.
  void kill();
  pid_t process() const { return process_->id(); }
  int port() const { return port_; }
  const std::string& directory() const { return directory_; }
  std::string spool_directory() const;

  /// Runs a client of it, such as {"lp", "-d", "q"}.
  Outcome run(std::vector<std::string> words, std::string_view input = {}) const;
  /// The same command, for a Process.
  Command client(std::vector<std::string> words) const;
  /// Where a queue is for clients of IPP.
  std::string uri(const std::string& queue) const;
  /// Runs the installed rlx-queue.
  Outcome rlx_queue(std::vector<std::string> words) const;

  /// Makes a queue to a printer, by rlx-queue. Fails the test when it is not made.
  void add_queue(const std::string& name, const Printer& printer,
                 std::vector<std::string> options = {}) const;
  /// Hands a job to lp. @param options  -o is put before each. @return its number.
  int submit(const std::string& queue, std::string_view job,
             const std::vector<std::string>& options = {}) const;

  /// All jobs that it knows, by number.
  std::map<int, CupsJob> jobs(const std::string& queue) const;
  CupsJob job(const std::string& queue, int id) const;
  /// Waits until a job is settled.
  CupsJob wait_for(const std::string& queue, int id, Seconds patience = Seconds(30)) const;
  /// Waits until a job is in a state.
  bool wait_for_state(const std::string& queue, int id, const std::string& state,
                      Seconds patience = Seconds(20)) const;
  /// The queue's state, its reasons and what it says, such as "idle none ".
  std::string queue_state(const std::string& queue) const;

  /// Filters and backends that run for it, and it itself.
  std::vector<pid_t> processes() const;
  std::string error_log() const;
  std::string page_log() const;
  /// The lines of its log about a job.
  std::string log_of(int id) const;

 private:
  void make_folders() const;
  void write_settings() const;
  std::vector<std::map<std::string, std::string>> ask(const std::string& queue,
                                                      const std::string& request) const;
  std::string socket() const { return directory_ + "/socket"; }

  CupsSetup setup_;
  std::string directory_;
  int port_;
  std::unique_ptr<Process> process_;
};

/// True when the tests run as root.
bool is_root();

}  // namespace rlx::testing
