#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "spooler/process.h"
#include "spooler/spooler_test.h"

namespace rlx::testing {

/// A job as the printer application tells of it.
struct AppJob {
  int id = 0;
  int state = 0;  ///< IPP's job-state, 3 to 9
  std::string message;
  int impressions = 0;
};

/// Attributes of a job: name and value, as cupsEncodeOptions takes them; vendor attributes, too.
using JobAttributes = std::vector<std::pair<std::string, std::string>>;

/// A server of the installed rlx-printer-app: folders and port of its own, on loopback.
class AppServer {
 public:
  AppServer();
  ~AppServer();
  AppServer(const AppServer&) = delete;
  AppServer& operator=(const AppServer&) = delete;

  void start();
  /// Asks the server to end, and waits for it.
  void stop(Seconds patience = Seconds(60));
  void kill();
  pid_t process() const { return process_->id(); }
  int port() const { return port_; }
  const std::string& directory() const { return directory_; }
  std::string forms() const { return directory_ + "/state/forms"; }
  /// ipp://localhost:PORT/ipp/print/NAME
  std::string uri(const std::string& printer) const;

  /// Runs a sub-command of the program with this server.
  Outcome run(std::vector<std::string> words) const;
  /// Runs ipptool with a file of the folder ipptool/, for a printer; it says nothing when all is as
  /// the file expects. @param words  such as {"-f", FILE}, in front of the address
  Outcome ipptool(const std::string& file, const std::vector<std::string>& words = {},
                  const std::string& printer = "office") const;
  void add_printer(const std::string& name, const std::string& kind, const std::string& device);

  /// Print-Job by a client of libcups. @return its number; 0, and `words`, when it was refused.
  int submit(const std::string& printer, std::string_view document,
             const JobAttributes& attributes = {}, const std::string& format = "text/plain",
             std::string* words = nullptr) const;
  /// Create-Job. @return its number; 0 when it was refused.
  int create(const std::string& printer, const JobAttributes& attributes = {}) const;
  /// Send-Document for such a job. @return true when it was taken.
  bool send_document(const std::string& printer, int id, std::string_view document) const;
  AppJob job(const std::string& printer, int id) const;
  /// The printer's printer-state-reasons, with commas between them.
  std::string reasons(const std::string& printer) const;
  /// Waits for a job's end (state 7 to 9).
  AppJob wait_for(const std::string& printer, int id, Seconds patience = Seconds(30)) const;
  bool wait_for_state(const std::string& printer, int id, int state,
                      Seconds patience = Seconds(20)) const;
  /// An operation on a job: "cancel", "hold" or "release". @return true when it was done.
  bool tell_job(const std::string& operation, const std::string& printer, int id) const;
  /// The same on a printer: "hold-new-jobs" or "release-held-new-jobs".
  bool tell_printer(const std::string& operation, const std::string& printer) const;
  std::string log() const;
  /// What start() runs.
  Command start_command() const;

 private:
  std::string directory_;
  int port_;
  std::unique_ptr<Process> process_;
};

/// A printer, a server and its printer "office".
class AppTest : public SpoolerTest {
 protected:
  AppTest();

  /// Submits a job and waits for its end, which must be a good one. @return what was printed.
  PrinterJob print(std::string_view document, const JobAttributes& attributes = {},
                   const std::string& format = "text/plain");

  AppServer server_;
};

constexpr int kPending = 3;
constexpr int kHeld = 4;
constexpr int kProcessing = 5;
constexpr int kCanceled = 7;
constexpr int kAborted = 8;
constexpr int kCompleted = 9;

}  // namespace rlx::testing
