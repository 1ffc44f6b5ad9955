#include "fcbcheck/output_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>

namespace rlx::fcbcheck {

namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// True for what --svg must not write over: a regular file that holds something else, most likely a
/// form that was given in the picture's place.
bool holds_something_else(const std::string& path) {
  struct stat attributes {};
  if (stat(path.c_str(), &attributes) != 0 || !S_ISREG(attributes.st_mode) ||
      attributes.st_size == 0) {
    return false;
  }
  std::ifstream file(path, std::ios::binary);
  std::string beginning(5, '\0');
  file.read(beginning.data(), static_cast<std::streamsize>(beginning.size()));
  return !beginning.starts_with("<svg") && !beginning.starts_with("<?xml");
}

std::string write_file(const std::string& path, const std::string& text) {
  File file(std::fopen(path.c_str(), "we"));
  if (!file) {
    return std::strerror(errno);
  }
  const bool written = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
  const int write_error = errno;
  if (std::fclose(file.release()) != 0) {
    return std::strerror(written ? errno : write_error);
  }
  return written ? "" : std::strerror(write_error);
}

}  // namespace

std::string write_picture(const std::string& path, const std::string& picture) {
  if (path == "-") {
    write_standard_output(picture);
    return "";
  }
  if (holds_something_else(path)) {
    return "exists and is no picture; not written over";
  }
  return write_file(path, picture);
}

void write_standard_output(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
}

std::string finish_standard_output() {
  errno = 0;
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
    return "";
  }
  return errno == 0 ? "write error" : std::strerror(errno);
}

}  // namespace rlx::fcbcheck
