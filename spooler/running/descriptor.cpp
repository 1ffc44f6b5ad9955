#include "running/descriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace rlx::spooler {

namespace {

void wait_for(int descriptor, short events) {
  pollfd waiting{descriptor, events, 0};
  poll(&waiting, 1, -1);
}

bool would_block(int error) {
  return error == EAGAIN || error == EWOULDBLOCK;
}

Descriptor above_standard(Descriptor descriptor) {
  if (descriptor.number() > STDERR_FILENO) {
    return descriptor;
  }
  Descriptor moved(fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  if (!moved.is_open()) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  return moved;
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  if (this != &other) {
    reset();
    number_ = std::exchange(other.number_, -1);
  }
  return *this;
}

void Descriptor::reset() {
  if (number_ >= 0) {
    close(std::exchange(number_, -1));
  }
}

Pipe make_pipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  Descriptor read_end(ends[0]);
  Descriptor write_end(ends[1]);
  return {above_standard(std::move(read_end)), above_standard(std::move(write_end))};
}

std::size_t read_some(int descriptor, std::span<std::uint8_t> room, const std::string& name) {
  while (true) {
    const ssize_t got = read(descriptor, room.data(), room.size());
    if (got >= 0) {
      return static_cast<std::size_t>(got);
    }
    const int error = errno;
    if (would_block(error)) {
      wait_for(descriptor, POLLIN);
    } else if (error != EINTR) {
      throw std::system_error(error, std::generic_category(), name);
    }
  }
}

int write_all(int descriptor, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t put = write(descriptor, bytes.data(), bytes.size());
    if (put >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(put));
    } else if (would_block(errno)) {
      wait_for(descriptor, POLLOUT);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace rlx::spooler
