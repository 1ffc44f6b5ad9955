#pragma once

#include <functional>
#include <string>
#include <vector>

namespace rlx::testing {

/// What stands where the filter looks for a file and is none that it could read.
struct HostileFile {
  std::string kind;
  std::function<void(const std::string& path)> make;
  bool absent = false;  ///< counts as no file, not as an unreadable one
};

/// All kinds: those of odd_files.h, what needs a second process, and links that lead astray.
const std::vector<HostileFile>& hostile_files();

}  // namespace rlx::testing
