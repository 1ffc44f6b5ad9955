#pragma once

#include <cstdio>

#include "job/bytes.h"

namespace rlx {

/// Prints bytes for a person who is looking for a fault: nothing in the program calls it, it is
/// kept for a debugger's command line. Rows of 16 bytes, each headed by its offset; a blank after
/// every fourth byte, a newline instead after the 16th; a newline at the end:
///
///     00000000  41424344 45464748 494a4b4c 4d4e4f50
///     00000010  5152
///
/// So a length that is a multiple of 16 ends with an empty line. No bytes print just the newline.
/// @param stream  null is standard output.
void hex_dump(std::FILE* stream, Bytes bytes);

}  // namespace rlx
