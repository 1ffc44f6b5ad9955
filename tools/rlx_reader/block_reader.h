#pragma once

#include <cstdint>

#include "rlx_reader/block_end.h"
#include "rlx_reader/byte_input.h"
#include "rlx_reader/job_order.h"
#include "rlx_reader/job_visitor.h"

namespace rlx::reader {

/// Reads a stream of blocks.
class BlockReader {
 public:
  BlockReader(ByteInput& input, JobVisitor& visitor)
      : input_(input), visitor_(visitor), order_(visitor) {}

  /// Reads a block, or a portion of a long one, or of what stands between blocks.
  /// @return false when the stream had ended before.
  bool read_next();

 private:
  View look_behind_header();
  void begin_block(const BlockHeader& header);
  void read_payload();
  void cut_block();
  void end_block();
  void read_pass_through(std::size_t length);
  void read_outside();
  void begin_outside(Bytes bytes);
  void end();

  ByteInput& input_;
  JobVisitor& visitor_;
  JobOrder order_;
  Block block_;
  bool in_block_ = false;
  std::uint64_t left_ = 0;  ///< of the payload of block_
  int last_byte_ = -1;      ///< of the payload so far
  bool in_outside_ = false;
  bool cut_ = false;  ///< the end of the input cut something
  bool done_ = false;
};

}  // namespace rlx::reader
