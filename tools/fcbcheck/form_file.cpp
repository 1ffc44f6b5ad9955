#include "fcbcheck/form_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "job/fixed_paths.h"
#include "support/descriptor_io.h"
#include "support/messages.h"
#include "support/text_file.h"

namespace rlx::fcbcheck {

namespace {

constexpr std::size_t kMaxStandardInput = std::size_t{64} << 20U;

/// What stands in a regular file's place has no errno of its own.
std::string text_of_odd_file(const char* path) {
  struct stat attributes {};
  if (stat(path, &attributes) != 0) {
    return std::strerror(errno);
  }
  switch (attributes.st_mode & S_IFMT) {
    case S_IFDIR:
      return std::strerror(EISDIR);
    case S_IFIFO:
      return "Not a regular file (FIFO)";
    case S_IFSOCK:
      return "Not a regular file (socket)";
    default:
      return "Not a regular file (device)";
  }
}

std::string system_text(const char* path, int error_number) {
  return error_number == 0 ? text_of_odd_file(path) : std::strerror(error_number);
}

/// Why a file cannot be read to its end; empty when it can.
std::string unreadable_text(const char* path) {
  TextFile file(path);
  std::array<char, kFcbLineBytes> line{};
  while (file.is_open() && file.read_line(line)) {
  }
  return file.is_open() && !file.failed() ? "" : system_text(path, file.error_number());
}

/// A copy of standard input that the form reader takes for a regular file.
class StandardInputCopy {
 public:
  StandardInputCopy() {
    // A standard input that is closed must not become the copy of itself.
    if (fcntl(STDIN_FILENO, F_GETFD) >= 0) {
      descriptor_ = memfd_create("form", MFD_CLOEXEC);
    }
    error_number_ = descriptor_ >= 0 && copy() ? 0 : errno;
  }
  ~StandardInputCopy() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }
  StandardInputCopy(const StandardInputCopy&) = delete;
  StandardInputCopy& operator=(const StandardInputCopy&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  /// Why there is no copy; 0 when there is one.
  int error_number() const { return error_number_; }

 private:
  /// @return false on a failure, with errno set.
  bool copy() const {
    std::array<std::uint8_t, 4096> buffer{};
    std::size_t room = kMaxStandardInput;
    for (ssize_t count = 0; (count = read_some(STDIN_FILENO, buffer)) != 0;) {
      const auto size = static_cast<std::size_t>(count);
      if (count < 0 || write_whole(descriptor_, std::span(buffer).first(size)) != ST_OK) {
        return false;
      }
      if (size > room) {
        errno = EFBIG;
        return false;
      }
      room -= size;
    }
    return true;
  }

  int descriptor_ = -1;
  int error_number_ = 0;
};

void read_path(const char* path, const Reading& reading, FormFile& form) {
  CommandLine command_line;
  command_line.stream_variant = reading.stream_variant;
  EnvironmentFile environment = reading.environment;
  const Messages messages;
  const FormReading with{command_line, environment, messages};
  if (fcb_read(with, path, form.table, form.report) != ST_OK &&
      form.report.fault.wrong == FcbWrong::file) {
    form.system_text = system_text(path, form.report.fault.error_number);
  }
}

void read_standard_input(const Reading& reading, FormFile& form) {
  const StandardInputCopy copy;
  if (copy.error_number() == 0) {
    read_path(copy.path().c_str(), reading, form);
    return;
  }
  form.report.fault.wrong = FcbWrong::file;
  form.system_text = std::strerror(copy.error_number());
}

}  // namespace

std::string read_environment(const char* path, Reading& reading) {
  if (path != nullptr) {
    std::string text = unreadable_text(path);
    if (!text.empty()) {
      return text;
    }
  }
  const char* const file = path != nullptr ? path : fixed_paths::kEnvironmentFile;
  reading.environment_found =
      read_environment_file(file, reading.environment) != kNoEnvironmentFile;
  return "";
}

FormFile read_form_file(const std::string& path, const Reading& reading) {
  FormFile form;
  if (path == kStandardInput) {
    form.label = form.name = "(standard input)";
    read_standard_input(reading, form);
  } else {
    form.label = path;
    form.name = path.substr(path.rfind('/') + 1);
    read_path(path.c_str(), reading, form);
  }
  return form;
}

}  // namespace rlx::fcbcheck
