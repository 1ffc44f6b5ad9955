#pragma once

#include <cstdint>

#include "input/frames.h"
#include "input/raw_input.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/messages.h"

namespace rlx {

/// Flag of zqgetc: a read error is not reported on standard error.
inline constexpr int kQuiet = 2;

/// Where the bytes of the job come from: standard input as it is, or with option -d the frames on
/// it.
struct ByteSource {
  const CommandLine& command_line;
  const Messages& messages;
  RawInput raw;
  FrameReader frames{raw};

  ByteSource(const CommandLine& options, const Messages& texts)
      : command_line(options), messages(texts) {}
};

inline bool is_framed(const ByteSource& source) {
  return source.command_line.framed_output != 0;
}

/// The bytes of the job that can be looked at in place: the rest of the input buffer, or with
/// option -d the rest of the current frame. Taking bytes means advancing `next`.
inline ByteWindow& job_window(ByteSource& source) {
  return is_framed(source) ? source.frames.window : source.raw.window;
}

/// True when the data of the END frame is used up: a sequence or character that needs more bytes
/// is cut here. Always false without option -d.
inline bool at_end_frame_end(const ByteSource& source) {
  return is_framed(source) && source.frames.frame_kind == kEndFrame && source.frames.window.empty();
}

/// zqgetc when the window is empty.
Status zqgetc_refill(ByteSource& source, int flags, std::uint8_t* byte);

/// zqgetc: delivers the next byte of the job, out of its frame with option -d. Whoever reads the
/// job uses this, or takes bytes that stand ready from the same window.
/// @param flags  0 or kQuiet.
/// @return ST_OK; ST_EOF at the end of the input; ST_IOERR on a read error, which is reported with
/// the system's text unless kQuiet is given or the input is framed. With option -d empty frames are
/// echoed, and an input that ends without an END frame or with a bad frame ends the process: after
/// a CNT frame the output is closed with an empty END frame first.
inline Status zqgetc(ByteSource& source, int flags, std::uint8_t* byte) {
  ByteWindow& window = job_window(source);
  if (window.empty()) [[unlikely]] {
    return zqgetc_refill(source, flags, byte);
  }
  *byte = *window.next++;
  return ST_OK;
}

/// Looks whether standard input has another byte, and leaves it there.
/// @return ST_OK, ST_EOF, or ST_IOERR on a read error, which is reported with the system's text.
Status peek_input(ByteSource& source);

}  // namespace rlx
