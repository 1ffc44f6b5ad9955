#pragma once

#include <cstdint>
#include <cstdio>

namespace rlx {

/// Prints bytes for a person who is looking for a fault. Rows of 16 bytes, each headed by its
/// offset; a blank after every fourth byte, a newline instead after the 16th; a newline at the end:
///
///     00000000  41424344 45464748 494a4b4c 4d4e4f50
///     00000010  5152
///
/// So a length that is a multiple of 16 ends with an empty line. A length below 1 prints just the
/// newline, and `bytes` is not looked at.
/// @param stream  null is standard output.
void hex_dump(std::FILE* stream, std::int32_t length, const std::uint8_t* bytes);

}  // namespace rlx
