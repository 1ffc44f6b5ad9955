#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "sizes/large_jobs.h"

namespace rlx::testing {

/// What a run of the filter on a large job came to.
struct LargeRun {
  /// Empty when every byte that was printed is the right one; else what was wrong first.
  std::string fault;
  std::uint64_t bytes_printed = 0;
  int status = 0;  ///< the exit status; 1000 and the signal that ended it
  std::string messages;
  /// As the system counts them when the whole job has been read, in KiB: the most address space,
  /// and the most memory that the process ever had.
  std::uint64_t address_space = 0;
  std::uint64_t memory = 0;
};

/// Runs the filter in the current directory between two pipes, on units of two jobs that are the
/// same, until it has got at least `bytes`: one is fed, of the other one it is told what must come
/// out, which is compared byte by byte while it comes. Nothing is stored.
LargeRun run_on_large_job(const std::vector<std::string>& options, LargeJob& fed, LargeJob& told,
                          std::uint64_t bytes);

}  // namespace rlx::testing
