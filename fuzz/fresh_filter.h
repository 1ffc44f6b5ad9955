#pragma once

#include "harness.h"

namespace rlx::fuzzing {

/// A filter as a new process has it.
inline void reset_filter() {
  renew_filter();
}

}  // namespace rlx::fuzzing
