#include "support/descriptor_io.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace rlx {

namespace {

constexpr int kForEver = -1;

/// After a transfer has failed: waits where the descriptor was only not ready.
/// @return true when the transfer is to be tried again.
bool may_try_again(int descriptor, short events) {
  if (errno == EINTR) {
    return true;
  }
  if (errno != EAGAIN && errno != EWOULDBLOCK) {
    return false;
  }
  pollfd waiting{descriptor, events, 0};
  return poll(&waiting, 1, kForEver) >= 0 || errno == EINTR;
}

}  // namespace

ssize_t read_some(int descriptor, std::span<std::uint8_t> bytes) {
  ssize_t count = 0;
  do {
    count = read(descriptor, bytes.data(), bytes.size());
  } while (count < 0 && may_try_again(descriptor, POLLIN));
  return count;
}

ssize_t write_some(int descriptor, Bytes bytes) {
  ssize_t count = 0;
  do {
    count = write(descriptor, bytes.data(), bytes.size());
  } while (count < 0 && may_try_again(descriptor, POLLOUT));
  if (count == 0) {
    errno = EIO;
    return -1;
  }
  return count;
}

Status write_whole(int descriptor, Bytes bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write_some(descriptor, bytes);
    if (count < 0) {
      return ST_IOERR;
    }
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return ST_OK;
}

}  // namespace rlx
