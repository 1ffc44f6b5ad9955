#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "job/status.h"

namespace rlx {

/// Bytes that are read from standard input at once.
inline constexpr std::size_t kInputBufferBytes = 65536;

/// Bytes that have been read and not yet handed out.
struct ByteWindow {
  const std::uint8_t* next = nullptr;
  const std::uint8_t* end = nullptr;

  bool empty() const { return next == end; }
  std::size_t size() const { return static_cast<std::size_t>(end - next); }
};

/// Standard input.
struct RawInput {
  /// What stands buffered. Taking bytes means advancing `window.next`.
  ByteWindow window;
  /// ST_EOF or ST_IOERR once met.
  Status final_status = ST_OK;
  int error_number = 0;
  bool pipes_widened = false;
  /// Called before the filter has to wait for input (null: nothing), so that finished output can
  /// leave meanwhile. It is not called while more input stands ready.
  void (*before_waiting)(void* context) = nullptr;
  void* waiting_context = nullptr;
  std::array<std::uint8_t, kInputBufferBytes> bytes;
};

/// Reads on when the window is empty.
/// @return ST_OK with a window that is not empty; ST_EOF at the end of the input; ST_IOERR on a
/// read error, with errno set. End and error stay: they are reported again by every later call.
Status raw_refill(RawInput& input);

/// Reads as many bytes as `bytes` has. @param done  on return how many were read, fewer only if the
/// status is not ST_OK. @return as raw_refill.
Status raw_read(RawInput& input, std::span<std::uint8_t> bytes, std::size_t& done);

}  // namespace rlx
