#pragma once

#include <array>
#include <cstdint>

namespace rlx {

/// Bytes that one page block gathers before it is written; also the room of every other
/// OutputBuffer.
inline constexpr std::int32_t kPageBufferBytes = 8192;

/// A length and the bytes it counts: the page buffer, the carried settings, the text output record
/// and the held vertical movements are all of this shape. Only the first `length` bytes mean
/// anything.
struct OutputBuffer {
  std::int32_t length = 0;
  std::array<std::uint8_t, kPageBufferBytes> bytes;
};

}  // namespace rlx
