#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "sizes/printed_job.h"

namespace rlx::testing {

/// A kind of job that may be as long as one likes: unit after unit, no two alike where the kind
/// allows it, so that a lost, repeated or misplaced one shows.
class LargeJob {
 public:
  LargeJob() = default;
  LargeJob(const LargeJob&) = delete;
  LargeJob& operator=(const LargeJob&) = delete;
  virtual ~LargeJob() = default;

  /// Appends the next unit of the job.
  virtual void make(std::string& job) = 0;
  /// What the last unit made becomes.
  virtual void print(PrintedJob& printed) = 0;
  /// What ends the job, behind the last unit.
  virtual std::string_view tail() const { return {}; }
  /// What comes of that and of the end.
  virtual void finish(PrintedJob& printed) = 0;
};

/// A kind, and the options of the filter for it.
struct LargeJobKind {
  const char* name;
  std::vector<std::string> options;
  std::unique_ptr<LargeJob> (*create)();
  /// Bytes of a large job in the short run: less for a kind that takes long.
  std::uint64_t short_run_bytes = std::uint64_t{32} << 20U;
};

/// How a test names it.
inline std::ostream& operator<<(std::ostream& stream, const LargeJobKind& kind) {
  return stream << kind.name;
}

const std::vector<LargeJobKind>& large_job_kinds();

/// A job of which every unit has a sequence with that many bytes of parameters, or of counted data.
std::unique_ptr<LargeJob> job_of_long_parameters(std::size_t bytes);
std::unique_ptr<LargeJob> job_of_counted_data(std::size_t bytes);

/// The name of the form of 66 lines of a sixth of an inch, and its file.
inline constexpr const char* kLargeJobForm = "SIXTYSIX";
inline constexpr std::string_view kLargeJobFormFile = "lpi 1200 66\nprint 1 79200\n";

}  // namespace rlx::testing
