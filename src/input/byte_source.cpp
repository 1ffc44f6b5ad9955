#include "input/byte_source.h"

#include "support/process_end.h"

namespace rlx {

namespace {

Status report_read_error(const ByteSource& source, Status status, int flags) {
  if (status == ST_IOERR && (flags & kQuiet) == 0) {
    report_system_error(source.messages);
  }
  return status;
}

Status plain_getc(ByteSource& source, int flags, std::uint8_t* byte) {
  const Status status = raw_refill(source.raw);
  if (status != ST_OK) {
    return report_read_error(source, status, flags);
  }
  *byte = *source.raw.window.next++;
  return ST_OK;
}

/// Closes the job that went out so far, with an empty END frame.
void end_output(FrameReader& frames) {
  frames.frame_kind = kEndFrame;
  frames.output_closed = true;
  prtclout(frames);
}

/// An input without an END frame is complete all the same, once the output has one. What is still
/// held for a frame is dropped, here, with a bad frame and after a read error, deliberately: the
/// frame that it belongs to never ended.
[[noreturn]] void end_without_end_frame(FrameReader& frames) {
  end_output(frames);
  close_standard_output();
  end_process(ST_OK);
}

[[noreturn]] void end_with_bad_frame(FrameReader& frames) {
  if (frames.last_data_kind != kEndFrame) {
    end_output(frames);
  }
  end_process(ST_FAILED);
}

Status framed_read_error(FrameReader& frames) {
  if (frames.last_data_kind == kCntFrame) {
    end_output(frames);
  }
  return ST_IOERR;
}

Status framed_getc(FrameReader& frames, std::uint8_t* byte) {
  for (;;) {
    const Status status = prtclin(frames, byte);
    switch (status) {
      case ST_FRAME_EMPTY:
        prtclout(frames);
        break;
      case ST_FRAME_NOEND:
        end_without_end_frame(frames);
      case ST_FRAME_BAD:
      case ST_FRAME_SHORT:
        end_with_bad_frame(frames);
      case ST_IOERR:
        return framed_read_error(frames);
      default:
        return status;
    }
  }
}

}  // namespace

Status zqgetc_refill(ByteSource& source, int flags, std::uint8_t* byte) {
  return is_framed(source) ? framed_getc(source.frames, byte) : plain_getc(source, flags, byte);
}

Status peek_input(ByteSource& source) {
  return report_read_error(source, raw_refill(source.raw), 0);
}

}  // namespace rlx
