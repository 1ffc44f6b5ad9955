#include "support/error_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <string_view>

#include "job/fixed_paths.h"
#include "support/descriptor_io.h"

namespace rlx {

namespace {

constexpr mode_t kLogMode = 0666;
constexpr std::size_t kLogLineBytes = 256;
constexpr std::size_t kTimeBytes = 32;

constexpr char kLineEnd = '\n';

int write_all(int file, std::string_view bytes) {
  return write_whole(file, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}) == 0
             ? 0
             : kLogWriteFailed;
}

/// True when the last line of a file of this size has its newline. One that a full disk or the end
/// of a process cut short has none.
bool ends_with_newline(int file, off_t size) {
  if (size == 0) {
    return true;
  }
  char last = kLineEnd;
  ssize_t count = 0;
  do {
    count = pread(file, &last, 1, size - 1);
  } while (count < 0 && errno == EINTR);
  return last == kLineEnd;
}

/// Leaves the file's offset where the next line of `line_bytes` bytes goes: behind the last line,
/// or at the start of the file, emptied, when the line has no room. A last line that was cut short
/// gets its newline first.
int make_room(int file, std::size_t line_bytes) {
  struct stat status {};
  if (fstat(file, &status) != 0) {
    return kLogStatFailed;
  }
  const bool needs_newline = !ends_with_newline(file, status.st_size);
  const off_t size = status.st_size + (needs_newline ? 1 : 0);
  if (size + static_cast<off_t>(line_bytes) > kLogCapBytes) {
    return ftruncate(file, 0) == 0 ? 0 : kLogTruncateFailed;
  }
  if (lseek(file, status.st_size, SEEK_SET) < 0) {
    return kLogSeekFailed;
  }
  return needs_newline ? write_all(file, {&kLineEnd, 1}) : 0;
}

/// What happens while the lock is held.
int append_locked(int file, std::string_view line) {
  if (const int status = make_room(file, line.size()); status != 0) {
    return status;
  }
  if (const int status = write_all(file, line); status != 0) {
    return status;
  }
  return write_all(file, {&kLineEnd, 1});
}

int open_log() {
  constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  int file = -1;
  do {
    file = open(fixed_paths::kLostBitLog, kFlags, kLogMode);
  } while (file < 0 && errno == EINTR);
  return file;
}

/// Anything but a regular file in the log's place is not written to.
int check_regular(int file) {
  struct stat status {};
  if (fstat(file, &status) != 0) {
    return kLogStatFailed;
  }
  return S_ISREG(status.st_mode) ? 0 : kLogOpenFailed;
}

int lock(int file) {
  int status = 0;
  do {
    status = lockf(file, F_LOCK, 0);
  } while (status != 0 && errno == EINTR);
  return status == 0 ? 0 : kLogLockFailed;
}

/// A lock reaches from the file's offset on, hence the way back to the start.
void unlock(int file) {
  static_cast<void>(lseek(file, 0, SEEK_SET));
  static_cast<void>(lockf(file, F_ULOCK, 0));
}

/// The local time without the newline that ctime ends it with.
std::array<char, kTimeBytes> time_text() {
  std::array<char, kTimeBytes> text{};
  const std::time_t now = std::time(nullptr);
  if (const char* const line = std::ctime(&now); line != nullptr) {
    const std::string_view stamp(line);
    stamp.substr(0, stamp.size() - 1).copy(text.data(), text.size() - 1);
  }
  return text;
}

void log_lost_bits(std::uint64_t value, const char* module, const char* function) {
  const std::array<char, kTimeBytes> time = time_text();
  std::array<char, kLogLineBytes> line{};
  static_cast<void>(std::snprintf(line.data(), line.size(), "%s:ERROR:%s:%s:%d lost bit (%lx)",
                                  time.data(), module, function, static_cast<int>(getpid()),
                                  static_cast<unsigned long>(value)));
  static_cast<void>(log_append(line.data()));
}

/// What a value that does not fit becomes.
std::uint32_t replace_lost(std::uint64_t value, const char* module, const char* function,
                           std::int32_t substitute) {
  const int saved_errno = errno;
  log_lost_bits(value, module, function);
  errno = saved_errno;
  return substitute == kKeepTruncated ? static_cast<std::uint32_t>(value)
                                      : static_cast<std::uint32_t>(substitute);
}

}  // namespace

int log_append(const char* line) {
  const int file = open_log();
  if (file < 0) {
    return kLogOpenFailed;
  }
  int status = check_regular(file);
  if (status == 0) {
    status = lock(file);
  }
  if (status == 0) {
    status = append_locked(file, line);
    unlock(file);
  }
  close(file);
  return status;
}

std::uint32_t narrow_ulong_to_uint(std::uint64_t value, const char* module, const char* function,
                                   std::int32_t substitute) {
  return value <= std::numeric_limits<std::uint32_t>::max()
             ? static_cast<std::uint32_t>(value)
             : replace_lost(value, module, function, substitute);
}

std::int32_t narrow_ulong_to_int(std::uint64_t value, const char* module, const char* function,
                                 std::int32_t substitute) {
  return static_cast<std::int32_t>(value <= std::numeric_limits<std::int32_t>::max()
                                       ? static_cast<std::uint32_t>(value)
                                       : replace_lost(value, module, function, substitute));
}

std::uint32_t narrow_long_to_uint(std::int64_t value, const char* module, const char* function,
                                  std::int32_t substitute) {
  return narrow_ulong_to_uint(static_cast<std::uint64_t>(value), module, function, substitute);
}

std::int32_t narrow_long_to_int(std::int64_t value, const char* module, const char* function,
                                std::int32_t substitute) {
  if (value >= std::numeric_limits<std::int32_t>::min() &&
      value <= std::numeric_limits<std::int32_t>::max()) {
    return static_cast<std::int32_t>(value);
  }
  return static_cast<std::int32_t>(
      replace_lost(static_cast<std::uint64_t>(value), module, function, substitute));
}

}  // namespace rlx
