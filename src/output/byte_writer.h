#pragma once

#include <cstddef>
#include <cstdint>

namespace rlx {

/// Bytes that are gathered before they leave in one write.
inline constexpr std::size_t kOutputBufferBytes = 131072;

/// Writes bytes to standard output, through one buffer. Only the frames of the transfer protocol
/// (input/framed_transfer.h) and the rest of a job that is passed through leave another way.
/// @param count  bytes to write; below 1 nothing is written.
/// @param bytes  may be null, then nothing is written.
/// @return 0. Standard output that cannot be written ends the process: "write error" (without a
/// newline) on standard error, exit status 1.
int out_bytes(std::int32_t count, const std::uint8_t* bytes);

/// Writes all that is gathered. Ends the process like out_bytes when that fails.
/// @return 0.
int flush_output();

/// Notes that the gathered bytes hold the end of a page, which a waiting printer should get.
void note_page_end();

/// Flushes if a page has ended since the last write. Called before the filter waits for input, so
/// that a finished page never waits for the next one.
void flush_finished_pages();

/// Forgets what is gathered.
void reset_byte_writer();

}  // namespace rlx
