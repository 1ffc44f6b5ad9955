#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "job/bytes.h"

namespace rlx {

/// Bytes that one page block gathers before it is written; also the room of every other
/// OutputBuffer.
inline constexpr std::int32_t kPageBufferBytes = 8192;

/// A length and the bytes it counts: the page buffer, the carried settings, the text output
/// and the held vertical movements are all of this shape. Only the first `length` bytes mean
/// anything.
struct OutputBuffer {
  std::int32_t length = 0;
  std::array<std::uint8_t, kPageBufferBytes> bytes;

  std::int32_t room() const { return kPageBufferBytes - length; }

  /// Appends bytes, all or, when they do not fit, none. @return whether they fitted.
  bool append(Bytes more) {
    if (more.size() > static_cast<std::size_t>(room())) {
      return false;
    }
    std::memcpy(bytes.data() + length, more.data(), more.size());
    length += static_cast<std::int32_t>(more.size());
    return true;
  }

  /// Appends bytes if they fit and leaves them out, whole, if they do not. For what always fits,
  /// and for what may be left out; whoever calls it says which.
  void append_fitting(Bytes more) { static_cast<void>(append(more)); }

  Bytes gathered() const { return Bytes(bytes).first(static_cast<std::size_t>(length)); }
};

/// Allocates an empty buffer, for the whole job. From the C library, deliberately: the language's
/// own allocation would bring its error handling into a program that must start quickly.
/// @return null when there is no memory. The caller frees it with free_output_buffer.
inline OutputBuffer* allocate_output_buffer() {
  auto* const buffer = static_cast<OutputBuffer*>(std::malloc(sizeof(OutputBuffer)));
  if (buffer != nullptr) {
    buffer->length = 0;
  }
  return buffer;
}

/// Frees a buffer; null does nothing.
inline void free_output_buffer(OutputBuffer* buffer) {
  std::free(buffer);
}

}  // namespace rlx
