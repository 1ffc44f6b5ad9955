#pragma once

#include <cstddef>
#include <cstdint>

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

/// What stands buffered of standard input.
extern ByteWindow raw_window;

/// Reads on when the window is empty.
/// @return ST_OK with a window that is not empty; ST_EOF at the end of the input; ST_IOERR on a
/// read error, with errno set. End and error stay: they are reported again by every later call.
int raw_refill();

/// Reads up to `count` bytes. @param count  on return the bytes read, fewer only if the status is
/// not ST_OK. @return as raw_refill.
int raw_read(std::uint8_t* bytes, std::size_t& count);

/// Sets what is called before the filter has to wait for input (null: nothing), so that finished
/// output can leave meanwhile. It is not called while more input stands ready.
void call_before_waiting(void (*hook)());

/// Forgets what is buffered, the end, the error and the hook.
void reset_raw_input();

}  // namespace rlx
