#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace rlx::bench {

/// Data bytes of a frame of a framed sample job, and bytes in front of them.
inline constexpr std::size_t kFrameBytes = 4096;
inline constexpr std::size_t kFrameHeaderBytes = 16;

/// A piece of a print job for measurements, always the same: whole pages, so that it can be
/// repeated.
///
///   plain      text of about 90 columns a line, FF every 60 lines
///   mixed      the same in double-byte and single-byte text, switching every few characters
///   sequences  text with an ESC or FS sequence about every 8 bytes, of many kinds
///   framed     plain text in transfer frames of 4096 bytes, without an END frame
///   invalid    invalid bytes, lone continuation bytes, control bytes
///
/// @param kind   one of these words.
/// @param least  bytes that it has at least (a frame less when framed).
/// @return the bytes; empty for another word.
std::string sample_job(std::string_view kind, std::size_t least);

}  // namespace rlx::bench
