#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "job/bytes.h"

namespace rlx {

/// Bytes that are gathered before they leave in one write.
inline constexpr std::size_t kOutputBufferBytes = 131072;

/// Standard output, and what is gathered for it.
struct ByteWriter {
  std::size_t length = 0;
  /// The gathered bytes hold the end of a page.
  bool page_ended = false;
  std::array<std::uint8_t, kOutputBufferBytes> bytes;
};

/// Writes bytes to standard output, through one buffer. Only the frames of the transfer protocol
/// (output/frame_writer.h) and the rest of a job that is passed through leave another way.
/// Standard output that cannot be written ends the process: "write error" (without a newline) on
/// standard error, exit status 1.
void out_bytes(ByteWriter& writer, Bytes bytes);

/// Writes all that is gathered. Ends the process like out_bytes when that fails.
void flush_output(ByteWriter& writer);

/// Notes that the gathered bytes hold the end of a page, which a waiting printer should get.
void note_page_end(ByteWriter& writer);

/// Flushes if a page has ended since the last write. Called before the filter waits for input, so
/// that a finished page never waits for the next one.
void flush_finished_pages(ByteWriter& writer);

}  // namespace rlx
