#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "spooler/process.h"

namespace rlx::testing {

/// What the printer tells of a connection.
struct PrinterJob {
  std::string bytes;
  std::string end;  ///< "end of data", "reset by the host", "closed by the printer"
  std::uint64_t pages = 0;
  std::uint64_t impressions = 0;
  bool ended = false;  ///< a job end is its last block
  std::vector<std::string> faults;

  /// True when nothing is wrong with any block, and the job ends.
  bool is_whole() const { return ended && faults.empty() && end == "end of data"; }
};

/// The printer of the tests (printer/test_printer.cpp), in a process of its own.
class Printer {
 public:
  Printer();

  /// socket://127.0.0.1:PORT
  std::string uri() const;
  int port() const { return port_; }

  /// Gives it a command, such as "stall 100", and waits until it is in force.
  void tell(const std::string& command);

  /// Waits for so many jobs in all. Connections without a byte do not count.
  /// @return all that came in time.
  const std::vector<PrinterJob>& wait_for_jobs(std::size_t count, Seconds patience = Seconds(20));
  /// Those that have come so far.
  const std::vector<PrinterJob>& jobs() { return wait_for_jobs(0, Seconds(0)); }

  /// Waits until it has stopped taking bytes. @return false when it does not in time.
  bool wait_for_stall(Seconds patience = Seconds(20));

 private:
  bool read_line(Seconds patience);
  void take_line(const std::string& line);

  std::string directory_;
  std::unique_ptr<Process> process_;
  int port_ = 0;
  std::string waiting_;
  std::vector<PrinterJob> jobs_;
  std::string done_;
  bool stalled_ = false;
};

}  // namespace rlx::testing
