#pragma once

#include <ostream>

#include "job/status.h"

namespace rlx {

// What a test writes as a number is a number of the contract: the exit status, or 0 for success.

inline bool operator==(Status status, int number) {
  return static_cast<int>(status) == number;
}

// GoogleTest looks for this name.
// NOLINTNEXTLINE(readability-identifier-naming)
inline void PrintTo(Status status, std::ostream* stream) {
  *stream << "status " << static_cast<int>(status);
}

}  // namespace rlx
