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
  std::uint64_t count = 0;   ///< bytes of data, as its header says
};

/// What is found in a job, in its order. Payloads and data come in portions of at most
/// ByteInput::kMostLookAhead bytes, which stay for the call only.
class JobVisitor {
 public:
  virtual ~JobVisitor() = default;

  virtual void begin_block(const Block& /*block*/) {}
  virtual void payload(const Block& /*block*/, Bytes /*part*/) {}
  virtual void end_block(const Block& /*block*/) {}

  /// Pages are numbered from 1, through all jobs of the stream. A page begins with its first data
  /// block and ends with a piece that ends in FF, or not at all.
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

  virtual void fault(const Fault& /*fault*/) {}
};

/// Reads a stream of RLX jobs, or of frames, from where the input stands to its end.
///
/// What is wrong is a fault, and reading goes on at the next block that can be recognised:
/// - a count that is not the payload's: the payload is then what stands before the next header;
/// - a block, frame or header that the end of the input cuts;
/// - bytes between blocks: those that follow a block which is complete by what it holds. (Behind a
///   data block in mid-page nothing tells them from data; there they count as a wrong count.)
/// - blocks where they do not belong: a page without a page setup in front of it or before the job
///   start, data, a form feed or carried settings without a page, a page inside a page, a job that
///   starts twice, ends before it starts or does not end (told where the job end is missing);
/// - frames: a malformed header, an end without an END frame.
/// A stream without a byte is an empty job, and good.
/// @throws std::system_error when the input cannot be read.
void read_jobs(ByteInput& input, JobVisitor& visitor);

/// True when a stream that begins so is one of frames.
bool is_framed(Bytes front);

}  // namespace rlx::reader
