#pragma once

#include <cstdint>

#include "input/framed_transfer.h"
#include "job/settings.h"
#include "output/page_writer.h"

namespace rlx {

/// Hands one finished piece of output on: into a frame with option -d, onto the page otherwise.
/// @param count  bytes of the piece; 0 is allowed, and matters to the frames.
/// @param bytes  not null.
/// @return the status of directout or out_page_data.
inline int out_piece(std::int32_t count, const std::uint8_t* bytes) {
  return job_settings.framed_output != 0 ? directout(count, bytes) : out_page_data(count, bytes);
}

/// Where pieces are gathered now.
inline PieceSink piece_sink() {
  return job_settings.framed_output != 0 ? frame_sink() : page_sink();
}

}  // namespace rlx
