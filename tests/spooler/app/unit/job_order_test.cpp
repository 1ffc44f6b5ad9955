#include "rlx-printer-app/job_order.h"

#include <gtest/gtest.h>

#include <vector>

namespace rlx::printer_app {
namespace {

using State = QueuedJob::State;

QueuedJob job(int id, State state, bool ready = true, bool held_by_operator = false) {
  return {id, state, ready, held_by_operator, false};
}

TEST(JobOrder, NothingToDoWithoutJobs) {
  const OrderStep step = next_step({});
  EXPECT_TRUE(step.hold.empty());
  EXPECT_TRUE(step.hold_when_ready.empty());
  EXPECT_TRUE(step.release.empty());
}

TEST(JobOrder, AllMayWaitWhileOnePrints) {
  const std::vector<QueuedJob> jobs{job(1, State::printing), job(2, State::held),
                                    job(3, State::pending), job(4, State::held),
                                    job(5, State::held, false)};
  const OrderStep step = next_step(jobs);
  EXPECT_EQ(step.release, (std::vector<int>{2, 4}));
  EXPECT_TRUE(step.hold.empty());
  EXPECT_TRUE(step.hold_when_ready.empty());
}

TEST(JobOrder, OnlyTheOldestIsPendingWhenThePrinterIsFreeSoon) {
  for (const State state : {State::starting, State::ending}) {
    const std::vector<QueuedJob> jobs{job(1, state), job(2, State::held), job(3, State::pending),
                                      job(4, State::held, false)};
    const OrderStep step = next_step(jobs);
    EXPECT_EQ(step.release, std::vector<int>{2});
    EXPECT_EQ(step.hold, std::vector<int>{3});
    EXPECT_EQ(step.hold_when_ready, std::vector<int>{4});
  }
}

TEST(JobOrder, AJobWhoseDocumentComesIsHeldOnce) {
  std::vector<QueuedJob> jobs{job(1, State::ending), job(2, State::held, false)};
  jobs[1].waits_when_ready = true;
  EXPECT_TRUE(next_step(jobs).hold_when_ready.empty());
}

/// PAPPL starts it as soon as its document is here.
TEST(JobOrder, AJobByItselfIsLeftAlone) {
  const std::vector<QueuedJob> jobs{job(1, State::held, false)};
  EXPECT_TRUE(next_step(jobs).hold_when_ready.empty());
}

TEST(JobOrder, AnUploadThatIsUnderWayKeepsNobodyWaiting) {
  const std::vector<QueuedJob> jobs{job(1, State::held, false), job(2, State::held)};
  EXPECT_EQ(next_step(jobs).release, std::vector<int>{2});
}

TEST(JobOrder, AnOperatorsHoldStays) {
  const std::vector<QueuedJob> jobs{job(1, State::held, true, true), job(2, State::held),
                                    job(3, State::held, false, true)};
  const OrderStep step = next_step(jobs);
  EXPECT_EQ(step.release, std::vector<int>{2});
  EXPECT_TRUE(step.hold.empty());
  EXPECT_TRUE(step.hold_when_ready.empty());
}

TEST(JobOrder, AnOperatorsHoldIsStrongerThanARelease) {
  const std::vector<QueuedJob> jobs{job(1, State::printing), job(2, State::pending, true, true)};
  EXPECT_EQ(next_step(jobs).hold, std::vector<int>{2});
}

TEST(JobOrder, TheOldestThatIsPendingStaysSo) {
  const std::vector<QueuedJob> jobs{job(4, State::pending), job(5, State::held),
                                    job(6, State::pending)};
  const OrderStep step = next_step(jobs);
  EXPECT_TRUE(step.release.empty());
  EXPECT_EQ(step.hold, std::vector<int>{6});
}

}  // namespace
}  // namespace rlx::printer_app
