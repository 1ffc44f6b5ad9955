#pragma once

#include <cstdint>
#include <string>

#include "rlx_reader/job_visitor.h"

namespace rlx::reader {

/// The order of blocks: follows them, numbers pages, and reports what stands where it does not
/// belong (docs/rlx.md, "A job at a glance"):
/// - a job that starts twice, ends before it starts, or does not end (told where the stream ends);
/// - a page without a page setup in front of it, before the job start, or inside a page;
/// - blocks of a page header twice, out of order, inside a page, or without a page behind them;
/// - further data or a form feed without a page, carried settings that are not behind data;
/// - blocks of a kind that the language does not have.
class JobOrder {
 public:
  explicit JobOrder(JobVisitor& visitor) : visitor_(visitor) {}

  /// A block begins.
  void begin(const Block& block);

  /// A block is complete.
  /// @param last_byte  of its payload; -1 when it has none.
  void end(const Block& block, int last_byte);

  /// A block was there that cannot be read. What is missing up to the next page is not reported.
  void lose_block() { forgiving_ = true; }

  /// Another job's bytes follow, whatever the state of this one.
  void pass_through();

  /// The stream ends.
  void end_of_stream(std::uint64_t offset);

 private:
  void fault(const Block& block, std::string what);
  void begin_header_block(const Block& block);
  void check_place_in_header(const Block& block, int place);
  void begin_page(const Block& block);
  void check_page_header(const Block& block);
  void begin_further_block(const Block& block);
  void end_page();

  JobVisitor& visitor_;
  bool started_ = false;
  bool page_open_ = false;
  /// The last block of the page header so far, as its place in the header; 0 in front of it.
  int header_place_ = 0;
  bool behind_data_ = false;
  bool forgiving_ = false;
  std::uint64_t pages_ = 0;
};

}  // namespace rlx::reader
