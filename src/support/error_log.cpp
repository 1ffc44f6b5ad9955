#include "support/error_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "job/fixed_paths.h"
#include "support/descriptor_io.h"

namespace rlx {

namespace {

constexpr mode_t kLogMode = 0666;

constexpr char kLineEnd = '\n';

Status write_all(int file, std::string_view bytes) {
  return write_whole(file, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}) ==
                 ST_OK
             ? ST_OK
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
Status make_room(int file, std::size_t line_bytes) {
  struct stat status {};
  if (fstat(file, &status) != 0) {
    return kLogStatFailed;
  }
  const bool needs_newline = !ends_with_newline(file, status.st_size);
  const off_t size = status.st_size + (needs_newline ? 1 : 0);
  if (size + static_cast<off_t>(line_bytes) > kLogCapBytes) {
    return ftruncate(file, 0) == 0 ? ST_OK : kLogTruncateFailed;
  }
  if (lseek(file, status.st_size, SEEK_SET) < 0) {
    return kLogSeekFailed;
  }
  return needs_newline ? write_all(file, {&kLineEnd, 1}) : ST_OK;
}

/// What happens while the lock is held.
Status append_locked(int file, std::string_view line) {
  if (const Status status = make_room(file, line.size()); status != ST_OK) {
    return status;
  }
  if (const Status status = write_all(file, line); status != ST_OK) {
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
Status check_regular(int file) {
  struct stat status {};
  if (fstat(file, &status) != 0) {
    return kLogStatFailed;
  }
  return S_ISREG(status.st_mode) ? ST_OK : kLogOpenFailed;
}

Status lock(int file) {
  int result = 0;
  do {
    result = lockf(file, F_LOCK, 0);
  } while (result != 0 && errno == EINTR);
  return result == 0 ? ST_OK : kLogLockFailed;
}

/// A lock reaches from the file's offset on, hence the way back to the start.
void unlock(int file) {
  static_cast<void>(lseek(file, 0, SEEK_SET));
  static_cast<void>(lockf(file, F_ULOCK, 0));
}

}  // namespace

Status log_append(const char* line) {
  const int file = open_log();
  if (file < 0) {
    return kLogOpenFailed;
  }
  Status status = check_regular(file);
  if (status == ST_OK) {
    status = lock(file);
  }
  if (status == ST_OK) {
    status = append_locked(file, line);
    unlock(file);
  }
  close(file);
  return status;
}

}  // namespace rlx
