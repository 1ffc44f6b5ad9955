#pragma once

#include <string>

#include "running/filter_run.h"
#include "running/print_job.h"

namespace rlx::spooler {

/// What went wrong, for a program and for people.
struct Failure {
  Problem problem = Problem::none;
  std::string words;  ///< one line: the filter's words, and what to do about it
};

/// Explains why a run failed. For a form that the filter refuses it asks the form checker, which
/// knows the line.
/// @param report  one of which failed() is true.
Failure explain_failure(const PrintJob& job, const RunReport& report);

/// A command line for people, quoted as a shell takes it.
std::string command_line(const FilterCommand& command);

}  // namespace rlx::spooler
