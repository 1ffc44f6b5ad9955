#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "running/descriptor.h"

namespace rlx::printer_app {

/// Who has a folder: a file `lock` in it, with the number of the process, locked as long as that
/// runs (flock).
class FolderLock {
 public:
  /// Takes the folder.
  /// @throws std::runtime_error when another server has it, or the file cannot be written.
  explicit FolderLock(const std::string& folder);

 private:
  spooler::Descriptor file_;
};

/// True when a server of another user runs with this folder: a sub-command that started one of its
/// own would be in its way.
bool is_anothers(const std::string& folder);

}  // namespace rlx::printer_app
