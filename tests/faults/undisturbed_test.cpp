// Without a fault the jobs run to their end, and the shim sees their transfers: otherwise the other
// tests would show nothing.

#include <gtest/gtest.h>

#include "faults/check_fault.h"
#include "faults/fault_jobs.h"
#include "faults/fault_rig.h"

namespace rlx::testing {
namespace {

class Undisturbed : public ::testing::TestWithParam<Job> {
 protected:
  static Outcome run() { return FaultRig(GetParam()).run(); }
};

TEST_P(Undisturbed, RunsToItsEnd) {
  const Outcome outcome = run();
  EXPECT_EQ(outcome.status, 0) << "exit status (" << kEndedBySignal
                               << " + n: ended by signal n; 14: by the time limit)";
  EXPECT_EQ(outcome.messages, "");
  EXPECT_FALSE(outcome.output.empty());
}

TEST_P(Undisturbed, MovesItsBytesWhereTheShimSeesIt) {
  const Tally tally = run().tally;
  EXPECT_TRUE(tally.shim_stands);
  EXPECT_GT(calls_of(tally, Call::read, Role::input), 0U);
  EXPECT_GT(calls_of(tally, Call::write, Role::output), 0U);
}

INSTANTIATE_TEST_SUITE_P(SmallJobs, Undisturbed, ::testing::ValuesIn(small_jobs()), JobName());
INSTANTIATE_TEST_SUITE_P(LargeJobs, Undisturbed, ::testing::ValuesIn(large_jobs()), JobName());

}  // namespace
}  // namespace rlx::testing
