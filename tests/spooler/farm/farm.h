#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "spooler/spooler_test.h"

namespace rlx::testing {

/// A print server of a farm: a cupsd with the queue "lines", and its printer.
class FarmServer {
 public:
  /// Sets it up with the sample script.
  explicit FarmServer(const std::string& forms);

  /// What the front's lanes are made for.
  std::string uri() const;
  CupsServer& cups() { return cups_; }
  Printer& printer() { return printer_; }

  /// Starts farm-watch beside it.
  void watch();
  /// Ends all its processes at once, as when the machine loses its power.
  void lose_power();
  /// Ends cupsd alone, as a crash of it does; what it has started goes on.
  void crash();
  /// Brings it back, and waits until nothing of the time before runs any more.
  void come_back();

  /// How often it began to print jobs of a name, from its own log.
  int starts_of(const std::string& job_name);

 private:
  Printer printer_;
  CupsServer cups_;
  std::unique_ptr<Process> watch_;
};

/// A job of the test, each with bytes of its own.
struct FarmJob {
  std::string name;
  std::string text;
  std::vector<std::string> options;         ///< of lp
  std::vector<std::string> filter_options;  ///< the same, of the filter
  long impressions = 0;
};

/// Jobs of one to three pages, with and without a form, some in several copies.
std::vector<FarmJob> farm_jobs(int count, const std::string& forms);

/// A front and three print servers, set up with the sample scripts.
class FarmTest : public SpoolerTest {
 protected:
  static constexpr int kLanes = 2;

  FarmTest();

  /// Hands jobs to the class by lp, by several clients at once, as they take them.
  void submit(const std::vector<FarmJob>& jobs);
  /// Waits until all clients have handed in their jobs.
  void wait_for_clients();
  /// Waits until no job of the front waits or prints.
  void wait_for_front(Seconds patience);
  /// So many whole jobs have reached the printers.
  std::size_t printed();

  /// Expects each job to be completed at the front and printed, byte for byte. Jobs that passed
  /// through servers that were never away are printed once; the others as often as their server
  /// says that it began with them.
  /// @return how many were printed more than once.
  int expect_all_printed(const std::vector<FarmJob>& jobs);

  /// Expects that no lane is stopped.
  void expect_lanes_idle();

  CupsServer front_{CupsSetup{}};
  std::vector<std::unique_ptr<FarmServer>> servers_;

 private:
  std::unique_ptr<Process> watch_;
  std::vector<std::unique_ptr<Process>> clients_;
};

}  // namespace rlx::testing
