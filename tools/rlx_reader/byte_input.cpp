#include "rlx_reader/byte_input.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace rlx::reader {

namespace {

constexpr std::size_t kBufferBytes = std::size_t{1} << 20;

[[noreturn]] void fail(int error, const std::string& name) {
  throw std::system_error(error, std::generic_category(), name);
}

}  // namespace

BufferedInput::BufferedInput() : buffer_(kBufferBytes + kMostLookAhead) {}

/// Reads more behind what is left, which moves to the front.
void BufferedInput::read_on() {
  std::memmove(buffer_.data(), buffer_.data() + next_, end_ - next_);
  end_ -= next_;
  next_ = 0;
  const std::size_t got = read_some(std::span(buffer_).subspan(end_));
  ended_ = got == 0;
  end_ += got;
}

Bytes BufferedInput::look(std::size_t count) {
  while (end_ - next_ < count && !ended_) {
    read_on();
  }
  return Bytes(buffer_).subspan(next_, std::min(count, end_ - next_));
}

void BufferedInput::take(std::size_t count) {
  next_ += count;
  offset_ += count;
}

FileInput::FileInput(const std::string& path)
    : name_(path == "-" ? "(standard input)" : path),
      descriptor_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (descriptor_ < 0) {
    fail(errno, name_);
  }
}

FileInput::~FileInput() {
  if (descriptor_ != STDIN_FILENO) {
    close(descriptor_);
  }
}

std::size_t FileInput::read_some(std::span<std::uint8_t> room) {
  ssize_t got = -1;
  do {
    got = read(descriptor_, room.data(), room.size());
  } while (got < 0 && errno == EINTR);
  if (got < 0) {
    const int error = errno;
    fail(error, name_ + ": byte " + std::to_string(read_offset()));
  }
  return static_cast<std::size_t>(got);
}

Bytes MemoryInput::look(std::size_t count) {
  return all_.subspan(next_, std::min(count, all_.size() - next_));
}

}  // namespace rlx::reader
