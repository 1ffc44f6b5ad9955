#pragma once

#include "job/bytes.h"
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

/// Hands one finished piece of output on. An empty one is allowed, and matters to the frames.
inline void out_piece(PieceOutput& output, Bytes piece) {
  if (output.framed()) {
    directout(output.frames, piece);
  } else {
    out_page_data(output.page, piece);
  }
}

/// Where pieces are gathered now.
inline PieceSink piece_sink(PieceOutput& output) {
  return output.framed() ? frame_sink(output.frames) : page_sink(output.page);
}

}  // namespace rlx
