#pragma once

#include <cstddef>

#include "rlx_reader/byte_input.h"

namespace rlx::reader {

/// Most bytes of a sequence, counted data not included. What goes on longer is none.
inline constexpr std::size_t kMostSequence = 4096;

/// The length of the sequence that some bytes begin with, from ESC or FS to its final byte. Data
/// behind the final byte and downloads of glyphs are not looked at.
/// @param bytes  the first one is ESC or FS.
/// @return 0 when its final byte is not among them, or not among the first kMostSequence.
std::size_t sequence_length(Bytes bytes);

/// The length of the sequence that passes a job through, ESC "Q" ... "/" and a grave accent; 0 when
/// the bytes do not begin with a whole one.
std::size_t pass_through_length(Bytes bytes);

}  // namespace rlx::reader
