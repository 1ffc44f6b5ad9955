// Real signals, pauses, a printer that does not read, and pipes that do not block: all of them
// change nothing.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>

#include "faults/check_fault.h"
#include "faults/fault_jobs.h"
#include "faults/fault_rig.h"
#include "faults/piped_run.h"

namespace rlx::testing {
namespace {

/// Until the pipes are full and the program waits for the printer.
constexpr int kLongIdle = 300;

class Pauses : public ::testing::TestWithParam<Job> {
 protected:
  Pauses() : reference_(make_reference(GetParam())), rig_(GetParam()) {}

  void expect_no_difference(const PipedRun& how, const Plan& plan = {}) {
    expect_undisturbed(reference_, run_between_pipes(rig_, GetParam().input, how, plan));
  }

  static void disturb_in_every_way(pid_t process) {
    interrupt(process);
    pause_and_continue(process);
    interrupt(process);
  }

  Reference reference_;
  FaultRig rig_;
};

using PipesOfLargeJobs = Pauses;

TEST_P(Pauses, OfThePrinter) {
  expect_no_difference({.idle_turns = kLongIdle});
}

TEST_P(Pauses, OfTheProgram) {
  expect_no_difference({.disturb = pause_and_continue});
  expect_no_difference({.idle_turns = kLongIdle, .disturb = pause_and_continue});
}

TEST_P(Pauses, BySignals) {
  const Plan plan{.interruptible = true};
  expect_no_difference({.disturb = interrupt}, plan);
  expect_no_difference({.idle_turns = kLongIdle, .disturb = interrupt}, plan);
}

TEST_P(Pauses, OfPipesThatDoNotBlock) {
  expect_no_difference({.nonblocking = true});
  expect_no_difference({.nonblocking = true, .idle_turns = kLongIdle});
}

TEST_P(Pauses, OfAllKinds) {
  expect_no_difference(
      {.nonblocking = true, .idle_turns = kLongIdle, .disturb = disturb_in_every_way},
      {.interruptible = true});
  expect_no_difference({.portion = 1000, .disturb = disturb_in_every_way},
                       {.input_never_ready = true, .interruptible = true});
}

/// A job of which a whole buffer stands ready asks for larger pipes; it may not get them.
TEST_P(PipesOfLargeJobs, NeedNotBecomeLarger) {
  constexpr std::size_t kWholePipe = 65536;
  const PipedRun at_once{.portion = kWholePipe};
  const Tally tally = run_between_pipes(rig_, GetParam().input, at_once).tally;
  for (const Role role : {Role::input, Role::output}) {
    EXPECT_EQ(calls_of(tally, Call::fcntl, role), 2U) << "the size, and the wish for another";
    for (const std::uint32_t number : {1U, 2U}) {
      for (const int error : {EPERM, EBUSY, EBADF, EINVAL, ENOMEM}) {
        Plan plan;
        plan.faults[0] = {.call = Call::fcntl, .role = role, .error = error, .first = number};
        SCOPED_TRACE(describe(plan.faults[0]));
        expect_no_difference(at_once, plan);
        EXPECT_EQ(rig_.tally().faults_met, 1U);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(LargeJobs, PipesOfLargeJobs, ::testing::ValuesIn(large_jobs()), JobName());
INSTANTIATE_TEST_SUITE_P(SmallJobs, Pauses, ::testing::ValuesIn(small_jobs()), JobName());
INSTANTIATE_TEST_SUITE_P(LargeJobs, Pauses, ::testing::ValuesIn(large_jobs()), JobName());

}  // namespace
}  // namespace rlx::testing
