#pragma once

#include <cstdint>

#include "job/status.h"

namespace rlx {

// The log that all filter processes of a machine share. What goes there: support/narrowing.h.

/// Bytes that the log may hold before it is emptied. The newline of the last line is not counted,
/// so the file may end one byte above.
inline constexpr std::int64_t kLogCapBytes = 2'000'000;

/// Results of log_append.
inline constexpr Status kLogOpenFailed{-1};
inline constexpr Status kLogLockFailed{-2};
inline constexpr Status kLogStatFailed{-3};
inline constexpr Status kLogTruncateFailed{-4};
inline constexpr Status kLogSeekFailed{-5};
inline constexpr Status kLogWriteFailed{-6};

/// Appends a line and a newline to the log (fixed_paths::kLostBitLog), which is created with mode
/// 0666 (less the umask) when it is missing; its directory is not. A line that would take the file
/// above kLogCapBytes empties it first: all earlier lines are lost, there is no rotation. The file
/// is locked meanwhile, so the lines of several processes never mix. A line whose newline could not
/// be written gets it from the next call. Only a regular file is written to: a symbolic link, a
/// FIFO or a device in its place counts as a log that cannot be opened.
/// @param line  without a newline, NUL-terminated.
/// @return ST_OK, or the negative result above that names the step that failed.
Status log_append(const char* line);

}  // namespace rlx
