#include "input/raw_input.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "job/status.h"
#include "support/descriptor_io.h"
#include "support/wide_pipe.h"

namespace rlx {

ByteWindow raw_window;

namespace {

struct RawInput {
  int final_status = ST_OK;  ///< ST_EOF or ST_IOERR once met
  int error_number = 0;
  void (*before_waiting)() = nullptr;
  bool pipes_widened = false;
  std::array<std::uint8_t, kInputBufferBytes> bytes;
};

RawInput input;

/// True when a read would return at once: with bytes, the end or an error.
bool input_is_ready() {
  pollfd descriptor{STDIN_FILENO, POLLIN, 0};
  return poll(&descriptor, 1, 0) > 0;
}

/// A job of which more stands ready than the buffer holds is a large one, and so will its output
/// be.
void widen_pipes_once() {
  if (!input.pipes_widened) {
    input.pipes_widened = true;
    widen_pipe(STDIN_FILENO);
    widen_pipe(STDOUT_FILENO);
  }
}

int finish(int status) {
  input.final_status = status;
  input.error_number = errno;
  return status;
}

}  // namespace

int raw_refill() {
  if (!raw_window.empty()) {
    return ST_OK;
  }
  if (input.final_status != ST_OK) {
    errno = input.error_number;
    return input.final_status;
  }
  if (input.before_waiting != nullptr && !input_is_ready()) {
    input.before_waiting();
  }
  const ssize_t count = read_some(STDIN_FILENO, input.bytes);
  if (count <= 0) {
    return finish(count == 0 ? ST_EOF : ST_IOERR);
  }
  raw_window.next = input.bytes.data();
  raw_window.end = raw_window.next + count;
  if (static_cast<std::size_t>(count) == kInputBufferBytes) {
    widen_pipes_once();
  }
  return ST_OK;
}

int raw_read(std::uint8_t* bytes, std::size_t& count) {
  std::size_t done = 0;
  while (done < count) {
    const int status = raw_refill();
    if (status != ST_OK) {
      count = done;
      return status;
    }
    const std::size_t portion = std::min(count - done, raw_window.size());
    std::memcpy(bytes + done, raw_window.next, portion);
    raw_window.next += portion;
    done += portion;
  }
  return ST_OK;
}

void call_before_waiting(void (*hook)()) {
  input.before_waiting = hook;
}

void reset_raw_input() {
  raw_window = {};
  input.final_status = ST_OK;
  input.error_number = 0;
  input.before_waiting = nullptr;
  input.pipes_widened = false;
}

}  // namespace rlx
