#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace rlx::testing {

// The reviewable form of a job's bytes, as the golden jobs keep them.
//
//   0x20-0x7e   itself, but \\ is the backslash
//   \n          LF     \r  CR     \f  FF     \e  ESC     \s  FS (0x1c)
//   \xHH        any byte, two hexadecimal digits
//
// A real line break is layout and means nothing.

/// The escaped form of the bytes. It breaks the line after each LF and FF and before each block
/// header (ESC Q digit ; ten digits /a or /`), and ends with a line break unless it is empty. A
/// blank that would end a line is written as \x20, so that no editor strips it.
std::string encode_escaped(std::string_view bytes);

/// The same without line breaks, for messages.
std::string encode_escaped_line(std::string_view bytes);

/// The bytes of an escaped form; nothing when it is malformed: an unknown escape, an escape that is
/// cut off, or a byte outside 0x20-0x7e other than a line break.
std::optional<std::string> decode_escaped(std::string_view text);

/// True when a block header begins at the start of the bytes.
bool starts_with_block_header(std::string_view bytes);

/// True when the bytes begin with the job parameter block: a printer-language job.
bool starts_with_job_parameter_block(std::string_view bytes);

/// What tells two byte strings apart, for a person: the offset of the first difference and both
/// sides around it, escaped. Empty when they are equal.
std::string describe_difference(std::string_view expected, std::string_view actual);

}  // namespace rlx::testing
