#include "input/byte_source.h"

#include "support/messages.h"
#include "support/process_end.h"

namespace rlx {

namespace {

int report_read_error(int status, int flags) {
  if (status == ST_IOERR && (flags & kQuiet) == 0) {
    report_system_error();
  }
  return status;
}

int plain_getc(int flags, std::uint8_t* byte) {
  const int status = raw_refill();
  if (status != ST_OK) {
    return report_read_error(status, flags);
  }
  *byte = *raw_window.next++;
  return ST_OK;
}

/// Closes the job that went out so far, with an empty END frame.
void end_output() {
  framed_transfer.frame_kind = kEndFrame;
  framed_transfer.output_closed = true;
  prtclout();
}

/// An input without an END frame is complete all the same, once the output has one. What is still
/// held for a frame is dropped, here, with a bad frame and after a read error, deliberately: the
/// frame that it belongs to never ended.
[[noreturn]] void end_without_end_frame() {
  end_output();
  close_standard_output();
  end_process(ST_OK);
}

[[noreturn]] void end_with_bad_frame() {
  if (framed_transfer.last_data_kind != kEndFrame) {
    end_output();
  }
  end_process(kExitFailure);
}

int framed_read_error() {
  if (framed_transfer.last_data_kind == kCntFrame) {
    end_output();
  }
  return ST_IOERR;
}

int framed_getc(std::uint8_t* byte) {
  for (;;) {
    const int status = prtclin(byte);
    switch (status) {
      case ST_FRAME_EMPTY:
        prtclout();
        break;
      case ST_FRAME_NOEND:
        end_without_end_frame();
      case ST_FRAME_BAD:
      case ST_FRAME_SHORT:
        end_with_bad_frame();
      case ST_IOERR:
        return framed_read_error();
      default:
        return status;
    }
  }
}

}  // namespace

int zqgetc_refill(int flags, std::uint8_t* byte) {
  return job_settings.framed_output != 0 ? framed_getc(byte) : plain_getc(flags, byte);
}

int stdgetc(std::uint8_t* byte) {
  return plain_getc(0, byte);
}

int peek_input() {
  return report_read_error(raw_refill(), 0);
}

}  // namespace rlx
