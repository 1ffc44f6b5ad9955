#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "faults/fault_board.h"
#include "faults/fault_jobs.h"
#include "faults/output_rules.h"

namespace rlx::testing {

/// Which calls of a function on a role a row of the table is about.
enum class When : std::uint8_t {
  always,
  first,    ///< the first call
  later,    ///< all behind the first
  in_job,   ///< before the rest of a job is passed through
  in_copy,  ///< while it is
};

using JobKinds = std::vector<JobKind>;

/// A row of the table: what a fault of a kind of job comes to.
struct Expectation {
  JobKinds jobs;
  Call call;
  Role role;
  When when;
  std::vector<int> errors;  ///< 0: the call returns 0
  int status;
  /// What stands on standard error; "%m" is the system's text of the error.
  const char* message;
  OutputRule output;
};

/// The rows of the table for the calls of a job on a role. Every function that a job calls on any
/// file has rows.
std::vector<Expectation> expectations_for(JobKind kind, Call call, Role role);

/// A row's message for an error.
std::string message_of(const Expectation& expectation, int error);

}  // namespace rlx::testing
