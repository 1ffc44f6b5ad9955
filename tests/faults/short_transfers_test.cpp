// Transfers that move less than was asked for change nothing.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "faults/check_fault.h"
#include "faults/fault_jobs.h"
#include "faults/fault_rig.h"

namespace rlx::testing {
namespace {

/// More than any of the files that a job looks at holds.
constexpr std::uint32_t kLargestFile = 120;

class ShortTransfers : public ::testing::TestWithParam<Job> {
 protected:
  ShortTransfers() : reference_(make_reference(GetParam())), rig_(GetParam()) {}

  void expect_no_difference(const Plan& plan) { expect_undisturbed(reference_, rig_.run(plan)); }

  /// Each transfer once with every size. @param base  what else disturbs the job.
  void shorten_each(const Plan& base) {
    const Tally tally = rig_.run(base).tally;
    for (const Call call : {Call::read, Call::write}) {
      for (std::size_t role = 0; role < kRoles; ++role) {
        shorten_calls(base, call, static_cast<Role>(role),
                      calls_of(tally, call, static_cast<Role>(role)));
        RETURN_IF_FAILED();
      }
    }
  }

  void limit_all(std::uint32_t bytes) {
    SCOPED_TRACE("all transfers limited to " + std::to_string(bytes) + " bytes");
    expect_no_difference({.read_limit = bytes});
    expect_no_difference({.write_limit = bytes});
    expect_no_difference({.read_limit = bytes, .write_limit = bytes, .input_never_ready = true});
  }

 private:
  std::uint32_t largest_transfer(Role role) const {
    switch (role) {
      case Role::input:
        return static_cast<std::uint32_t>(GetParam().input.size());
      case Role::output:
        return static_cast<std::uint32_t>(reference_.undisturbed.size());
      default:
        return kLargestFile;
    }
  }

  void shorten_calls(Plan plan, Call call, Role role, std::uint32_t count) {
    for (std::uint32_t number = 1; number <= count; ++number) {
      for (std::uint32_t size = 1; size < largest_transfer(role); ++size) {
        plan.faults[0] = {call, role, Effect::shorten, 0, number, 1, size};
        SCOPED_TRACE(describe(plan.faults[0]));
        expect_no_difference(plan);
        RETURN_IF_FAILED();
      }
    }
  }

  Reference reference_;
  FaultRig rig_;
};

using SmallJobInShort = ShortTransfers;
using LargeJobInShort = ShortTransfers;

TEST_P(SmallJobInShort, EveryTransferOfEverySize) {
  shorten_each({});
}

TEST_P(SmallJobInShort, AllTransfersOfEverySize) {
  for (std::uint32_t bytes = 1; bytes <= GetParam().input.size(); ++bytes) {
    limit_all(bytes);
    RETURN_IF_FAILED();
  }
}

TEST_P(LargeJobInShort, AllTransfersOfSizesAroundTheBuffers) {
  for (const std::uint32_t bytes :
       {1U, 13U, 4095U, 4096U, 4097U, 4112U, 8192U, 65535U, 65536U, 65537U, 131071U}) {
    limit_all(bytes);
    RETURN_IF_FAILED();
  }
}

INSTANTIATE_TEST_SUITE_P(Faults, SmallJobInShort, ::testing::ValuesIn(small_jobs()), JobName());
INSTANTIATE_TEST_SUITE_P(Faults, LargeJobInShort, ::testing::ValuesIn(large_jobs()), JobName());

}  // namespace
}  // namespace rlx::testing
