// Faults that meet in one place only, beside the sweeps.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "faults/fault_rig.h"
#include "support/input_stream.h"

namespace rlx::testing {
namespace {

Fault once(Call call, Role role, int error, std::uint32_t number) {
  return {.call = call, .role = role, .error = error, .first = number};
}

Plan plan_of(const Fault& first) {
  Plan plan;
  plan.faults[0] = first;
  return plan;
}

Plan plan_of(const Fault& first, const Fault& second) {
  Plan plan = plan_of(first);
  plan.faults[1] = second;
  return plan;
}

void lay_form_twice() {
  write_file(kFormPlace, "print 1\n");
  write_file("later/fcbe/LABEL", "lpi 900 20\n");
}

/// The next directory's form of that name is another one.
TEST(FaultCorners, AFormThatCannotBeJudgedIsNotLookedForElsewhere) {
  const Job job{
      JobKind::form, "form", {"-p", "forms:later", "-n", "LABEL"}, "A\n\f", lay_form_twice};
  FaultRig rig(job);
  const Outcome undisturbed = rig.run();
  ASSERT_EQ(undisturbed.status, 0);
  for (const int error : {EIO, ENOMEM}) {
    // The first look fails; the second one, at the same file, does not.
    EXPECT_EQ(rig.run(plan_of(once(Call::stat, Role::form, error, 1))).output, undisturbed.output);
    Fault twice = once(Call::stat, Role::form, error, 1);
    twice.times = 2;
    const Outcome outcome = rig.run(plan_of(twice));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.messages, "filter: FCB data error\n");
    EXPECT_EQ(outcome.output, "");
  }
  for (const int error : {ENOENT, ENOTDIR, EACCES}) {
    const Outcome outcome = rig.run(plan_of(once(Call::stat, Role::form, error, 1)));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.output, undisturbed.output);
  }
}

TEST(FaultCorners, AMissingEndFrameDoesNotHideAFailingClose) {
  const Job job{JobKind::framed, "framed", {"-d"}, cnt_frame("A\f"), lay_form_twice};
  FaultRig rig(job);
  const Outcome undisturbed = rig.run();
  ASSERT_EQ(undisturbed.status, 0);
  const Outcome outcome = rig.run(plan_of(once(Call::close, Role::output, EIO, 1)));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.messages, "write error");
  EXPECT_EQ(outcome.output, undisturbed.output);
}

/// A copy that failed has been reported; that the close fails as well says nothing new.
TEST(FaultCorners, ACopyThatFailsKeepsItsTextAndStatusWhenTheCloseFailsToo) {
  const Job& job = small_job(JobKind::pass_through);
  FaultRig rig(job);
  const std::uint32_t writes = calls_of(rig.run().tally, Call::write, Role::output);
  const Outcome outcome = rig.run(plan_of(once(Call::write, Role::output, ENOSPC, writes),
                                          once(Call::close, Role::output, ENOSPC, 1)));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.messages, "filter: No space left on device\n");
}

}  // namespace
}  // namespace rlx::testing
