#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "input/raw_input.h"
#include "job/status.h"

namespace rlx {

// The transfer protocol (option -d) cuts the job into frames, in both directions:
//
//   offset  size  content
//   0       4     count N of the data, ASCII digits, 0000 to 9999
//   4       12    "CNT_PRN_DAT" NUL (more frames follow) or "END_PRN_DAT" NUL (last frame)
//   16      N     data, any values
//
// A job is any number of CNT frames and exactly one END frame. Nothing behind it is read. Here are
// the format, the reader, and the write of one frame; output/frame_writer.h gathers what goes into
// one.

inline constexpr std::size_t kFrameCountDigits = 4;
inline constexpr std::size_t kFrameMarkerBytes = 12;
inline constexpr std::size_t kFrameHeaderBytes = kFrameCountDigits + kFrameMarkerBytes;
/// Most data that an input frame brings.
inline constexpr std::size_t kMaxInputFrame = 9999;

enum FrameKind : std::uint8_t { kCntFrame = 0, kEndFrame = 1 };

/// The reader of input frames.
struct FrameReader {
  RawInput& raw;
  /// Marker of the input frame that is being consumed. Starts as END, deliberately: an input that
  /// is completely empty is a clean end, and no closing frame is written for it.
  FrameKind frame_kind = kEndFrame;
  /// `frame_kind` of the last input frame that carried data.
  FrameKind last_data_kind = kEndFrame;
  /// An END frame has been read; nothing is read behind its data.
  bool end_frame_read = false;
  /// The output has been closed with an empty END frame, because the input failed. Nothing may
  /// follow it: what is still held for a frame is dropped.
  bool output_closed = false;
  /// Data of the current input frame that has not been handed out.
  ByteWindow window{};
  std::array<std::uint8_t, kMaxInputFrame> frame_data;

  explicit FrameReader(RawInput& raw_input) : raw(raw_input) {}
};

/// Data bytes of the current input frame that have not been handed out; 0 between frames.
inline std::size_t frame_left(const FrameReader& frames) {
  return frames.window.size();
}

/// prtclin: delivers the next byte of the framed input (the name stands for "protocol in").
/// @return ST_OK, ST_EOF, ST_FRAME_BAD, ST_FRAME_EMPTY, ST_FRAME_NOEND, ST_FRAME_SHORT or ST_IOERR.
/// A frame's data is complete in memory before its first byte is delivered.
Status prtclin(FrameReader& frames, std::uint8_t* byte);

/// prtclout: writes an empty frame with the marker of the current input frame ("protocol out"). One
/// that cannot be written ends the process with status 1, without a message.
void prtclout(const FrameReader& frames);

/// Writes a whole frame: in one write, unless a signal or a printer that is slow to take it cuts
/// that short.
/// @param frame     room for the header, which is filled here, and the data behind it.
/// @param module    with `function`: what a guard logs (support/narrowing.h).
/// @return ST_OK, or ST_FAILED when it cannot be written.
Status write_frame(std::span<std::uint8_t> frame, FrameKind kind, const char* module,
                   const char* function);

}  // namespace rlx
