#pragma once

#include <sys/types.h>

#include "running/cancellation.h"
#include "running/descriptor.h"

namespace rlx::spooler {

/// A job that can be read more than once: the spooler's file, or a copy of what a pipe gave.
class KeptJob {
 public:
  /// @param descriptor  the job, somebody else's. A file is used as it is; anything else is copied
  ///                    to a file without a name in $TMPDIR (/tmp without one), as far as it came
  ///                    when the job is cancelled.
  /// @throws std::system_error when it cannot be read or kept.
  KeptJob(int descriptor, const Cancellation& cancellation);

  /// Goes back to where the job begins, which is where a file stood at first. @return the
  /// descriptor to read from.
  /// @throws std::system_error when the file cannot be read.
  int rewind() const;

 private:
  int descriptor_;
  off_t begin_ = 0;
  Descriptor copy_;
};

}  // namespace rlx::spooler
