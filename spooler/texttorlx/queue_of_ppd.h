#pragma once

#include <string>
#include <vector>

#include "mapping/filter_arguments.h"
#include "mapping/job_settings.h"

namespace rlx::texttorlx {

/// What a queue's PPD file says.
struct Queue {
  spooler::QueueSettings settings;
  /// Defaults of the job options, by the option's name.
  std::vector<spooler::JobOption> defaults;
  /// What is wrong with its numbers.
  std::vector<spooler::OptionFault> faults;
};

/// Reads a PPD file. The queue's own settings are attributes:
///
///     *rlxEmulationMode: "1"         1, 2, 3, 4, 6 or 7
///     *rlxResolution: "240"          dots per inch; empty leaves it to the mode
///     *rlxCapabilities: "D240!D400"  what the printer can do
///     *rlxFilterFlags: ""            letters of A, D, f and q
///     *rlxFormDirectories: "/a:/b"   folders with forms, joined by ":"
///
/// Defaults that are what the printer does without being told (A4 paper) are left out, so that a
/// plain job stays what it is without a spooler.
/// @param path  empty for a queue without one, which has no settings.
/// @throws std::runtime_error when it cannot be read, with its line.
Queue read_ppd(const std::string& path);

}  // namespace rlx::texttorlx
