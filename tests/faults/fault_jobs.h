#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace rlx::testing {

enum class JobKind : std::uint8_t { plain, form, framed, sequences, conditions, pass_through };

/// A job that the faults are tried on.
struct Job {
  JobKind kind = JobKind::plain;
  const char* name = "";
  std::vector<std::string> options;
  std::string input;
  /// Lays the files that the job finds, below the current directory.
  void (*lay_files)() = nullptr;
  /// Where the bytes begin that a pass-through copies, counted from the end of the output; 0 for
  /// the other kinds.
  std::size_t copied_bytes = 0;
};

/// For the names of tests.
inline std::ostream& operator<<(std::ostream& stream, const Job& job) {
  return stream << job.name;
}

/// One job of each kind, of a few hundred bytes: every fault at every place is affordable.
const std::vector<Job>& small_jobs();

/// Jobs of several buffers, frames and blocks.
const std::vector<Job>& large_jobs();

const Job& small_job(JobKind kind);

/// Where the jobs' files lie.
inline constexpr const char* kFormPlace = "forms/fcbe/LABEL";
inline constexpr const char* kRecordFormPlace = "sandbox/usr/local/lib/PXLQlp/fcbe/LABL";

}  // namespace rlx::testing
