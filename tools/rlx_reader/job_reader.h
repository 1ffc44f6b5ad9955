#pragma once

#include <memory>

#include "rlx_reader/byte_input.h"
#include "rlx_reader/job_visitor.h"

namespace rlx::reader {

/// Reads a stream of RLX jobs, or of frames, from where the input stands to its end, step by step.
///
/// What is wrong is a fault, and reading goes on at the next block that can be recognised:
/// - a count that is not the payload's (block_end.h says how that is told), and an empty payload;
/// - a block, frame or header that the end of the input cuts;
/// - bytes between blocks. (Behind a data block in mid-page nothing tells them from data; they
///   count as a wrong count there.)
/// - blocks where they do not belong (job_order.h);
/// - frames: a malformed header, an end without an END frame.
/// A stream without a byte is an empty job, and good.
class JobReader {
 public:
  /// Both must outlive the reader.
  JobReader(ByteInput& input, JobVisitor& visitor);
  ~JobReader();
  JobReader(const JobReader&) = delete;
  JobReader& operator=(const JobReader&) = delete;

  /// Reads a block, a frame, what stands between them, or a portion of them.
  /// @return false when the stream had ended before.
  /// @throws std::system_error when the input cannot be read.
  bool read_next();

 private:
  struct Readers;
  std::unique_ptr<Readers> readers_;
};

/// Reads a whole stream.
/// @throws std::system_error when the input cannot be read.
void read_jobs(ByteInput& input, JobVisitor& visitor);

/// True when a stream that begins so is one of frames.
bool is_framed(Bytes front);

}  // namespace rlx::reader
