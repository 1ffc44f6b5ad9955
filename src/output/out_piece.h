#pragma once

#include <cstdint>

#include "job/settings.h"
#include "output/frame_writer.h"
#include "output/page_writer.h"

namespace rlx {

/// Where finished pieces of output go: into frames with option -d, onto the page otherwise.
struct PieceOutput {
  const CommandLine& command_line;
  PageWriter& page;
  FrameWriter& frames;

  bool framed() const { return command_line.framed_output != 0; }
};

/// Hands one finished piece of output on.
/// @param count  bytes of the piece; 0 is allowed, and matters to the frames.
/// @param bytes  not null.
inline void out_piece(PieceOutput& output, std::int32_t count, const std::uint8_t* bytes) {
  if (output.framed()) {
    directout(output.frames, count, bytes);
  } else {
    out_page_data(output.page, count, bytes);
  }
}

/// Where pieces are gathered now.
inline PieceSink piece_sink(PieceOutput& output) {
  return output.framed() ? frame_sink(output.frames) : page_sink(output.page);
}

}  // namespace rlx
