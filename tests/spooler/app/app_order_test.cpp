#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "spooler/app/app_server.h"

// Whose turn it is.
namespace rlx::testing {
namespace {

class AppOrder : public AppTest {
 protected:
  /// Keeps the printer busy with "J1", which does not fit into what a connection holds.
  void begin_with_a_large_job() {
    printer_.tell("stall 10");
    ASSERT_GT(server_.submit("office", numbered_pages("J1", 40000)), 0);
    ASSERT_TRUE(printer_.wait_for_stall());
  }
  std::vector<int> submit_pages(int first, int last) {
    std::vector<int> ids;
    for (int number = first; number <= last; ++number) {
      ids.push_back(server_.submit("office", numbered_pages("J" + std::to_string(number), 1)));
      EXPECT_GT(ids.back(), 0);
    }
    return ids;
  }
  /// The job whose page it is, of those that have names as submit_pages() gives them.
  static std::string name_of(const PrinterJob& job) {
    const std::size_t at = job.bytes.find("OF J");
    return at == std::string::npos
               ? "none"
               : job.bytes.substr(at + 3, job.bytes.find_first_of("\r\n\f\x1b ", at + 3) - at - 3);
  }
  void expect_order(const std::vector<int>& numbers) {
    const auto& jobs = printer_.wait_for_jobs(numbers.size());
    ASSERT_EQ(jobs.size(), numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      EXPECT_EQ(name_of(jobs[i]), "J" + std::to_string(numbers[i])) << "in place " << i;
    }
  }
};

TEST_F(AppOrder, WaitingJobsPrintInTheOrderInWhichTheyCame) {
  begin_with_a_large_job();
  submit_pages(2, 12);
  printer_.tell("go");
  expect_order({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
}

/// A job that comes in the moment in which the printer becomes free may overtake others, rarely.
TEST_F(AppOrder, JobsThatComeWhileOthersPrintKeepTheirOrder) {
  constexpr int kJobs = 40;
  submit_pages(1, kJobs);
  int overtaken = 0;
  int last = 0;
  for (const PrinterJob& job : printer_.wait_for_jobs(kJobs)) {
    const int number = std::stoi(name_of(job).substr(1));
    overtaken += number < last ? 1 : 0;
    last = number;
  }
  EXPECT_LE(overtaken, kJobs / 4);
}

/// CUPS's backend takes a job that is held for one that has ended.
TEST_F(AppOrder, WaitingJobsArePendingNotHeld) {
  begin_with_a_large_job();
  for (const int id : submit_pages(2, 4)) {
    EXPECT_TRUE(server_.wait_for_state("office", id, kPending)) << id;
  }
  printer_.tell("go");
  expect_order({1, 2, 3, 4});
}

TEST_F(AppOrder, AnOperatorsHoldStaysUntilItIsReleased) {
  begin_with_a_large_job();
  const std::vector<int> ids = submit_pages(2, 4);
  ASSERT_TRUE(server_.tell_job("hold", "office", ids[0]));
  printer_.tell("go");
  ASSERT_EQ(server_.wait_for("office", ids[2]).state, kCompleted);
  EXPECT_EQ(server_.job("office", ids[0]).state, kHeld);
  ASSERT_TRUE(server_.tell_job("release", "office", ids[0]));
  EXPECT_EQ(server_.wait_for("office", ids[0]).state, kCompleted);
  expect_order({1, 3, 4, 2});
}

TEST_F(AppOrder, AJobThatCameHeldWaits) {
  const int held =
      server_.submit("office", numbered_pages("J1", 1), {{"job-hold-until", "indefinite"}});
  const std::vector<int> ids = submit_pages(2, 2);
  EXPECT_EQ(server_.wait_for("office", ids[0]).state, kCompleted);
  EXPECT_EQ(server_.job("office", held).state, kHeld);
  ASSERT_TRUE(server_.tell_job("release", "office", held));
  expect_order({2, 1});
}

/// PAPPL alone would start it and end with a null pointer.
TEST_F(AppOrder, AJobThatIsReleasedTooEarlyWaitsForItsDocument) {
  constexpr int kTimes = 20;
  for (int number = 1; number <= kTimes; ++number) {
    const int id = server_.create("office", {{"job-hold-until", "indefinite"}});
    ASSERT_GT(id, 0);
    ASSERT_TRUE(server_.tell_job("release", "office", id));
    EXPECT_EQ(server_.job("office", id).state, kHeld);
    ASSERT_TRUE(
        server_.send_document("office", id, numbered_pages("J" + std::to_string(number), 1)));
    EXPECT_EQ(server_.wait_for("office", id).state, kCompleted);
  }
  EXPECT_EQ(name_of(printer_.wait_for_jobs(kTimes).back()), "J" + std::to_string(kTimes));
}

TEST_F(AppOrder, AWaitingJobCanBeCancelled) {
  begin_with_a_large_job();
  const std::vector<int> ids = submit_pages(2, 4);
  ASSERT_TRUE(server_.tell_job("cancel", "office", ids[0]));
  ASSERT_TRUE(server_.tell_job("cancel", "office", ids[1]));
  printer_.tell("go");
  EXPECT_EQ(server_.wait_for("office", ids[2]).state, kCompleted);
  expect_order({1, 4});
  EXPECT_EQ(server_.job("office", ids[0]).state, kCanceled);
}

}  // namespace
}  // namespace rlx::testing
