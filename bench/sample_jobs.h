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
///   plain           text of about 90 columns a line, FF every 60 lines
///   mixed           the same in double-byte and single-byte text, switching every few characters
///   sequences       text with an ESC or FS sequence about every 8 bytes, of many kinds
///   framed          plain text in transfer frames of 4096 bytes, without an END frame
///   framed_mixed    the same with mixed text
///   invalid         invalid bytes, lone continuation bytes, control bytes
///   double          double-byte text alone
///   accents         Latin text, an accented letter in twelve
///   cyrillic, kana  words of two-byte and of three-byte characters
///   cut             characters of two to four bytes, every second one cut short
///   shifted         0x8e in front of every character
///   bare_sequences  sequences, no text
///   tabs            tabs and backspaces
///   short_lines     lines of 7 bytes
///   endless_lines   the same without a FF
///   one_line_pages  a line and a FF
///   positions       a positioning sequence, again and again
///   states          a sequence that begins a new state of the page, again and again
///   one_line        plain text without a line end
///   form_feeds, line_feeds, escapes, digits  nothing but FF, LF, ESC, the digit 1
///   counted_data    sequences with data of 9,999,999 bytes
///
/// @param kind   one of these words.
/// @param least  bytes that it has at least (a frame less when framed).
/// @return the bytes; empty for another word.
std::string sample_job(std::string_view kind, std::size_t least);

}  // namespace rlx::bench
