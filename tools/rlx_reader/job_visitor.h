#pragma once

#include <cstdint>
#include <string>

#include "rlx_reader/block.h"
#include "rlx_reader/byte_input.h"

namespace rlx::reader {

/// Something that is wrong with a job.
struct Fault {
  std::uint64_t offset = 0;  ///< of the block where it lies, or of the bytes that are in no block
  std::string what;
};

/// A frame of the transfer protocol.
struct Frame {
  std::uint64_t offset = 0;  ///< of its header
  bool last = false;         ///< marked END, not CNT
  std::uint64_t count = 0;   ///< bytes of data, as its header says: at most 9999
};

/// What is found in a job, in its order. Payloads and data come in portions of at most
/// ByteInput::kMostLookAhead bytes, which stay for the call only.
///
/// Every byte of the stream is told of once: in the header of a block or frame (header_bytes), in a
/// payload, in the data of a frame, in a sequence that passes a job through, or outside.
class JobVisitor {
 public:
  virtual ~JobVisitor() = default;

  virtual void begin_block(const Block& /*block*/) {}
  virtual void payload(const Block& /*block*/, Bytes /*part*/) {}
  virtual void end_block(const Block& /*block*/) {}

  /// Pages are numbered from 1, through all jobs of the stream. A page begins with its first data
  /// block and ends with a piece that ends in FF, or not at all. Told inside the block.
  virtual void begin_page(std::uint64_t /*number*/, const Block& /*block*/) {}
  virtual void end_page(std::uint64_t /*number*/) {}

  /// A framed stream has frames instead of blocks.
  virtual void begin_frame(const Frame& /*frame*/) {}
  virtual void frame_data(const Frame& /*frame*/, Bytes /*part*/) {}
  virtual void end_frame(const Frame& /*frame*/) {}

  /// ESC "Q" ... "/" and a grave accent: what follows is taken as a new job.
  virtual void pass_through(std::uint64_t /*offset*/, Bytes /*sequence*/) {}
  /// Bytes that stand in no block and no frame.
  virtual void outside(std::uint64_t /*offset*/, Bytes /*part*/) {}

  /// Told in front of the block or the bytes where the fault lies; of a block that the end of the
  /// input cuts far from its beginning, inside it.
  virtual void fault(const Fault& /*fault*/) {}
};

}  // namespace rlx::reader
