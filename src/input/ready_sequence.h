#pragma once

#include <cstdint>

namespace rlx {

/// A whole sequence that stands ready in memory.
struct ReadySequence {
  std::uint32_t code = 0;
  std::int32_t length = 0;  ///< 0 when there is none
};

/// Longest sequence that ready_sequence finds.
inline constexpr std::int32_t kMaxReadySequence = 64;

/// Recognises, in place, a sequence after ESC or FS that zqtoken would read with the same code: a
/// known one of the common kinds, short, complete in memory and without data behind it. For
/// anything else - unknown, malformed, cut, with data - there is none, and zqtoken has to say.
/// @param bytes  begins with ESC or FS.
/// @param end    end of what stands ready.
ReadySequence ready_sequence(const std::uint8_t* bytes, const std::uint8_t* end);

}  // namespace rlx
