// Descriptors are short: at most one file is open beside the three streams.

#include <gtest/gtest.h>

#include <cstdint>

#include "faults/check_fault.h"
#include "faults/fault_jobs.h"
#include "faults/fault_rig.h"

namespace rlx::testing {
namespace {

constexpr std::uint32_t kStreams = 3;

class ShortOfDescriptors : public ::testing::TestWithParam<Job> {
 protected:
  ShortOfDescriptors() : reference_(make_reference(GetParam())), rig_(GetParam()) {}

  static bool has_form() {
    return GetParam().kind == JobKind::form || GetParam().kind == JobKind::conditions;
  }

  Reference reference_;
  FaultRig rig_;
};

TEST_P(ShortOfDescriptors, OneFreeIsEnough) {
  for (const std::uint32_t free : {1U, 2U, 3U}) {
    expect_undisturbed(reference_, rig_.run({.descriptors = kStreams + free}));
  }
}

TEST_P(ShortOfDescriptors, NoneFreeIsAFormThatCannotBeRead) {
  const Outcome outcome = rig_.run({.descriptors = kStreams});
  if (!has_form()) {
    expect_undisturbed(reference_, outcome);
    return;
  }
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.messages, "filter: FCB data error\n");
  EXPECT_EQ(broken_rule(OutputRule::ended, GetParam(), reference_, outcome), "");
}

INSTANTIATE_TEST_SUITE_P(Faults, ShortOfDescriptors, ::testing::ValuesIn(small_jobs()), JobName());

}  // namespace
}  // namespace rlx::testing
