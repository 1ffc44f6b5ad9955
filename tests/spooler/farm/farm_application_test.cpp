// A farm whose print servers are rlx-printer-app: the front's lanes are the same.
#include <gtest/gtest.h>

#include <array>
#include <map>

#include "spooler/farm/farm_application.h"

namespace rlx::testing {
namespace {

constexpr const char* kSetUpFront = RLX_PROJECT_DIRECTORY "/examples/print-farm/set-up-front";

class LongFarmOfApplications : public SpoolerTest {
 protected:
  LongFarmOfApplications() {
    Command command =
        front_.client({kSetUpFront, "farm", "--lanes", "2", servers_[0].uri(), servers_[1].uri()});
    command.environment["CUPS_BACKENDS"] = front_.directory() + "/bin/backend";
    const Outcome outcome = run_command(command);
    EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.messages;
    for (const FarmApplication& server : servers_) {
      write_file(server.forms() + "/fcbe/LABEL", "print 2 28800\nlpi 900 32\n");
    }
  }

  /// Submits jobs, every second one with a form. @return what they become.
  std::map<std::string, int> submit(int count) {
    std::map<std::string, int> expected;
    for (int number = 0; number < count; ++number) {
      const std::string text = numbered_pages("application " + std::to_string(number), 2);
      const bool has_form = number % 2 == 1;
      front_.submit("farm", text, {has_form ? "form=LABEL" : "form=none"});
      ++expected[filtered(has_form ? std::vector<std::string>{"-n", "LABEL", "-p", forms()}
                                   : std::vector<std::string>{},
                          text)];
    }
    return expected;
  }

  void wait_for_front() {
    EXPECT_TRUE(comes_true(Seconds(90), [this] {
      return front_.run({"lpstat", "-o"}).output.empty();
    })) << front_.run({"lpstat", "-l", "-o"}).output;
  }

  std::map<std::string, int> printed() {
    std::map<std::string, int> counts;
    for (FarmApplication& server : servers_) {
      for (const PrinterJob& job : server.printer().jobs()) {
        EXPECT_TRUE(job.is_whole()) << job.end;
        ++counts[job.bytes];
      }
    }
    return counts;
  }

  std::array<FarmApplication, 2> servers_;
  CupsServer front_{CupsSetup{}};
};

TEST_F(LongFarmOfApplications, OptionsPassAndEachJobPrintsOnce) {
  const auto expected = submit(10);
  const std::string text = numbered_pages("copies", 1);
  front_.submit("farm", text, {"copies=3", "sides=two-sided-long-edge", "lpi=8"});
  wait_for_front();
  auto counts = printed();
  for (const auto& [bytes, times] : expected) {
    EXPECT_EQ(counts[bytes], times);
    counts.erase(bytes);
  }
  ASSERT_EQ(counts.size(), 1U);
  EXPECT_NE(counts.begin()->first.find("CPS=3"), std::string::npos);
  EXPECT_NE(counts.begin()->first.find("DUP=1"), std::string::npos);
}

/// The application ends a job with a fault itself. What the front calls that is a race of CUPS's
/// backend with itself: its thread that watches the job says "canceled", its loop "completed".
TEST_F(LongFarmOfApplications, JobWithAFaultEndsAndBlocksNoLane) {
  constexpr int kJobs = 6;
  for (int job = 0; job < kJobs; ++job) {
    front_.submit("farm", "A\f", {"form=NOSUCH"});
  }
  wait_for_front();
  EXPECT_TRUE(printed().empty());
  for (const auto& [id, job] : front_.jobs("farm")) {
    EXPECT_TRUE(job.state == "canceled" || job.state == "completed") << job.state;
  }
  for (const FarmApplication& server : servers_) {
    EXPECT_NE(server.log().find("NOSUCH"), std::string::npos);
  }
  EXPECT_EQ(front_.run({"lpstat", "-p"}).output.find("disabled"), std::string::npos);
}

TEST_F(LongFarmOfApplications, OneIsKilledAndComesBack) {
  servers_[0].printer().tell("rate 20000");
  const auto expected = submit(16);
  ASSERT_TRUE(comes_true(Seconds(30), [&] { return !servers_[0].printer().jobs().empty(); }));
  servers_[0].kill();
  servers_[0].printer().tell("go");
  servers_[0].start();
  wait_for_front();
  auto counts = printed();
  for (const auto& [bytes, times] : expected) {
    EXPECT_GE(counts[bytes], times);
    counts.erase(bytes);
  }
  EXPECT_TRUE(counts.empty());
}

}  // namespace
}  // namespace rlx::testing
