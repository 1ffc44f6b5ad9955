// Failures behind every single byte of the input and of the output, and failures that come in twos.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "faults/check_fault.h"
#include "faults/fault_jobs.h"
#include "faults/fault_rig.h"

namespace rlx::testing {
namespace {

class EveryPlace : public ::testing::TestWithParam<Job> {
 protected:
  EveryPlace() : reference_(make_reference(GetParam())), rig_(GetParam()) {}

  static const Job& job() { return GetParam(); }
  static bool framed() { return job().kind == JobKind::framed; }

  Outcome run(Plan plan, const Fault& first, const Fault& second = {}) {
    plan.faults = {first, second};
    return rig_.run(plan);
  }

  /// Fails each call of a function in turn; what comes of it stands in the table.
  void fail_each(const Plan& base, Call call, Role role) {
    const std::uint32_t count = calls_of(rig_.run(base).tally, call, role);
    ASSERT_GT(count, 0U);
    for (std::uint32_t number = 1; number <= count; ++number) {
      const Fault fault{.call = call, .role = role, .error = EIO, .first = number};
      SCOPED_TRACE(describe(fault));
      expect_as_in_table(fault, job(), reference_, run(base, fault));
      RETURN_IF_FAILED();
    }
  }

  /// Each call finds its descriptor not ready, and the wait for it fails.
  void fail_waiting(Call call, Role role, int error) {
    const Plan base{.read_limit = 7, .input_never_ready = true};
    const std::uint32_t count = calls_of(rig_.run(base).tally, call, role);
    for (std::uint32_t number = 1; number <= count; ++number) {
      const Outcome outcome =
          run(base, {.call = call, .role = role, .error = EAGAIN, .first = number},
              {.call = Call::poll_wait, .role = role, .error = error, .first = 1});
      const Fault fault{.call = call, .role = role, .error = error, .first = number};
      SCOPED_TRACE("waiting: " + describe(fault));
      EXPECT_EQ(outcome.tally.faults_met, 2U);
      expect_as_in_table(fault, job(), reference_, outcome);
      RETURN_IF_FAILED();
    }
  }

  Reference reference_;
  FaultRig rig_;
};

constexpr Fault kReadError{.call = Call::read, .role = Role::input, .error = EIO, .first = 1};

TEST_P(EveryPlace, AFailedWriteBehindEveryByte) {
  fail_each({.write_limit = 1}, Call::write, Role::output);
}

TEST_P(EveryPlace, AFailedReadBehindEveryByte) {
  fail_each({.read_limit = 1}, Call::read, Role::input);
}

TEST_P(EveryPlace, AFailedReadBehindEveryByteWhilePagesLeaveAtOnce) {
  fail_each({.read_limit = 1, .input_never_ready = true}, Call::read, Role::input);
}

TEST_P(EveryPlace, AFailedWaitIsAFailedTransfer) {
  for (const int error : {ENOMEM, EINVAL}) {
    fail_waiting(Call::read, Role::input, error);
    fail_waiting(Call::write, Role::output, error);
  }
}

TEST_P(EveryPlace, AnInterruptedWaitIsTriedAgain) {
  const Plan base{.read_limit = 7, .input_never_ready = true};
  for (const auto& [call, role] :
       {std::pair(Call::read, Role::input), std::pair(Call::write, Role::output)}) {
    const Fault unready{.call = call, .role = role, .error = EAGAIN, .first = 2, .times = 3};
    const Fault signal{.call = Call::poll_wait, .role = role, .error = EINTR, .first = 1};
    expect_undisturbed(reference_, run(base, unready, signal));
  }
}

/// The status says what became of the output, when both fail.
TEST_P(EveryPlace, AReadErrorWhoseOutputCannotBeWrittenIsAWriteError) {
  const Plan base{.read_limit = 1};
  const Fault write_error{.call = Call::write, .role = Role::output, .error = ENOSPC, .first = 1};
  Fault read_error = kReadError;
  read_error.first = 3;
  const Outcome outcome = run(base, read_error, write_error);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.status, outcome.tally.faults_met == 2 ? 1 : 129);
  EXPECT_EQ(outcome.messages, framed() ? "" : "filter: Input/output error\nwrite error");
}

TEST_P(EveryPlace, AReadErrorWhoseOutputCannotBeClosedIsAWriteError) {
  const Fault close_error{.call = Call::close, .role = Role::output, .error = EIO, .first = 1};
  const Outcome outcome = run({}, kReadError, close_error);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.messages, framed() ? "write error" : "filter: Input/output error\nwrite error");
}

/// A message that cannot be written is lost, and nothing else.
TEST_P(EveryPlace, AMessageThatCannotBeWrittenChangesNothing) {
  const Fault mute{
      .call = Call::message, .role = Role::messages, .error = EBADF, .first = 1, .times = 100};
  for (const Fault& fault :
       {kReadError, Fault{.call = Call::write, .role = Role::output, .error = EIO, .first = 1},
        Fault{.call = Call::close, .role = Role::output, .error = EIO, .first = 1}}) {
    SCOPED_TRACE(describe(fault));
    Outcome outcome = run({}, fault, mute);
    EXPECT_EQ(outcome.messages, "");
    outcome.messages = run({}, fault).messages;
    outcome.tally.faults_met = 1;
    expect_as_in_table(fault, job(), reference_, outcome);
  }
}

INSTANTIATE_TEST_SUITE_P(Faults, EveryPlace, ::testing::ValuesIn(small_jobs()), JobName());

}  // namespace
}  // namespace rlx::testing
