#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

#include "spooler/app/app_server.h"
#include "support/record_builder.h"

// The server is killed, and started again.
namespace rlx::testing {
namespace {

class AppCrash : public AppTest {
 protected:
  /// Waits for a job that was accepted before. One of the last moment is held, for its document may
  /// be cut: it is released as an operator does it. The queue holds jobs for a moment, too.
  AppJob wait_and_release(int id) {
    if (server_.job("office", id).state == kHeld) {
      server_.tell_job("release", "office", id);
    }
    return server_.wait_for("office", id);
  }
};

TEST_F(AppCrash, NoAcceptedJobIsLostAndNoneIsPrintedTwice) {
  constexpr int kJobs = 20;
  constexpr std::size_t kPrintedBefore = 7;
  std::map<std::string, int> printed;
  std::vector<int> ids;
  for (int number = 1; number <= kJobs; ++number) {
    ids.push_back(server_.submit("office", numbered_pages("J" + std::to_string(number), 1)));
    ASSERT_GT(ids.back(), 0);
  }
  printer_.wait_for_jobs(kPrintedBefore);
  server_.kill();
  server_.start();
  for (const int id : ids) {
    EXPECT_EQ(wait_and_release(id).state, kCompleted) << id;
  }
  for (const PrinterJob& job : printer_.wait_for_jobs(kJobs)) {
    // One whose bytes had begun to reach the printer is cut and printed again.
    if (job.is_whole()) {
      ++printed[job.bytes];
    }
  }
  EXPECT_EQ(printed.size(), std::size_t{kJobs});
  int twice = 0;
  for (const auto& [bytes, times] : printed) {
    twice += times - 1;
  }
  EXPECT_LE(twice, 1) << "only the one that was at the printer may come again";
}

TEST_F(AppCrash, AHeldJobIsHeldAfterwards) {
  const int held = server_.submit("office", "HELD\f", {{"job-hold-until", "indefinite"}});
  ASSERT_GT(held, 0);
  ASSERT_TRUE(server_.wait_for_state("office", held, kHeld));
  server_.kill();
  server_.start();
  EXPECT_EQ(server_.job("office", held).state, kHeld);
  EXPECT_TRUE(printer_.jobs().empty());
  ASSERT_TRUE(server_.tell_job("release", "office", held));
  EXPECT_EQ(server_.wait_for("office", held).state, kCompleted);
}

TEST_F(AppCrash, AttributesOfAJobAreKept) {
  printer_.tell("away");
  const int id = server_.submit("office", "TWO\f", {{"copies", "3"}, {"lpi", "8"}});
  ASSERT_GT(id, 0);
  ASSERT_TRUE(server_.wait_for_state("office", id, kProcessing));
  server_.kill();
  printer_.tell("back");
  server_.start();
  ASSERT_EQ(wait_and_release(id).state, kCompleted);
  const ConditionColumns columns{.layout = "2", .copies = "  3"};
  expect_same_job(filtered({"-l", "8"}, condition_sequence(columns) + "TWO\f"),
                  printer_.wait_for_jobs(1).at(0));
}

/// PAPPL alone would wait a minute for a job that somebody holds, or whose printer is away.
TEST_F(AppCrash, AServerThatIsAskedToEndKeepsWhatWaits) {
  printer_.tell("away");
  const int waits = server_.submit("office", "WAITS\f");
  ASSERT_TRUE(server_.wait_for_state("office", waits, kProcessing));
  const int held = server_.submit("office", "HELD\f", {{"job-hold-until", "indefinite"}});
  ASSERT_GT(held, 0);
  server_.stop(Seconds(20));
  printer_.tell("back");
  server_.start();
  EXPECT_EQ(server_.wait_for("office", waits).state, kCompleted);
  EXPECT_EQ(server_.job("office", held).state, kHeld);
  EXPECT_EQ(printer_.jobs().size(), 1U);
}

TEST_F(AppCrash, AServerThatIsAskedToEndWaitsForTheJobThatPrints) {
  printer_.tell("stall 100");
  const std::string text = numbered_pages("A", 40000);
  const int id = server_.submit("office", text);
  ASSERT_TRUE(printer_.wait_for_stall());
  std::thread printer([this] {
    std::this_thread::sleep_for(Seconds(4));
    printer_.tell("go");
  });
  server_.stop();
  printer.join();
  expect_same_job(filtered({}, text), printer_.wait_for_jobs(1).at(0));
  server_.start();
  EXPECT_EQ(server_.job("office", id).state, kCompleted);
}

TEST_F(AppCrash, AServerThatIsAskedToEndPrintsEachJobOnce) {
  constexpr int kJobs = 20;
  constexpr std::size_t kPrintedBefore = 5;
  std::vector<int> ids;
  for (int number = 1; number <= kJobs; ++number) {
    ids.push_back(server_.submit("office", numbered_pages("J" + std::to_string(number), 1)));
    ASSERT_GT(ids.back(), 0);
  }
  printer_.wait_for_jobs(kPrintedBefore);
  server_.stop();
  server_.start();
  for (const int id : ids) {
    EXPECT_EQ(server_.wait_for("office", id).state, kCompleted) << id;
  }
  std::map<std::string, int> printed;
  for (const PrinterJob& job : printer_.jobs()) {
    EXPECT_TRUE(job.is_whole()) << job.end;
    ++printed[job.bytes];
  }
  EXPECT_EQ(printed.size(), std::size_t{kJobs});
  EXPECT_EQ(printer_.jobs().size(), std::size_t{kJobs});
}

/// PAPPL by itself writes them down within half a minute, and forgets what operators have paused.
TEST_F(AppCrash, SettingsOutliveIt) {
  server_.add_printer("second", "rlx-400", printer_.uri());
  EXPECT_EQ(server_.run({"pause", "-d", "second"}).status, 0);
  EXPECT_EQ(server_.run({"modify", "-d", "office", "-o", "lpi=8"}).status, 0);
  ASSERT_TRUE(comes_true(Seconds(5), [&] {
    const std::string state = read_file(server_.directory() + "/state/rlx-printer-app.state");
    return state.find("second") != std::string::npos &&
           state.find("lpi-default 8") != std::string::npos;
  })) << "written within seconds";
  server_.kill();
  server_.start();
  const int waits = server_.submit("second", "WAITS\f");
  ASSERT_GT(waits, 0);
  const int id = server_.submit("office", "A\fB\f");
  ASSERT_EQ(server_.wait_for("office", id).state, kCompleted);
  expect_same_job(filtered({"-l", "8"}, "A\fB\f"), printer_.wait_for_jobs(1).at(0));
  EXPECT_LT(server_.job("second", waits).state, kProcessing) << "it is paused still";
  EXPECT_EQ(server_.run({"resume", "-d", "second"}).status, 0);
  EXPECT_EQ(server_.wait_for("second", waits).state, kCompleted);
}

TEST_F(AppCrash, JobsThatAPrinterHoldsAreHeldAfterwards) {
  ASSERT_TRUE(server_.tell_printer("hold-new-jobs", "office"));
  const int first = server_.submit("office", "FIRST\f");
  ASSERT_GT(first, 0);
  EXPECT_EQ(server_.job("office", first).state, kHeld);
  server_.kill();
  server_.start();
  const int second = server_.submit("office", "SECOND\f");
  ASSERT_GT(second, 0);
  // Time enough for a job that nobody holds.
  std::this_thread::sleep_for(Seconds(1));
  EXPECT_EQ(server_.job("office", first).state, kHeld);
  EXPECT_EQ(server_.job("office", second).state, kHeld);
  ASSERT_TRUE(server_.tell_printer("release-held-new-jobs", "office"));
  EXPECT_EQ(server_.wait_for("office", first).state, kCompleted);
  EXPECT_EQ(server_.wait_for("office", second).state, kCompleted);
}

TEST_F(AppCrash, ASecondServerLeavesTheFirstOnesFoldersAlone) {
  const Outcome second = run_command(server_.start_command());
  EXPECT_NE(second.status, 0);
  EXPECT_NE(second.messages.find("another server uses " + server_.directory() + "/state: process " +
                                 std::to_string(server_.process())),
            std::string::npos)
      << second.messages;
  EXPECT_EQ(server_.wait_for("office", server_.submit("office", "A\f")).state, kCompleted);
}

TEST_F(AppCrash, ACancelledJobStaysSo) {
  printer_.tell("away");
  const int id = server_.submit("office", "GONE\f");
  const int next = server_.submit("office", "NEXT\f");
  ASSERT_TRUE(server_.tell_job("cancel", "office", next));
  server_.kill();
  printer_.tell("back");
  server_.start();
  ASSERT_EQ(wait_and_release(id).state, kCompleted);
  EXPECT_EQ(printer_.jobs().size(), 1U);
}

}  // namespace
}  // namespace rlx::testing
