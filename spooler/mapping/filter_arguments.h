#pragma once

#include <string>
#include <vector>

#include "mapping/job_settings.h"

namespace rlx::spooler {

/// What a queue says of its printer, for every job.
struct QueueSettings {
  unsigned emulation_mode = 1;  ///< 1, 2 (400 dots per inch), 3 (form lengths), 4, 6 or 7
  unsigned resolution = 0;      ///< dots per inch; 0 leaves it to the mode and the capabilities
  std::string capabilities;     ///< tokens joined by "!", such as "D240!D400!f1"
  std::string filter_flags;     ///< letters of kFilterFlags
  /// Forms stand below, in fcbe/NAME. A folder's name holds no ":".
  std::vector<std::string> form_directories;

  /// Options of the filter without a value that a queue may need: output variants 1 and 2, the full
  /// binding sequence, no print conditions.
  static constexpr std::string_view kFilterFlags = "ADfq";
};

/// Looks at what a queue says. @return what is wrong, by the names of the PPD attributes
/// (rlxEmulationMode and so on).
std::vector<OptionFault> check_queue(const QueueSettings& queue);

/// The filter's arguments for a job of a queue, without the program's name. Modes come first, in
/// the order in which the filter reads them: what a job asks for stands behind what its queue does.
/// @param queue  without a fault of check_queue.
std::vector<std::string> filter_arguments(const QueueSettings& queue, const JobSettings& job);

}  // namespace rlx::spooler
