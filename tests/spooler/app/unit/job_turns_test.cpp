#include "rlx-printer-app/job_turns.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace rlx::printer_app {
namespace {

TEST(JobTurns, AJobEntersOnce) {
  JobTurns turns;
  EXPECT_TRUE(turns.enter(1, 1));
  EXPECT_FALSE(turns.enter(1, 1));
  EXPECT_TRUE(turns.enter(1, 2));
  EXPECT_TRUE(turns.enter(2, 1)) << "another printer's";
  turns.wait(1, 1);
  turns.leave(1, 1);
  EXPECT_FALSE(turns.enter(1, 1)) << "after its end, too";
}

TEST(JobTurns, PrintersDoNotWaitForEachOther) {
  JobTurns turns;
  turns.enter(1, 1);
  turns.wait(1, 1);
  turns.enter(2, 1);
  turns.wait(2, 1);
  SUCCEED();
}

TEST(JobTurns, OneAtATimeTheLowestNumberFirst) {
  constexpr int kJobs = 8;
  JobTurns turns;
  turns.enter(1, 0);
  turns.wait(1, 0);
  for (int job = kJobs; job >= 1; --job) {
    turns.enter(1, job);
  }
  std::vector<int> order;
  std::atomic<int> inside = 0;
  std::vector<std::thread> threads;
  for (int job = kJobs; job >= 1; --job) {
    threads.emplace_back([&, job] {
      turns.wait(1, job);
      EXPECT_EQ(++inside, 1);
      order.push_back(job);
      --inside;
      turns.leave(1, job);
    });
  }
  turns.leave(1, 0);
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
}

}  // namespace
}  // namespace rlx::printer_app
