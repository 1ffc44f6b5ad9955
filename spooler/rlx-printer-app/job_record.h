#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mapping/job_settings.h"

namespace rlx::printer_app {

/// What is remembered of a job's run, to be looked at later.
struct JobRecord {
  std::string kind;    ///< of the printer, when it was printed
  int resolution = 0;  ///< dots per inch
  std::string format;
  spooler::JobSettings settings;      ///< its own and the printer's defaults of that time
  std::vector<std::string> commands;  ///< of the filter, quoted for a shell
  std::string words;                  ///< why it was not printed; empty when it was
  std::uint64_t pages = 0;
  std::uint64_t impressions = 0;
  std::uint64_t bytes = 0;
};

std::string to_text(const JobRecord& record);
/// @return false when it is no record.
bool from_text(const std::string& text, JobRecord& record);

/// The records of the last jobs of each printer: a small file each.
class JobRecords {
 public:
  /// @param folder  is there.
  explicit JobRecords(std::string folder) : folder_(std::move(folder)) {}

  /// Keeps one, and drops the one that is kKept jobs older. @return false, with errno, when it
  /// could not be kept.
  bool keep(int printer_id, int job_id, const JobRecord& record) const;
  /// @return false when there is none.
  bool find(int printer_id, int job_id, JobRecord& record) const;

  static constexpr int kKept = 1000;

 private:
  std::string path_of(int printer_id, int job_id) const;

  std::string folder_;
};

}  // namespace rlx::printer_app
