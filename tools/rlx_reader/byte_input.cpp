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

FileInput::FileInput(const std::string& path)
    : name_(path == "-" ? "(standard input)" : path),
      descriptor_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)),
      buffer_(kBufferBytes + kMostLookAhead) {
  if (descriptor_ < 0) {
    fail(errno, name_);
  }
}

FileInput::~FileInput() {
  if (descriptor_ != STDIN_FILENO) {
    close(descriptor_);
  }
}

/// Reads more behind what is left, which moves to the front.
void FileInput::read_on() {
  std::memmove(buffer_.data(), buffer_.data() + next_, end_ - next_);
  end_ -= next_;
  next_ = 0;
  ssize_t got = -1;
  do {
    got = read(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
  } while (got < 0 && errno == EINTR);
  if (got < 0) {
    const int error = errno;
    fail(error, name_ + ": byte " + std::to_string(offset_ + end_));
  }
  ended_ = got == 0;
  end_ += static_cast<std::size_t>(got);
}

Bytes FileInput::look(std::size_t count) {
  while (end_ - next_ < count && !ended_) {
    read_on();
  }
  return Bytes(buffer_).subspan(next_, std::min(count, end_ - next_));
}

void FileInput::take(std::size_t count) {
  next_ += count;
  offset_ += count;
}

Bytes MemoryInput::look(std::size_t count) {
  return all_.subspan(next_, std::min(count, all_.size() - next_));
}

}  // namespace rlx::reader
