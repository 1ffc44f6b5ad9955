#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rlx::testing {

/// Catches all that is written to a descriptor (1 or 2) while it lives, stdio included.
class CaptureDescriptor {
 public:
  explicit CaptureDescriptor(int descriptor);
  ~CaptureDescriptor();
  CaptureDescriptor(const CaptureDescriptor&) = delete;
  CaptureDescriptor& operator=(const CaptureDescriptor&) = delete;

  /// All bytes caught so far (stdio is flushed first).
  std::string text() const;

 private:
  int descriptor_;
  int saved_;
  int memory_;
};

/// Makes the given bytes the standard input while it lives. `as_pipe` puts them (64 KiB at most)
/// into a pipe instead of a file in memory.
class StandardInput {
 public:
  explicit StandardInput(std::string_view bytes, bool as_pipe = false);
  ~StandardInput();
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;

 private:
  int saved_;
};

/// A fresh directory, the current one while the object lives; removed with all that is in it.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::string previous_;
};

/// Writes a file (relative to the current directory), making its folders.
void write_file(const std::string& path, std::string_view bytes);

/// All bytes of a file; fails the test when it cannot be read.
std::string read_file(const std::string& path);

/// A string literal with NUL bytes in it as a string: bytes("a\0b").
template <std::size_t N>
std::string bytes(const char (&literal)[N]) {
  return std::string(literal, N - 1);
}

}  // namespace rlx::testing
