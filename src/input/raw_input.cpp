#include "input/raw_input.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "support/descriptor_io.h"
#include "support/wide_pipe.h"

namespace rlx {

namespace {

/// True when a read would return at once: with bytes, the end or an error.
bool input_is_ready() {
  pollfd descriptor{STDIN_FILENO, POLLIN, 0};
  return poll(&descriptor, 1, 0) > 0;
}

/// Called when one read has filled the buffer: the job is a large one then, and so will its output
/// be.
void widen_pipes_once(RawInput& input) {
  if (!input.pipes_widened) {
    input.pipes_widened = true;
    widen_pipe(STDIN_FILENO);
    widen_pipe(STDOUT_FILENO);
  }
}

Status finish(RawInput& input, Status status) {
  input.final_status = status;
  input.error_number = errno;
  return status;
}

}  // namespace

Status raw_refill(RawInput& input) {
  if (!input.window.empty()) {
    return ST_OK;
  }
  if (input.final_status != ST_OK) {
    errno = input.error_number;
    return input.final_status;
  }
  if (input.before_waiting != nullptr && !input_is_ready()) {
    input.before_waiting(input.waiting_context);
  }
  const ssize_t count = read_some(STDIN_FILENO, input.bytes);
  if (count <= 0) {
    return finish(input, count == 0 ? ST_EOF : ST_IOERR);
  }
  input.window.next = input.bytes.data();
  input.window.end = input.window.next + count;
  if (static_cast<std::size_t>(count) == kInputBufferBytes) {
    widen_pipes_once(input);
  }
  return ST_OK;
}

Status raw_read(RawInput& input, std::span<std::uint8_t> bytes, std::size_t& done) {
  done = 0;
  while (done < bytes.size()) {
    const Status status = raw_refill(input);
    if (status != ST_OK) {
      return status;
    }
    const std::size_t portion = std::min(bytes.size() - done, input.window.size());
    std::memcpy(bytes.data() + done, input.window.next, portion);
    input.window.next += portion;
    done += portion;
  }
  return ST_OK;
}

}  // namespace rlx
