#include "output/frame_writer.h"

#include <cstring>
#include <span>

#include "support/process_end.h"

namespace rlx {

namespace {

/// Writes what is gathered, even if it is nothing.
bool write_out_frame(FrameWriter& frames, FrameKind kind, const char* module,
                     const char* function) {
  const std::span frame(frames.out_frame.data(),
                        kFrameHeaderBytes + static_cast<std::size_t>(frames.out_len));
  frames.out_len = 0;
  return write_frame(frame, kind, module, function);
}

void write_gathered(FrameWriter& frames, FrameKind kind) {
  if (!write_out_frame(frames, kind, "rlxinout_ctl", "directout")) {
    end_process(ST_FAILED);
  }
}

/// What is held would overflow: it leaves as a CNT frame, whatever the input frame's marker is.
void cut_frame(FrameWriter& frames) {
  write_gathered(frames, kCntFrame);
}

void gather(FrameWriter& frames, std::int32_t length, const std::uint8_t* bytes) {
  std::uint8_t* data = frames.out_frame.data() + kFrameHeaderBytes;
  std::memcpy(data + frames.out_len, bytes, static_cast<std::size_t>(length));
  frames.out_len += length;
}

}  // namespace

void directout(FrameWriter& frames, std::int32_t length, const std::uint8_t* bytes) {
  if (bytes == nullptr) {
    return;
  }
  while (frames.out_len + length > kMaxOutputFrame) {
    const std::int32_t room = frames.out_len == 0 ? kMaxOutputFrame : 0;
    gather(frames, room, bytes);  // nothing, but for a piece that no frame holds
    bytes += room;
    length -= room;
    cut_frame(frames);
  }
  gather(frames, length, bytes);
  if (frame_left(frames.input) == 0) {
    write_gathered(frames, frames.input.frame_kind);
  }
}

Status out_end_frame(FrameWriter& frames) {
  if (frames.out_len == 0 || frames.input.output_closed) {
    return ST_OK;
  }
  return write_out_frame(frames, kEndFrame, "zqeuctorlx", "main") ? ST_OK : ST_FAILED;
}

PieceSink frame_sink(FrameWriter& frames) {
  return {frames.out_frame.data() + kFrameHeaderBytes, &frames.out_len, kMaxOutputFrame,
          [](void* owner) { cut_frame(*static_cast<FrameWriter*>(owner)); }, &frames};
}

}  // namespace rlx
