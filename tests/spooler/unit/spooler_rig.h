#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "running/cancellation.h"
#include "running/descriptor.h"
#include "running/job_source.h"

namespace rlx::testing {

/// Makes a broken pipe a failed write while it lives, as the programs do.
class IgnoredBrokenPipe {
 public:
  IgnoredBrokenPipe();
  ~IgnoredBrokenPipe();
  IgnoredBrokenPipe(const IgnoredBrokenPipe&) = delete;
  IgnoredBrokenPipe& operator=(const IgnoredBrokenPipe&) = delete;

 private:
  void (*before_)(int);
};

std::span<const std::uint8_t> as_bytes(std::string_view text);

/// Puts bytes into a pipe or file; they have to go in.
void put_bytes(int descriptor, std::string_view text);

/// Bytes in memory, from the beginning.
spooler::Descriptor memory_file(std::string_view text);

/// All that a descriptor of a file holds, from the beginning.
std::string whole_file(int descriptor);

/// Reads a pipe to its end, by itself.
class PipeReader {
 public:
  PipeReader();
  ~PipeReader();
  PipeReader(const PipeReader&) = delete;
  PipeReader& operator=(const PipeReader&) = delete;

  /// The end to write to.
  int descriptor() const { return pipe_.write_end.number(); }
  /// Closes the end to write to. @return all that came.
  std::string text();

 private:
  spooler::Pipe pipe_;
  std::string text_;
  std::thread thread_;
};

/// A source that gives a text in portions of one size.
class PortionSource : public spooler::JobSource {
 public:
  PortionSource(std::string text, std::size_t portion)
      : text_(std::move(text)), portion_(portion) {}
  std::size_t read(std::span<std::uint8_t> room) override;

 private:
  std::string text_;
  std::size_t portion_;
  std::size_t next_ = 0;
};

/// Reads a source to its end, with a room of one size.
std::string read_all(spooler::JobSource& source, std::size_t room = 65536);

/// Writes a program of the shell. @return its absolute path.
std::string write_script(const std::string& name, const std::string& lines);

/// The filter under its own name, in the current directory: "zqeuctorlx: " stands in front of its
/// words. @return its absolute path.
std::string link_filter();

/// The number of descriptors that are open in this process.
std::size_t open_descriptors();

/// Waits until something holds, for ten seconds at most.
bool comes_true(const std::function<bool()>& holds);

/// A process that is there, and has not ended.
bool is_running(int process);

}  // namespace rlx::testing
