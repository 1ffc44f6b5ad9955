#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "input/raw_input.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {

using testing::forget_output;
using testing::option_targets;
using testing::renew_filter;
using testing::restart_frames;
using testing::restart_gaiji;
using testing::restart_input;
using testing::restart_page;
using testing::restart_raw_input;
using testing::restart_settings;
using testing::the_filter;

// What the fuzz targets have in common. Nothing of it writes to the descriptors that the fuzzer
// reports on: standard error is swapped as a stream only.

/// Where the fuzzer and the sanitizers report.
inline std::FILE* const kReports = stderr;

/// Ends the process as a finding.
[[noreturn]] inline void fail(const char* what) {
  std::fprintf(kReports, "finding: %s\n", what);
  std::abort();
}

inline void require(bool holds, const char* what) {
  if (!holds) {
    fail(what);
  }
}

inline std::string_view text_of(const std::uint8_t* bytes, std::size_t count) {
  return {reinterpret_cast<const char*>(bytes), count};
}

inline const std::uint8_t* raw(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}
inline Bytes bytes_of(std::string_view text) {
  return {raw(text), text.size()};
}

/// Takes choices off the front of a fuzzer's input; a byte behind its end is 0.
class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : left_(text_of(data, size)) {}

  bool empty() const { return left_.empty(); }
  std::uint8_t byte() {
    if (left_.empty()) {
      return 0;
    }
    const auto taken = static_cast<std::uint8_t>(left_.front());
    left_.remove_prefix(1);
    return taken;
  }
  std::size_t word() {
    const std::size_t high = byte();
    return high << 8 | byte();
  }
  std::string_view bytes(std::size_t count) {
    const std::string_view taken = left_.substr(0, count);
    left_.remove_prefix(taken.size());
    return taken;
  }
  std::string_view rest() { return bytes(left_.size()); }

 private:
  std::string_view left_;
};

/// Bytes in a place of exactly their size, so that a read behind them is caught.
class ExactBytes {
 public:
  explicit ExactBytes(std::string_view bytes)
      : bytes_(new std::uint8_t[bytes.size()]), size_(bytes.size()) {
    std::copy(bytes.begin(), bytes.end(), bytes_.get());
  }

  const std::uint8_t* begin() const { return bytes_.get(); }
  const std::uint8_t* end() const { return bytes_.get() + size_; }

 private:
  std::unique_ptr<std::uint8_t[]> bytes_;
  std::size_t size_;
};

/// A file without a name. Its content can be replaced, and it can be opened by a path.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("fuzz", 0)) {
    require(descriptor_ >= 0, "no file in memory");
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  int descriptor() const { return descriptor_; }
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  /// Replaces the content; the offset is at its start.
  void set(std::string_view bytes) const {
    require(ftruncate(descriptor_, 0) == 0, "a file in memory cannot be cut");
    const auto size = static_cast<ssize_t>(bytes.size());
    require(pwrite(descriptor_, bytes.data(), bytes.size(), 0) == size, "short write");
    lseek(descriptor_, 0, SEEK_SET);
  }

  std::string content() const {
    std::string bytes(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
    const auto size = static_cast<ssize_t>(bytes.size());
    require(pread(descriptor_, bytes.data(), bytes.size(), 0) == size, "short read");
    return bytes;
  }

 private:
  int descriptor_;
};

/// The file in memory that stands for standard input or output, from the first call on.
inline MemoryFile& standard_file(int descriptor) {
  static MemoryFile files[2];
  static const bool ready = dup2(files[0].descriptor(), STDIN_FILENO) == STDIN_FILENO &&
                            dup2(files[1].descriptor(), STDOUT_FILENO) == STDOUT_FILENO;
  require(ready, "descriptors cannot be replaced");
  return files[descriptor];
}

inline MemoryFile& standard_input() {
  return standard_file(STDIN_FILENO);
}
inline MemoryFile& standard_output() {
  return standard_file(STDOUT_FILENO);
}

/// A job on its way into the filter: the first bytes stand ready in the window, in a place of
/// exactly their size, the others come with the next read.
class JobInput {
 public:
  /// @param cut  bytes that stand ready.
  JobInput(std::string_view job, std::size_t cut)
      : size_(job.size()),
        ready_(job.substr(0, std::min(cut, job.size()))),
        later_(size_ - static_cast<std::size_t>(ready_.end() - ready_.begin())) {
    require(later_ <= kInputBufferBytes, "more than one read");
    standard_input().set(job.substr(size_ - later_));
    restart_raw_input();
    the_filter().source.raw.window = {ready_.begin(), ready_.end()};
  }

  /// Bytes that the filter has taken so far.
  std::size_t taken() const {
    const bool before_read = the_filter().source.raw.window.end == ready_.end();
    return size_ - the_filter().source.raw.window.size() - (before_read ? later_ : 0);
  }

 private:
  std::size_t size_;
  ExactBytes ready_;
  std::size_t later_;
};

/// Catches what goes to the stream of standard error while it lives.
class Messages {
 public:
  Messages() : stream_(open_memstream(&text_, &size_)) { stderr = stream_; }
  ~Messages() {
    stderr = kReports;
    std::fclose(stream_);
    std::free(text_);
  }
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;

  std::string text() const {
    std::fflush(stream_);
    return {text_, size_};
  }

 private:
  char* text_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
};

/// A directory of this process, removed at its orderly end.
class Scratch {
 public:
  Scratch() : path_(std::filesystem::temp_directory_path() / "filter-fuzz-XXXXXX") {
    require(mkdtemp(path_.data()) != nullptr, "no scratch directory");
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  const std::string& path() const { return path_; }

  /// The full name of a place in it whose folder is there.
  std::string place(std::string_view name) const {
    const std::filesystem::path full = std::filesystem::path(path_) / name;
    std::filesystem::create_directories(full.parent_path());
    return full;
  }

  void write(std::string_view name, std::string_view bytes) const {
    std::FILE* const file = std::fopen(place(name).c_str(), "w");
    require(file != nullptr, "no scratch file");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
  }

  /// Lets a name in it stand for a file in memory.
  void link(std::string_view name, const MemoryFile& file) const {
    std::filesystem::create_symlink(file.path(), place(name));
  }

 private:
  std::string path_;
};

/// Makes a scratch directory the current one while it lives. The fuzzer itself needs the old one.
class InsideScratch {
 public:
  explicit InsideScratch(const Scratch& scratch) : before_(open(".", O_PATH | O_DIRECTORY)) {
    require(before_ >= 0 && chdir(scratch.path().c_str()) == 0, "no way into the scratch");
  }
  ~InsideScratch() {
    require(fchdir(before_) == 0, "no way out of the scratch");
    close(before_);
  }
  InsideScratch(const InsideScratch&) = delete;
  InsideScratch& operator=(const InsideScratch&) = delete;

 private:
  int before_;
};

}  // namespace rlx::fuzzing
