#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "job/bytes.h"

namespace rlx {

/// True when a path names a regular file, by itself or through symbolic links. When not, errno is
/// 0, or tells why nothing can be said of the path.
bool is_regular_file(const char* path);

/// A text file of the site (a form, the environment file, the G1 range file), read line by line.
///
/// Only a regular file is opened: a FIFO, a device or a socket in its place would block every job
/// or never end. Opening makes no device act, and blocks only while a file server holds a lease on
/// the file.
class TextFile {
 public:
  /// Opens the file; is_open() tells whether that worked.
  explicit TextFile(const char* path);
  ~TextFile();
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;

  bool is_open() const { return descriptor_ >= 0; }

  /// True when there is nothing at the path.
  bool is_missing() const { return missing_; }

  /// Why the file is not open or could not be read on: what errno said, or 0 when it is no regular
  /// file.
  int error_number() const { return error_number_; }

  /// Reads the next line, as fgets does: up to and with its LF, at most line.size() - 1 bytes, and
  /// a NUL behind them; the rest of a longer line comes with the next call. The last line may lack
  /// its LF.
  /// @param line  room of 2 bytes or more; not changed when there is no line.
  /// @return false at the end of the file or when it cannot be read on (failed() tells which); the
  /// beginning of a line that cannot be read on is dropped.
  bool read_line(std::span<char> line);

  /// The number, from 1, of the line that read_line gave last; 0 before the first one. Lines end
  /// with their LF, so all pieces of a long line have the same number.
  std::size_t line_number() const { return line_number_; }

  /// True when the file could not be read to its end.
  bool failed() const { return failed_; }

  /// Gives the descriptor back before the object's end.
  void close();

 private:
  bool refill();

  static constexpr std::size_t kBufferBytes = 4096;

  int descriptor_ = -1;
  bool missing_ = false;
  bool failed_ = false;
  bool line_ended_ = true;
  int error_number_ = 0;
  std::size_t line_number_ = 0;
  Bytes unread_;
  std::array<std::uint8_t, kBufferBytes> buffer_;
};

}  // namespace rlx
