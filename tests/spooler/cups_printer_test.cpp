// A printer that misbehaves: every job is printed whole in the end, and none is lost.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "spooler/spooler_test.h"

namespace rlx::testing {
namespace {

/// More pages of ten lines than the buffers of a connection hold (7 MB).
constexpr int kManyPages = 60000;

class CupsPrinter : public CupsTest {
 protected:
  /// Expects that the last job that reached the printer is a whole one, and CUPS's count of pages.
  void expect_printed_at_last(int id, const std::string& text, int pages) {
    const CupsJob job = server_.wait_for("q", id, Seconds(90));
    EXPECT_EQ(job.state, "completed") << job.message;
    EXPECT_EQ(job.impressions, pages);
    ASSERT_FALSE(printer_.wait_for_jobs(1).empty());
    expect_same_job(filtered({}, text), printer_.jobs().back());
  }
};

TEST_F(CupsPrinter, StallsAndGoesOn) {
  printer_.tell("stall 100");
  const std::string text = numbered_pages("stalled", 5);
  const int id = server_.submit("q", text);
  ASSERT_TRUE(printer_.wait_for_stall());
  std::this_thread::sleep_for(Seconds(2));
  EXPECT_EQ(server_.job("q", id).state, "processing");
  printer_.tell("go");
  expect_printed_at_last(id, text, 5);
  EXPECT_EQ(printer_.jobs().size(), 1U);
}

class LongCupsPrinter : public CupsPrinter {};

TEST_F(LongCupsPrinter, IsAwayAndComesBack) {
  printer_.tell("away");
  const std::string text = numbered_pages("away", 3);
  const int id = server_.submit("q", text);
  EXPECT_TRUE(comes_true(Seconds(20), [&] {
    return server_.queue_state("q").find("unavailable at this time") != std::string::npos;
  })) << server_.queue_state("q");
  EXPECT_EQ(server_.job("q", id).state, "processing");
  printer_.tell("back");
  expect_printed_at_last(id, text, 3);
  EXPECT_EQ(printer_.jobs().size(), 1U);
}

TEST_F(CupsPrinter, ClosesInTheMiddle) {
  printer_.tell("close 100000");
  const std::string text = numbered_pages("closed", kManyPages, 10);
  const int id = server_.submit("q", text);
  const std::string next = numbered_pages("next", 1);
  const int behind = server_.submit("q", next);
  const CupsJob job = server_.wait_for("q", id, Seconds(90));
  EXPECT_EQ(job.state, "completed") << job.message;
  EXPECT_EQ(server_.wait_for("q", behind, Seconds(60)).state, "completed");
  const auto& jobs = printer_.wait_for_jobs(3);
  ASSERT_EQ(jobs.size(), 3U);
  EXPECT_EQ(jobs[0].end, "closed by the printer");
  expect_same_job(filtered({}, text), jobs[1]);
  expect_same_job(filtered({}, next), jobs[2]);
  // CUPS adds up the pages that were handed on, each time.
  EXPECT_GE(job.impressions, kManyPages + static_cast<long>(jobs[0].pages));
}

TEST_F(LongCupsPrinter, TakesOneByteASecond) {
  printer_.tell("rate 1");
  const std::string text = numbered_pages("slow", 2);
  const int id = server_.submit("q", text);
  std::this_thread::sleep_for(Seconds(6));
  EXPECT_EQ(server_.job("q", id).state, "processing");
  printer_.tell("go");
  expect_printed_at_last(id, text, 2);
  EXPECT_EQ(printer_.jobs().size(), 1U);
}

TEST_F(LongCupsPrinter, ClosesAgainAndAgain) {
  const std::string text = numbered_pages("closed", kManyPages, 10);
  printer_.tell("cut 100000");
  const int id = server_.submit("q", text);
  ASSERT_GE(printer_.wait_for_jobs(3, Seconds(60)).size(), 3U);
  EXPECT_FALSE(is_settled(server_.job("q", id)));
  printer_.tell("go");
  const CupsJob job = server_.wait_for("q", id, Seconds(90));
  EXPECT_EQ(job.state, "completed") << job.message;
  const auto cut = static_cast<std::size_t>(
      std::count_if(printer_.jobs().begin(), printer_.jobs().end(),
                    [](const PrinterJob& one) { return one.end == "closed by the printer"; }));
  EXPECT_EQ(printer_.wait_for_jobs(cut + 1).size(), cut + 1);
  expect_same_job(filtered({}, text), printer_.jobs().back());
}

/// This is a limit of CUPS's socket backend: a printer acknowledges nothing, and when the backend
/// has handed all to the connection it takes a reset for the end.
TEST_F(LongCupsPrinter, ClosesBehindTheBackendsLastByte) {
  printer_.tell("close 100");
  const int id = server_.submit("q", numbered_pages("short", 3));
  EXPECT_EQ(server_.wait_for("q", id).state, "completed");
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  EXPECT_EQ(printer_.jobs()[0].bytes.size(), 100U);
}

TEST_F(LongCupsPrinter, GoesAwayInTheMiddle) {
  printer_.tell("stall 50000");
  const std::string text = numbered_pages("middle", kManyPages, 10);
  const int id = server_.submit("q", text);
  ASSERT_TRUE(printer_.wait_for_stall());
  printer_.tell("away");
  std::this_thread::sleep_for(Seconds(3));
  EXPECT_EQ(server_.job("q", id).state, "processing");
  printer_.tell("back");
  const CupsJob job = server_.wait_for("q", id, Seconds(90));
  EXPECT_EQ(job.state, "completed") << job.message;
  ASSERT_EQ(printer_.wait_for_jobs(2).size(), 2U);
  EXPECT_FALSE(printer_.jobs()[0].is_whole());
  expect_same_job(filtered({}, text), printer_.jobs()[1]);
}

TEST_F(LongCupsPrinter, IsSlow) {
  printer_.tell("rate 400000");
  const std::string text = numbered_pages("slow", 10000, 10);
  const int id = server_.submit("q", text);
  expect_printed_at_last(id, text, 10000);
  EXPECT_EQ(printer_.jobs().size(), 1U);
}

class LongCupsStuck : public SpoolerTest, public ::testing::WithParamInterface<ServerUser> {};

TEST_P(LongCupsStuck, IsStillStalledWhenAJobIsCancelled) {
  if (GetParam() == ServerUser::root && !is_root()) {
    GTEST_SKIP() << "only root can run cupsd as root";
  }
  CupsServer server({.user = GetParam()});
  server.add_queue("q", printer_);
  printer_.tell("stall 1000");
  const int id = server.submit("q", numbered_pages("stuck", kManyPages, 10));
  ASSERT_TRUE(printer_.wait_for_stall());
  EXPECT_EQ(server.run({"cancel", std::to_string(id)}).status, 0);
  // JobKillDelay is over: what does not end is ended.
  EXPECT_TRUE(comes_true(Seconds(20), [&] { return server.processes().size() == 1; }));
  printer_.tell("go");
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  const std::string text = numbered_pages("next", 1);
  const int next = server.submit("q", text);
  EXPECT_EQ(server.wait_for("q", next).state, "completed");
  ASSERT_EQ(printer_.wait_for_jobs(2).size(), 2U);
  expect_same_job(filtered({}, text), printer_.jobs().back());
}

INSTANTIATE_TEST_SUITE_P(Users, LongCupsStuck,
                         ::testing::Values(ServerUser::root, ServerUser::unprivileged));

}  // namespace
}  // namespace rlx::testing
