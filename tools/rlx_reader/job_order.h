#pragma once

#include <cstdint>

#include "rlx_reader/job_reader.h"

namespace rlx::reader {

/// The order of blocks: follows them, numbers pages, and reports what stands where it does not
/// belong.
class JobOrder {
 public:
  explicit JobOrder(JobVisitor& visitor) : visitor_(visitor) {}

  /// A block begins.
  void begin(const Block& block);

  /// A block is complete.
  /// @param last_byte  of its payload; -1 when it has none.
  void end(const Block& block, int last_byte);

  /// Another job's bytes follow, whatever the state of this one.
  void pass_through();

  /// The stream ends.
  void end_of_stream(std::uint64_t offset);

 private:
  void fault(std::uint64_t offset, const char* what);
  void begin_page(const Block& block);
  void end_page();

  JobVisitor& visitor_;
  bool started_ = false;
  bool page_open_ = false;
  bool setup_seen_ = false;
  std::uint64_t pages_ = 0;
};

}  // namespace rlx::reader
