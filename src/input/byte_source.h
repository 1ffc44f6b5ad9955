#pragma once

#include <cstdint>

#include "input/framed_transfer.h"
#include "input/raw_input.h"
#include "job/settings.h"
#include "job/status.h"

namespace rlx {

/// Flag of zqgetc: a read error is not reported on standard error.
inline constexpr int kQuiet = 2;

/// The bytes of the job that can be looked at in place: the rest of the input buffer, or with
/// option -d the rest of the current frame. Taking bytes means advancing `next`.
inline ByteWindow& job_window() {
  return job_settings.framed_output != 0 ? framed_transfer.window : raw_window;
}

/// zqgetc when the window is empty.
int zqgetc_refill(int flags, std::uint8_t* byte);

/// Delivers the next byte of the job, out of its frame with option -d.
/// @param flags  0 or kQuiet.
/// @return ST_OK; ST_EOF at the end of the input; ST_IOERR on a read error, which is reported with
/// the system's text unless kQuiet is given or the input is framed. With option -d empty frames are
/// echoed, and an input that ends without an END frame or with a bad frame ends the process: after
/// a CNT frame the output is closed with an empty END frame first.
inline int zqgetc(int flags, std::uint8_t* byte) {
  ByteWindow& window = job_window();
  if (window.empty()) [[unlikely]] {
    return zqgetc_refill(flags, byte);
  }
  *byte = *window.next++;
  return ST_OK;
}

/// Delivers the next byte of standard input, whatever the options are. @return as zqgetc.
int stdgetc(std::uint8_t* byte);

/// Looks whether standard input has another byte, and leaves it there. @return as stdgetc.
int peek_input();

}  // namespace rlx
