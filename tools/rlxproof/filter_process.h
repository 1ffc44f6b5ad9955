#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include "rlx_reader/byte_input.h"

namespace rlx::proof {

/// The filter, as a child that converts a line-printer job. It gets the job from a thread, so that
/// its output can be read meanwhile; its messages go where those of this program go.
///
/// The program is looked for beside this one, in the folder of filters of the installation that
/// this one belongs to, and in $PATH, in this order.
class FilterProcess {
 public:
  /// @param job  is read by the thread until wait() has returned; it must stay until then.
  /// @throws std::system_error when the filter cannot be started.
  FilterProcess(const std::vector<std::string>& options, reader::ByteInput& job);
  /// Waits, if that has not been done.
  ~FilterProcess();
  FilterProcess(const FilterProcess&) = delete;
  FilterProcess& operator=(const FilterProcess&) = delete;

  /// A path from which the converted job can be read, once.
  std::string output_path() const;

  /// Bytes of the job that the filter has taken.
  std::uint64_t bytes_fed() const { return fed_; }

  /// Waits for the end. To be called when the output was read to its end.
  /// @return empty when the filter ended with status 0, else how it ended.
  /// @throws std::system_error when the job could not be read.
  std::string wait();

 private:
  void feed(reader::ByteInput& job, int pipe);
  int join();

  pid_t child_ = -1;
  int output_ = -1;
  std::atomic<std::uint64_t> fed_ = 0;
  std::exception_ptr failure_;
  std::thread feeder_;
};

}  // namespace rlx::proof
