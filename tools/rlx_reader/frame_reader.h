#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "rlx_reader/byte_input.h"
#include "rlx_reader/job_visitor.h"

namespace rlx::reader {

/// Bytes of a frame's header: four digits, CNT_PRN_DAT or END_PRN_DAT, NUL.
inline constexpr std::size_t kFrameHeaderBytes = 16;

/// Reads a frame's header. @return nothing unless `bytes` begins with a whole one. Its offset is 0.
std::optional<Frame> parse_frame(Bytes bytes);

/// The bytes of a frame's header, in a text.
std::string header_bytes(const Frame& frame);

/// Reads a stream of frames.
class FrameReader {
 public:
  FrameReader(ByteInput& input, JobVisitor& visitor) : input_(input), visitor_(visitor) {}

  /// True in front of a sequence that passes a job through: what follows is no frame.
  bool at_passed_through_job();

  /// Reads a frame, or a portion of what is none. @return false when the stream had ended before.
  bool read_next();

 private:
  void read_frame(const Frame& frame);
  void read_outside();
  void end();

  ByteInput& input_;
  JobVisitor& visitor_;
  bool ended_ = false;      ///< the last frame was an END frame
  bool malformed_ = false;  ///< no frames follow
  bool done_ = false;
};

}  // namespace rlx::reader
