#include "output/frame_writer.h"

#include <span>

#include "support/process_end.h"

namespace rlx {

namespace {

/// Writes what is gathered, even if it is nothing.
Status write_out_frame(FrameWriter& frames, FrameKind kind, const char* module,
                       const char* function) {
  const std::span frame(frames.out_frame.data(),
                        kFrameHeaderBytes + static_cast<std::size_t>(frames.out_len));
  frames.out_len = 0;
  return write_frame(frame, kind, module, function);
}

void write_gathered(FrameWriter& frames, FrameKind kind) {
  if (write_out_frame(frames, kind, "rlxinout_ctl", "directout") != ST_OK) {
    end_process(ST_FAILED);
  }
}

/// What is held would overflow: it leaves as a CNT frame, whatever the input frame's marker is.
void cut_frame(FrameWriter& frames) {
  write_gathered(frames, kCntFrame);
}

std::size_t room_of(const FrameWriter& frames) {
  return static_cast<std::size_t>(kMaxOutputFrame - frames.out_len);
}

}  // namespace

void directout(FrameWriter& frames, Bytes piece) {
  if (piece.data() == nullptr) {
    return;
  }
  const PieceSink sink = frame_sink(frames);
  while (piece.size() > room_of(frames)) {
    if (frames.out_len == 0) {  // a piece that no frame holds
      sink.append(piece.first(kMaxOutputFrame));
      piece = piece.subspan(kMaxOutputFrame);
    }
    sink.cut();
  }
  sink.append(piece);
  if (frame_left(frames.input) == 0) {
    write_gathered(frames, frames.input.frame_kind);
  }
}

Status out_end_frame(FrameWriter& frames) {
  if (frames.out_len == 0 || frames.input.output_closed) {
    return ST_OK;
  }
  return write_out_frame(frames, kEndFrame, "zqeuctorlx", "main");
}

PieceSink frame_sink(FrameWriter& frames) {
  return {frames.out_frame.data() + kFrameHeaderBytes, &frames.out_len, kMaxOutputFrame,
          [](void* owner) { cut_frame(*static_cast<FrameWriter*>(owner)); }, &frames};
}

}  // namespace rlx
