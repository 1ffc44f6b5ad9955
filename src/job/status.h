#pragma once

namespace rlx {

/// What every function returns that can fail or end something: ST_OK is success, any other value is
/// handed up unchanged. What ends the job becomes the exit status of the process
/// (job/exit_status.h). A function that cannot fail returns nothing.
enum class [[nodiscard]] Status : int{
    /// A byte or a record was delivered; a write succeeded.
    ST_OK = 0,
    /// Clean end of the input.
    ST_EOF = -1,
    /// A failure that has been reported, or that has no message.
    ST_FAILED = 1,
    /// A frame header is malformed: a count byte is no digit, or the marker is neither CNT nor END.
    ST_FRAME_BAD = 1,
    /// A frame with count 0000 was read.
    ST_FRAME_EMPTY = 3,
    /// The input ended at a frame border after a CNT frame: the END frame is missing.
    ST_FRAME_NOEND = 4,
    /// The input ended inside a frame header or inside frame data.
    ST_FRAME_SHORT = 5,
    /// A sequence would need bytes from beyond the end of the END frame.
    ST_CUT = 6,
    /// Read error on standard input.
    ST_IOERR = 129,
    /// The font variant and the resolution of the fonts do not go together. Shares its number with
    /// ST_EOF, which never leaves the main loop.
    ST_NO_FONT_CLASS = -1,
    /// The font library, or one of its entry points, is missing. Never ends a job.
    ST_NO_FONT_LIBRARY = -128,
    /// The font library reported an error.
    ST_FONT_ERROR = -129,
};
using enum Status;

}  // namespace rlx
