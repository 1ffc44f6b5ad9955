#include "support/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

namespace rlx {

namespace {

int open_file(const char* path, int flags) {
  int descriptor = -1;
  do {
    descriptor = open(path, flags | O_RDONLY | O_NOCTTY | O_CLOEXEC);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

/// Looks at what was opened: another file may have taken the path's place meanwhile.
bool is_regular(int descriptor) {
  struct stat attributes {};
  return fstat(descriptor, &attributes) == 0 && S_ISREG(attributes.st_mode);
}

/// A file server holds a lease on the file and gives it back in a moment. The file is held first,
/// without opening it, so that what is waited for is a regular file for certain.
int open_leased_file(const char* path) {
  const int held = open_file(path, O_PATH);
  if (held < 0) {
    return -1;
  }
  int descriptor = -1;
  if (is_regular(held)) {
    std::array<char, 32> link{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", held);
    descriptor = open_file(link.data(), 0);
  }
  close(held);
  return descriptor;
}

int open_for_reading(const char* path) {
  const int descriptor = open_file(path, O_NONBLOCK);
  return descriptor < 0 && errno == EWOULDBLOCK ? open_leased_file(path) : descriptor;
}

}  // namespace

bool is_regular_file(const char* path) {
  struct stat attributes {};
  errno = 0;
  return stat(path, &attributes) == 0 && S_ISREG(attributes.st_mode);
}

// The buffer is left as it is: what stands in it is told by unread_.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
TextFile::TextFile(const char* path) {
  // A device is not even opened; some act on it.
  if (!is_regular_file(path)) {
    missing_ = errno == ENOENT;
    error_number_ = errno;
    return;
  }
  descriptor_ = open_for_reading(path);
  error_number_ = descriptor_ < 0 ? errno : 0;
  if (descriptor_ >= 0 && !is_regular(descriptor_)) {
    close();
  }
}

TextFile::~TextFile() {
  close();
}

void TextFile::close() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
    descriptor_ = -1;
  }
}

bool TextFile::refill() {
  // No regular file makes a read wait; what does, and calls itself one, cannot be read.
  ssize_t count = 0;
  do {
    count = read(descriptor_, buffer_.data(), buffer_.size());
  } while (count < 0 && errno == EINTR);
  failed_ = count < 0;
  if (failed_) {
    error_number_ = errno;
  }
  if (count <= 0) {
    return false;
  }
  unread_ = std::span(buffer_).first(static_cast<std::size_t>(count));
  return true;
}

bool TextFile::read_line(std::span<char> line) {
  std::size_t length = 0;
  while (length < line.size() - 1 && (!unread_.empty() || refill())) {
    const auto byte = static_cast<char>(unread_.front());
    unread_ = unread_.subspan(1);
    line[length++] = byte;
    if (byte == '\n') {
      break;
    }
  }
  if (length == 0 || failed_) {
    return false;
  }
  line[length] = '\0';
  line_number_ += line_ended_ ? 1 : 0;
  line_ended_ = line[length - 1] == '\n';
  return true;
}

}  // namespace rlx
