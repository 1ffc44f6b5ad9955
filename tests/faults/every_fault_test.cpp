// Every call of every function that can fail, once for each error that it can fail with, against
// the table of expectations.cpp.

#include <gtest/gtest.h>

#include <cerrno>
#include <set>
#include <string>
#include <vector>

#include "faults/check_fault.h"
#include "faults/expectations.h"
#include "faults/fault_jobs.h"
#include "faults/fault_rig.h"

namespace rlx::testing {
namespace {

/// How often an error is met that must pass.
constexpr std::uint32_t kAgainAndAgain = 4;
constexpr std::uint32_t kFromThenOn = UINT32_MAX;

/// What is wrong with a path stays wrong.
std::uint32_t times_of(Call call, int error) {
  if (call == Call::stat) {
    return kFromThenOn;
  }
  const bool passes = call != Call::close && (error == EINTR || error == EAGAIN);
  return passes ? kAgainAndAgain : 1;
}

Fault make_fault(Call call, Role role, std::uint32_t number, int error) {
  Fault fault{.call = call, .role = role, .error = error, .first = number};
  fault.effect = error == 0 ? Effect::zero : Effect::fail;
  fault.times = times_of(call, error);
  return fault;
}

std::set<int> errors_of(const std::vector<Expectation>& rows) {
  std::set<int> errors;
  for (const Expectation& row : rows) {
    errors.insert(row.errors.begin(), row.errors.end());
  }
  return errors;
}

class EveryFault : public ::testing::TestWithParam<Job> {
 protected:
  EveryFault() : reference_(make_reference(GetParam())), rig_(GetParam()) {}

  /// Tries all faults on a job that is disturbed by `base` already, which changes nothing.
  void try_all(const Plan& base) {
    const Outcome undisturbed = rig_.run(base);
    expect_undisturbed(reference_, undisturbed);
    for (std::size_t call = 0; call < kCalls; ++call) {
      for (std::size_t role = 0; role < kRoles; ++role) {
        try_calls(base, static_cast<Call>(call), static_cast<Role>(role),
                  undisturbed.tally.calls[call][role]);
        RETURN_IF_FAILED();
      }
    }
  }

 private:
  void try_calls(const Plan& base, Call call, Role role, std::uint32_t count) {
    const std::set<int> errors = errors_of(expectations_for(GetParam().kind, call, role));
    if (count != 0 && errors.empty() && !is_other_program()) {
      ADD_FAILURE() << "no row in the table for " << describe({.call = call, .role = role});
    }
    for (const int error : errors) {
      for (std::uint32_t number = 1; number <= count; ++number) {
        try_fault(base, make_fault(call, role, number, error));
        RETURN_IF_FAILED();
      }
    }
  }

  void try_fault(Plan plan, const Fault& fault) {
    SCOPED_TRACE(describe(fault));
    plan.faults[0] = fault;
    expect_as_in_table(fault, GetParam(), reference_, rig_.run(plan));
  }

  Reference reference_;
  FaultRig rig_;
};

using SmallJob = EveryFault;
using LargeJob = EveryFault;

TEST_P(SmallJob, ReadAndWrittenWhole) {
  try_all({});
}

/// Every page leaves before the next bytes are read.
TEST_P(SmallJob, InPieces) {
  try_all({.read_limit = 7, .input_never_ready = true});
}

TEST_P(LargeJob, ReadAndWrittenWhole) {
  try_all({});
}

INSTANTIATE_TEST_SUITE_P(Faults, SmallJob, ::testing::ValuesIn(small_jobs()), JobName());
INSTANTIATE_TEST_SUITE_P(Faults, LargeJob, ::testing::ValuesIn(large_jobs()), JobName());

}  // namespace
}  // namespace rlx::testing
