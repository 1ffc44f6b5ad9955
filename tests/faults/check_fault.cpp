#include "faults/check_fault.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "support/escaped_bytes.h"

namespace rlx::testing {

namespace {

bool is_in_copy(const Job& job, const Reference& reference, const Tally& tally) {
  return job.kind == JobKind::pass_through &&
         tally.written_before_fault >= reference.undisturbed.size() - job.copied_bytes;
}

bool is_when(When when, const Fault& fault, bool in_copy) {
  switch (when) {
    case When::always:
      return true;
    case When::first:
      return fault.first == 1;
    case When::later:
      return fault.first > 1;
    case When::in_job:
      return !in_copy;
    case When::in_copy:
      return in_copy;
  }
  return false;
}

std::string effect_text(const Fault& fault) {
  switch (fault.effect) {
    case Effect::fail:
      return std::string("fails: ") + std::strerror(fault.error);
    case Effect::zero:
      return "returns 0";
    case Effect::shorten:
      return "moves " + std::to_string(fault.bytes) + " bytes at most";
  }
  return "";
}

/// True when a row is about a fault that was met: its error, its place among the calls and in the
/// job.
bool applies(const Expectation& row, const Fault& fault, const Job& job, const Reference& reference,
             const Tally& tally) {
  const int error = fault.effect == Effect::zero ? 0 : fault.error;
  return std::ranges::find(row.errors, error) != row.errors.end() &&
         is_when(row.when, fault, is_in_copy(job, reference, tally));
}

}  // namespace

std::string describe(const Fault& fault) {
  return std::string(kCallNames[static_cast<std::size_t>(fault.call)]) + " " +
         kRoleNames[static_cast<std::size_t>(fault.role)] + " call " + std::to_string(fault.first) +
         " (" + std::to_string(fault.times) + " times) " + effect_text(fault);
}

void expect_outcome(const Expectation& row, int error, const Job& job, const Reference& reference,
                    const Outcome& outcome) {
  EXPECT_EQ(outcome.status, row.status)
      << "exit status (" << kEndedBySignal << " + n: ended by signal n; 14: by the time limit)";
  EXPECT_EQ(outcome.messages, message_of(row, error));
  EXPECT_EQ(broken_rule(row.output, job, reference, outcome), "");
}

void expect_as_in_table(const Fault& fault, const Job& job, const Reference& reference,
                        const Outcome& outcome) {
  EXPECT_GT(outcome.tally.faults_met, 0U);
  // Another program, or its language, may do without what it asked for.
  if (fault.call == Call::malloc && outcome.status == 0 && is_other_program()) {
    expect_undisturbed(reference, outcome);
    return;
  }
  for (const Expectation& row : expectations_for(job.kind, fault.call, fault.role)) {
    if (applies(row, fault, job, reference, outcome.tally)) {
      expect_outcome(row, fault.error, job, reference, outcome);
      return;
    }
  }
  ADD_FAILURE() << "no row in the table";
}

void expect_undisturbed(const Reference& reference, const Outcome& outcome) {
  EXPECT_EQ(outcome.status, 0) << "exit status (" << kEndedBySignal
                               << " + n: ended by signal n; 14: by the time limit)";
  EXPECT_EQ(outcome.messages, "");
  EXPECT_TRUE(outcome.output == reference.undisturbed)
      << describe_difference(reference.undisturbed, outcome.output);
}

}  // namespace rlx::testing
