#pragma once

#include <string>

namespace rlx::fcbcheck {

/// Writes a picture to a file, or to standard output ("-"). A file that is there and is no picture
/// (it does not begin with "<?xml" or "<svg", and is not empty) is left alone.
/// @return why it could not be written; empty when all is well.
std::string write_picture(const std::string& path, const std::string& picture);

/// Writes to standard output. What fails is told by finish_standard_output.
void write_standard_output(const std::string& text);

/// Hands on all that was written to standard output.
/// @return why not all of it could be written; empty when all is well.
std::string finish_standard_output();

}  // namespace rlx::fcbcheck
