#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "faults/expectations.h"
#include "faults/fault_rig.h"
#include "faults/output_rules.h"

namespace rlx::testing {

/// For messages: which fault it is.
std::string describe(const Fault& fault);

/// Fails the test when an outcome is not what a row says for an error.
void expect_outcome(const Expectation& row, int error, const Job& job, const Reference& reference,
                    const Outcome& outcome);

/// Fails the test when the outcome of a fault is not what the table says; the outcome tells where
/// in the job it was met.
void expect_as_in_table(const Fault& fault, const Job& job, const Reference& reference,
                        const Outcome& outcome);

/// Fails the test when a disturbance changed anything at all.
void expect_undisturbed(const Reference& reference, const Outcome& outcome);

/// A sweep goes no further after its first failure: a program that is broken once is broken at all
/// places, and perhaps slow to end.
#define RETURN_IF_FAILED() \
  do {                     \
    if (HasFailure()) {    \
      return;              \
    }                      \
  } while (false)

/// Jobs as parameters of tests.
struct JobName {
  std::string operator()(const ::testing::TestParamInfo<Job>& info) const {
    return info.param.name;
  }
};

}  // namespace rlx::testing
