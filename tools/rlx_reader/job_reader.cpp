#include "rlx_reader/job_reader.h"

#include "rlx_reader/block_reader.h"
#include "rlx_reader/frame_reader.h"

namespace rlx::reader {

struct JobReader::Parts {
  Parts(ByteInput& bytes, JobVisitor& visitor)
      : input(bytes), frames(bytes, visitor), blocks(bytes, visitor) {}

  ByteInput& input;
  FrameReader frames;
  BlockReader blocks;
  bool begun = false;
  bool framed = false;
};

JobReader::JobReader(ByteInput& input, JobVisitor& visitor)
    : parts_(std::make_unique<Parts>(input, visitor)) {}

JobReader::~JobReader() = default;

bool JobReader::read_next() {
  if (!parts_->begun) {
    parts_->begun = true;
    parts_->framed = is_framed(parts_->input.look(kFrameHeaderBytes));
  }
  // A job that is passed through leaves the frames for good.
  if (parts_->framed && parts_->frames.at_passed_through_job()) {
    parts_->framed = false;
  }
  return parts_->framed ? parts_->frames.read_next() : parts_->blocks.read_next();
}

void read_jobs(ByteInput& input, JobVisitor& visitor) {
  JobReader reader(input, visitor);
  while (reader.read_next()) {
  }
}

bool is_framed(Bytes front) {
  return parse_frame(front).has_value();
}

}  // namespace rlx::reader
