#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "input/raw_input.h"
#include "job/piece_sink.h"
#include "job/settings.h"

namespace rlx {

// The transfer protocol (option -d) cuts the job into frames, in both directions:
//
//   offset  size  content
//   0       4     count N of the data, ASCII digits, 0000 to 9999
//   4       12    "CNT_PRN_DAT" NUL (more frames follow) or "END_PRN_DAT" NUL (last frame)
//   16      N     data, any values
//
// A job is any number of CNT frames and exactly one END frame. Nothing behind it is read.

inline constexpr std::size_t kFrameCountDigits = 4;
inline constexpr std::size_t kFrameMarkerBytes = 12;
inline constexpr std::size_t kFrameHeaderBytes = kFrameCountDigits + kFrameMarkerBytes;
/// Most data that an input frame brings.
inline constexpr std::size_t kMaxInputFrame = 9999;
/// Most data that an output frame takes.
inline constexpr std::int32_t kMaxOutputFrame = 4096;

enum FrameKind : std::uint8_t { kCntFrame = 0, kEndFrame = 1 };

struct FramedTransfer {
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
  ByteWindow window;
  /// Data bytes gathered for the next output frame.
  std::int32_t out_len = 0;
  std::array<std::uint8_t, kMaxInputFrame> frame_data;
  /// The output frame that is being assembled: header, then data.
  std::array<std::uint8_t, kFrameHeaderBytes + kMaxOutputFrame> out_frame;
};

extern FramedTransfer framed_transfer;

/// Data bytes of the current input frame that have not been handed out; 0 between frames.
inline std::size_t frame_left() {
  return framed_transfer.window.size();
}

/// True when the data of the END frame is used up: a sequence or character that needs more bytes
/// is cut here. Always false without option -d.
inline bool at_end_frame_end() {
  return job_settings.framed_output != 0 && framed_transfer.frame_kind == kEndFrame &&
         framed_transfer.window.empty();
}

/// Delivers the next byte of the framed input.
/// @return ST_OK, ST_EOF, ST_FRAME_BAD, ST_FRAME_EMPTY, ST_FRAME_NOEND, ST_FRAME_SHORT or ST_IOERR.
/// A frame's data is complete in memory before its first byte is delivered.
int prtclin(std::uint8_t* byte);

/// Gathers output into frames that mirror the input frames: what is put out while the current input
/// frame has bytes left is held, and written as one frame with the same marker when that frame is
/// used up. Output that would not fit is preceded by a CNT frame with what is held.
/// @param length  bytes of one piece, at most kMaxOutputFrame (a longer piece is divided); 0 is
///                allowed and writes a frame, even an empty one, when the input frame is used up.
/// @param bytes   null does nothing.
/// @return 0. A frame that cannot be written ends the process with status 1, without a message.
int directout(std::int32_t length, const std::uint8_t* bytes);

/// Writes an empty frame with the marker of the current input frame. Ends the process as directout
/// does.
void prtclout();

/// Writes what is held at the end of the job, if anything, as the END frame; nothing when the
/// output has been closed already.
/// @return 0, or 1 when it could not be written.
int out_end_frame();

/// The output frame, for runs of pieces while the input frame has bytes left.
PieceSink frame_sink();

/// Back to the state before the first frame.
void reset_framed_transfer();

}  // namespace rlx
