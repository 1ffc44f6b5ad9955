#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "running/cancellation.h"
#include "running/child_process.h"
#include "running/job_source.h"
#include "running/page_counter.h"

namespace rlx::spooler {

/// A run of the filter, and where its output goes.
struct FilterCommand {
  std::string program;  ///< a path
  std::vector<std::string> arguments;
};

/// How a run went. A job is printed when `failed` says no and nothing was cancelled.
struct RunReport {
  ProcessEnd end;
  PageCount count;
  std::uint64_t bytes = 0;  ///< handed on
  std::string filter;       ///< its name, which it puts in front of its words; empty without one
  std::string words;        ///< what the filter said on standard error, at most kMostWords bytes
  std::string job_error;    ///< why the job could not be read or converted; empty when it could
  int output_error = 0;     ///< why the output was not taken, as errno; 0 when it was

  static constexpr std::size_t kMostWords = 16384;
};

/// True when a run did not print its job as it should: any status but 0, a job that could not be
/// read, output that nobody took, and status 0 with a word of the filter's own: so it ends when the
/// rest of a job in the printer's language could not be copied.
bool failed(const RunReport& report);

/// Runs the filter: the job goes in, what comes out is handed on unchanged and counted.
/// When `run` is cancelled, the filter's input is closed: it writes what it has and ends the
/// printer's job, all of which is handed on as long as it is taken.
/// @param job       stops when `run` is cancelled.
/// @param output    descriptor that takes the printer's job.
/// @param listener  told of each page when its bytes were taken.
/// @param run       cancelled at the end in any case: a filter may end before its job.
/// @throws std::system_error when the filter cannot be started.
RunReport run_filter(const FilterCommand& command, JobSource& job, int output,
                     const PageListener& listener, Cancellation& run);

/// A job in the printer's language: handed on unchanged and counted, without the filter.
RunReport hand_on(JobSource& job, int output, const PageListener& listener);

}  // namespace rlx::spooler
