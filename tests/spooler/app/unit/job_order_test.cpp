#include "rlx-printer-app/job_order.h"

#include <gtest/gtest.h>

#include <vector>

namespace rlx::printer_app {
namespace {

using State = QueuedJob::State;

QueuedJob job(int id, State state, bool ready = true, bool held_by_operator = false) {
  return {id, state, ready, held_by_operator};
}

TEST(JobOrder, NothingToDoWithoutJobs) {
  const OrderStep step = next_step({});
  EXPECT_TRUE(step.hold.empty());
  EXPECT_FALSE(step.release.has_value());
}

TEST(JobOrder, TheOldestReadyJobIsReleased) {
  const std::vector<QueuedJob> jobs{job(1, State::printing), job(2, State::held),
                                    job(3, State::held)};
  EXPECT_EQ(next_step(jobs).release, 2);
}

TEST(JobOrder, AnUploadThatIsUnderWayKeepsNobodyWaiting) {
  const std::vector<QueuedJob> jobs{job(1, State::held, false), job(2, State::held)};
  EXPECT_EQ(next_step(jobs).release, 2);
}

TEST(JobOrder, AnOperatorsHoldStays) {
  const std::vector<QueuedJob> jobs{job(1, State::held, true, true), job(2, State::held)};
  EXPECT_EQ(next_step(jobs).release, 2);
  EXPECT_TRUE(next_step(jobs).hold.empty());
}

TEST(JobOrder, OnlyTheOldestIsPending) {
  const std::vector<QueuedJob> jobs{job(1, State::held), job(2, State::pending),
                                    job(3, State::pending)};
  const OrderStep step = next_step(jobs);
  EXPECT_EQ(step.release, 1);
  EXPECT_EQ(step.hold, (std::vector<int>{2, 3}));
}

TEST(JobOrder, TheOldestThatIsPendingStaysSo) {
  const std::vector<QueuedJob> jobs{job(4, State::pending), job(5, State::held),
                                    job(6, State::pending)};
  const OrderStep step = next_step(jobs);
  EXPECT_FALSE(step.release.has_value());
  EXPECT_EQ(step.hold, std::vector<int>{6});
}

TEST(JobOrder, ThosePrintingAreLeftAlone) {
  const std::vector<QueuedJob> jobs{job(1, State::printing), job(2, State::printing)};
  const OrderStep step = next_step(jobs);
  EXPECT_FALSE(step.release.has_value());
  EXPECT_TRUE(step.hold.empty());
}

}  // namespace
}  // namespace rlx::printer_app
