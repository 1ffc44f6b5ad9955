#include "support/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "support/descriptor_io.h"

namespace rlx {

namespace {

int open_for_reading(const char* path) {
  int descriptor = -1;
  do {
    descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

/// Looks at what was opened: another file may have taken the path's place meanwhile.
bool is_regular(int descriptor) {
  struct stat attributes {};
  return fstat(descriptor, &attributes) == 0 && S_ISREG(attributes.st_mode);
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
    return;
  }
  descriptor_ = open_for_reading(path);
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
  const ssize_t count = read_some(descriptor_, buffer_);
  failed_ = count < 0;
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
  return true;
}

}  // namespace rlx
