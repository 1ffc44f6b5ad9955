#pragma once

#include <array>
#include <cstdint>

#include "input/frames.h"
#include "job/bytes.h"
#include "job/piece_sink.h"
#include "job/status.h"

namespace rlx {

/// Most data that an output frame takes.
inline constexpr std::int32_t kMaxOutputFrame = 4096;

/// The writer of output frames (option -d). Their format is in input/frames.h.
struct FrameWriter {
  /// The input, whose frames the output mirrors.
  const FrameReader& input;
  /// Data bytes gathered for the next output frame.
  std::int32_t out_len = 0;
  /// The output frame that is being assembled: header, then data.
  std::array<std::uint8_t, kFrameHeaderBytes + kMaxOutputFrame> out_frame;

  explicit FrameWriter(const FrameReader& frames) : input(frames) {}
};

/// directout: writes one piece of a framed job. Gathers output into frames that mirror the input
/// frames: what is put out while the current input frame has bytes left is held, and written as one
/// frame with the same marker when that frame is used up. Output that would not fit is preceded by
/// a CNT frame with what is held.
/// @param piece  at most kMaxOutputFrame bytes (a longer piece is divided). An empty one is allowed
///               and writes a frame, even an empty one, when the input frame is used up; one whose
///               data is null does nothing.
/// A frame that cannot be written ends the process with status 1, without a message.
void directout(FrameWriter& frames, Bytes piece);

/// Writes what is held at the end of the job, if anything, as the END frame; nothing when the
/// output has been closed already.
/// @return ST_OK, or ST_FAILED when it could not be written.
Status out_end_frame(FrameWriter& frames);

/// The output frame, for runs of pieces while the input frame has bytes left.
PieceSink frame_sink(FrameWriter& frames);

}  // namespace rlx
