#pragma once

namespace rlx {

// Every reader, and every function that may end the job, returns an int status: 0 is success, any
// other value is handed up unchanged and becomes the exit status of the process.

/// A byte or a record was delivered; a write succeeded.
inline constexpr int ST_OK = 0;
/// Clean end of the input.
inline constexpr int ST_EOF = -1;
/// A frame header is malformed: a count byte is no digit, or the marker is neither CNT nor END.
inline constexpr int ST_FRAME_BAD = 1;
/// A frame with count 0000 was read.
inline constexpr int ST_FRAME_EMPTY = 3;
/// The input ended at a frame border after a CNT frame: the END frame is missing.
inline constexpr int ST_FRAME_NOEND = 4;
/// The input ended inside a frame header or inside frame data.
inline constexpr int ST_FRAME_SHORT = 5;
/// A sequence would need bytes from beyond the end of the END frame.
inline constexpr int ST_CUT = 6;
/// Read error on standard input.
inline constexpr int ST_IOERR = 129;

/// Exit status of every failure that is found before the first byte of the job is read, of a
/// malformed frame, and of standard output that cannot be written.
inline constexpr int kExitFailure = 1;

}  // namespace rlx
