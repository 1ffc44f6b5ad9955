#pragma once

#include <cstddef>
#include <cstdint>

namespace rlx {

/// A whole sequence that stands ready in memory.
struct ReadySequence {
  std::uint32_t code = 0;
  std::int32_t length = 0;  ///< 0 when there is none
};

/// Bytes that must stand ready for ready_sequence to look at.
inline constexpr std::size_t kReadyBytes = 66;
/// Longest sequence that ready_sequence finds.
inline constexpr std::uint8_t kMaxReadySequence = 64;

/// Recognises, in place, a sequence after ESC or FS that zqtoken would read with the same code: a
/// known one of the common kinds, short, complete in memory and without data behind it. For
/// anything else - unknown, malformed, cut, with data - there is none, and zqtoken has to say.
/// @param bytes  begins with ESC or FS; kReadyBytes are readable.
ReadySequence ready_sequence(const std::uint8_t* bytes);

}  // namespace rlx
