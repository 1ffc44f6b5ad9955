#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <system_error>
#include <vector>

namespace rlx::reader {

using Bytes = std::span<const std::uint8_t>;

/// Bytes that are read one after the other, with a look ahead. Memory does not grow with the input.
class ByteInput {
 public:
  virtual ~ByteInput() = default;

  /// Looks at what comes next, without taking it.
  /// @param count  at most kMostLookAhead.
  /// @return that many bytes; fewer only where the input ends. They stay until the next call.
  /// @throws std::system_error when the input cannot be read.
  virtual Bytes look(std::size_t count) = 0;

  /// Takes bytes that were looked at.
  virtual void take(std::size_t count) = 0;

  /// Where in the stream the next byte stands, from 0.
  virtual std::uint64_t offset() const = 0;

  static constexpr std::size_t kMostLookAhead = 65536;
};

/// Bytes that come from somewhere in portions, through a buffer.
class BufferedInput : public ByteInput {
 public:
  BufferedInput();

  Bytes look(std::size_t count) override;
  void take(std::size_t count) override;
  std::uint64_t offset() const override { return offset_; }

 protected:
  /// Where in the stream the next portion stands.
  std::uint64_t read_offset() const { return offset_ + (end_ - next_); }

 private:
  /// Brings the next portion. @param room  never empty.
  /// @return how many bytes it has; 0 at the end, after which nobody asks again.
  virtual std::size_t read_some(std::span<std::uint8_t> room) = 0;

  void read_on();

  std::vector<std::uint8_t> buffer_;
  std::size_t next_ = 0;
  std::size_t end_ = 0;
  std::uint64_t offset_ = 0;
  bool ended_ = false;
};

/// A file, or standard input.
class FileInput : public BufferedInput {
 public:
  /// @param path  "-" is standard input.
  /// @throws std::system_error, with the path in its text, when it cannot be opened.
  explicit FileInput(const std::string& path);
  ~FileInput() override;
  FileInput(const FileInput&) = delete;
  FileInput& operator=(const FileInput&) = delete;

 private:
  std::size_t read_some(std::span<std::uint8_t> room) override;

  std::string name_;
  int descriptor_;
};

/// Bytes in memory, which somebody else owns.
class MemoryInput : public ByteInput {
 public:
  explicit MemoryInput(Bytes bytes) : all_(bytes) {}

  Bytes look(std::size_t count) override;
  void take(std::size_t count) override { next_ += count; }
  std::uint64_t offset() const override { return next_; }

 private:
  Bytes all_;
  std::size_t next_ = 0;
};

}  // namespace rlx::reader
