// The functions on descriptors and paths, as the program meets them.

#include <poll.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstdarg>

#include "faults/shim.h"

// Fortified and 64-bit names lead to the plain functions: on the machines that the tests run on
// both have the same arguments, and the size of the room behind a buffer may be ignored.
#define SHIM_NAME(name) __asm__(name) __attribute__((visibility("default"), noinline))
#define CALLED_BY_PROGRAM watched(__builtin_return_address(0))

namespace rlx::testing {
namespace {

/// A read or write: failed, shortened by its fault, or limited with all others.
template <typename Transfer>
ssize_t transfer(Call call, int descriptor, std::size_t count, Transfer&& move) {
  const Role role = role_of_descriptor(descriptor);
  const Fault* const fault = meet_fault(call, role);
  if (fault != nullptr && fault->effect == Effect::fail) {
    return -1;
  }
  if (fault != nullptr && fault->effect == Effect::zero) {
    return 0;
  }
  if (fault != nullptr && fault->bytes < count) {
    count = fault->bytes;
  }
  const ssize_t moved = move(fault != nullptr ? count : limited(call, count));
  if (call == Call::write) {
    note_written(role, moved);
  }
  return moved;
}

ssize_t do_read(bool is_watched, int descriptor, void* bytes, std::size_t count) {
  static const auto real = next<ssize_t (*)(int, void*, std::size_t)>("read");
  return is_watched ? transfer(Call::read, descriptor, count,
                               [&](std::size_t some) { return real(descriptor, bytes, some); })
                    : real(descriptor, bytes, count);
}

ssize_t do_pread(bool is_watched, int descriptor, void* bytes, std::size_t count, off_t offset) {
  static const auto real = next<ssize_t (*)(int, void*, std::size_t, off_t)>("pread");
  return is_watched
             ? transfer(Call::pread, descriptor, count,
                        [&](std::size_t some) { return real(descriptor, bytes, some, offset); })
             : real(descriptor, bytes, count, offset);
}

int do_open(bool is_watched, const char* path, int flags, mode_t mode) {
  static const auto real = next<int (*)(const char*, int, ...)>("open");
  if (!is_watched) {
    return real(path, flags, mode);
  }
  const Role role = role_of_path(path);
  if (fails(Call::open, role)) {
    return -1;
  }
  const int descriptor = real(path, flags, mode);
  remember_role(descriptor, role);
  return descriptor;
}

int do_stat(bool is_watched, const char* path, struct stat* attributes) {
  static const auto real = next<int (*)(const char*, struct stat*)>("stat");
  return is_watched && fails(Call::stat, role_of_path(path)) ? -1 : real(path, attributes);
}

int do_fstat(bool is_watched, int descriptor, struct stat* attributes) {
  static const auto real = next<int (*)(int, struct stat*)>("fstat");
  return is_watched && fails(Call::fstat, role_of_descriptor(descriptor))
             ? -1
             : real(descriptor, attributes);
}

int do_poll(bool is_watched, pollfd* descriptors, nfds_t count, int timeout) {
  static const auto real = next<int (*)(pollfd*, nfds_t, int)>("poll");
  if (!is_watched) {
    return real(descriptors, count, timeout);
  }
  const Call call = timeout == 0 ? Call::poll_now : Call::poll_wait;
  if (fails(call, role_of_descriptor(descriptors->fd))) {
    return -1;
  }
  return timeout == 0 && input_never_ready() ? 0 : real(descriptors, count, timeout);
}

off_t do_lseek(bool is_watched, int descriptor, off_t offset, int whence) {
  static const auto real = next<off_t (*)(int, off_t, int)>("lseek");
  return is_watched && fails(Call::lseek, role_of_descriptor(descriptor))
             ? -1
             : real(descriptor, offset, whence);
}

int do_ftruncate(bool is_watched, int descriptor, off_t length) {
  static const auto real = next<int (*)(int, off_t)>("ftruncate");
  return is_watched && fails(Call::ftruncate, role_of_descriptor(descriptor))
             ? -1
             : real(descriptor, length);
}

int do_lockf(bool is_watched, int descriptor, int command, off_t length) {
  static const auto real = next<int (*)(int, int, off_t)>("lockf");
  return is_watched && fails(Call::lockf, role_of_descriptor(descriptor))
             ? -1
             : real(descriptor, command, length);
}

int do_fcntl(bool is_watched, int descriptor, int command, void* argument) {
  static const auto real = next<int (*)(int, int, ...)>("fcntl");
  return is_watched && fails(Call::fcntl, role_of_descriptor(descriptor))
             ? -1
             : real(descriptor, command, argument);
}

}  // namespace

extern "C" {

ssize_t shim_read(int descriptor, void* bytes, std::size_t count) SHIM_NAME("read");
ssize_t shim_read(int descriptor, void* bytes, std::size_t count) {
  return do_read(CALLED_BY_PROGRAM, descriptor, bytes, count);
}

ssize_t shim_read_chk(int descriptor, void* bytes, std::size_t count, std::size_t room)
    SHIM_NAME("__read_chk");
ssize_t shim_read_chk(int descriptor, void* bytes, std::size_t count, std::size_t /*room*/) {
  return do_read(CALLED_BY_PROGRAM, descriptor, bytes, count);
}

ssize_t shim_pread(int descriptor, void* bytes, std::size_t count, off_t offset) SHIM_NAME("pread");
ssize_t shim_pread(int descriptor, void* bytes, std::size_t count, off_t offset) {
  return do_pread(CALLED_BY_PROGRAM, descriptor, bytes, count, offset);
}

ssize_t shim_pread64(int descriptor, void* bytes, std::size_t count, off_t offset)
    SHIM_NAME("pread64");
ssize_t shim_pread64(int descriptor, void* bytes, std::size_t count, off_t offset) {
  return do_pread(CALLED_BY_PROGRAM, descriptor, bytes, count, offset);
}

ssize_t shim_pread_chk(int descriptor, void* bytes, std::size_t count, off_t offset,
                       std::size_t room) SHIM_NAME("__pread_chk");
ssize_t shim_pread_chk(int descriptor, void* bytes, std::size_t count, off_t offset,
                       std::size_t /*room*/) {
  return do_pread(CALLED_BY_PROGRAM, descriptor, bytes, count, offset);
}

ssize_t shim_pread64_chk(int descriptor, void* bytes, std::size_t count, off_t offset,
                         std::size_t room) SHIM_NAME("__pread64_chk");
ssize_t shim_pread64_chk(int descriptor, void* bytes, std::size_t count, off_t offset,
                         std::size_t /*room*/) {
  return do_pread(CALLED_BY_PROGRAM, descriptor, bytes, count, offset);
}

ssize_t shim_write(int descriptor, const void* bytes, std::size_t count) SHIM_NAME("write");
ssize_t shim_write(int descriptor, const void* bytes, std::size_t count) {
  static const auto real = next<ssize_t (*)(int, const void*, std::size_t)>("write");
  return CALLED_BY_PROGRAM
             ? transfer(Call::write, descriptor, count,
                        [&](std::size_t some) { return real(descriptor, bytes, some); })
             : real(descriptor, bytes, count);
}

// The mode is there only with O_CREAT; without it what is passed on means nothing.
int shim_open(const char* path, int flags, mode_t mode) SHIM_NAME("open");
int shim_open(const char* path, int flags, mode_t mode) {
  return do_open(CALLED_BY_PROGRAM, path, flags, mode);
}

int shim_open64(const char* path, int flags, mode_t mode) SHIM_NAME("open64");
int shim_open64(const char* path, int flags, mode_t mode) {
  return do_open(CALLED_BY_PROGRAM, path, flags, mode);
}

int shim_open_2(const char* path, int flags) SHIM_NAME("__open_2");
int shim_open_2(const char* path, int flags) {
  return do_open(CALLED_BY_PROGRAM, path, flags, 0);
}

int shim_open64_2(const char* path, int flags) SHIM_NAME("__open64_2");
int shim_open64_2(const char* path, int flags) {
  return do_open(CALLED_BY_PROGRAM, path, flags, 0);
}

// A close that fails has closed all the same.
int shim_close(int descriptor) SHIM_NAME("close");
int shim_close(int descriptor) {
  static const auto real = next<int (*)(int)>("close");
  if (!CALLED_BY_PROGRAM) {
    return real(descriptor);
  }
  const Role role = role_of_descriptor(descriptor);
  const int result = real(descriptor);
  return fails(Call::close, role) ? -1 : result;
}

int shim_stat(const char* path, struct stat* attributes) SHIM_NAME("stat");
int shim_stat(const char* path, struct stat* attributes) {
  return do_stat(CALLED_BY_PROGRAM, path, attributes);
}

int shim_stat64(const char* path, struct stat* attributes) SHIM_NAME("stat64");
int shim_stat64(const char* path, struct stat* attributes) {
  return do_stat(CALLED_BY_PROGRAM, path, attributes);
}

int shim_fstat(int descriptor, struct stat* attributes) SHIM_NAME("fstat");
int shim_fstat(int descriptor, struct stat* attributes) {
  return do_fstat(CALLED_BY_PROGRAM, descriptor, attributes);
}

int shim_fstat64(int descriptor, struct stat* attributes) SHIM_NAME("fstat64");
int shim_fstat64(int descriptor, struct stat* attributes) {
  return do_fstat(CALLED_BY_PROGRAM, descriptor, attributes);
}

off_t shim_lseek(int descriptor, off_t offset, int whence) SHIM_NAME("lseek");
off_t shim_lseek(int descriptor, off_t offset, int whence) {
  return do_lseek(CALLED_BY_PROGRAM, descriptor, offset, whence);
}

off_t shim_lseek64(int descriptor, off_t offset, int whence) SHIM_NAME("lseek64");
off_t shim_lseek64(int descriptor, off_t offset, int whence) {
  return do_lseek(CALLED_BY_PROGRAM, descriptor, offset, whence);
}

int shim_ftruncate(int descriptor, off_t length) SHIM_NAME("ftruncate");
int shim_ftruncate(int descriptor, off_t length) {
  return do_ftruncate(CALLED_BY_PROGRAM, descriptor, length);
}

int shim_ftruncate64(int descriptor, off_t length) SHIM_NAME("ftruncate64");
int shim_ftruncate64(int descriptor, off_t length) {
  return do_ftruncate(CALLED_BY_PROGRAM, descriptor, length);
}

int shim_lockf(int descriptor, int command, off_t length) SHIM_NAME("lockf");
int shim_lockf(int descriptor, int command, off_t length) {
  return do_lockf(CALLED_BY_PROGRAM, descriptor, command, length);
}

int shim_lockf64(int descriptor, int command, off_t length) SHIM_NAME("lockf64");
int shim_lockf64(int descriptor, int command, off_t length) {
  return do_lockf(CALLED_BY_PROGRAM, descriptor, command, length);
}

int shim_poll(pollfd* descriptors, nfds_t count, int timeout) SHIM_NAME("poll");
int shim_poll(pollfd* descriptors, nfds_t count, int timeout) {
  return do_poll(CALLED_BY_PROGRAM, descriptors, count, timeout);
}

int shim_poll_chk(pollfd* descriptors, nfds_t count, int timeout, std::size_t room)
    SHIM_NAME("__poll_chk");
int shim_poll_chk(pollfd* descriptors, nfds_t count, int timeout, std::size_t /*room*/) {
  return do_poll(CALLED_BY_PROGRAM, descriptors, count, timeout);
}

// Whatever the third argument is, it is one word.
int shim_fcntl(int descriptor, int command, void* argument) SHIM_NAME("fcntl");
int shim_fcntl(int descriptor, int command, void* argument) {
  return do_fcntl(CALLED_BY_PROGRAM, descriptor, command, argument);
}

int shim_fcntl64(int descriptor, int command, void* argument) SHIM_NAME("fcntl64");
int shim_fcntl64(int descriptor, int command, void* argument) {
  return do_fcntl(CALLED_BY_PROGRAM, descriptor, command, argument);
}
}

}  // namespace rlx::testing
