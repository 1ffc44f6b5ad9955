#pragma once

#include <string>

#include "mapping/job_settings.h"

namespace rlx::spooler {

/// Copies that a print-condition command can ask for: its column has three digits.
inline constexpr unsigned kMostCommandCopies = 999;

/// A print-condition command (ESC Q 1 ; length SP n and fixed columns, docs/line-printer-stream.md)
/// for what the filter has no option for: paper, tray, orientation, sides, offsets, copies. It is
/// of layout 2 with a blank form name, because in the other layouts that name lies over the copies;
/// a blank name leaves the form of the command line in force. It goes in front of the job. A
/// command of the job's own, later, takes the place of all of it.
/// @param copies  that the printer is to make, 1 to kMostCommandCopies; usually not
///                `settings.copies`, see OwnConditionsScan.
/// @return empty when there is nothing to ask for: the job then is what it is without a spooler.
std::string condition_command(const JobSettings& settings, unsigned copies);

}  // namespace rlx::spooler
