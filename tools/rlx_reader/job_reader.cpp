#include "rlx_reader/job_reader.h"

#include "rlx_reader/block_reader.h"
#include "rlx_reader/frame_reader.h"

namespace rlx::reader {

struct JobReader::Readers {
  Readers(ByteInput& bytes, JobVisitor& visitor)
      : input(bytes), frames(bytes, visitor), blocks(bytes, visitor) {}

  ByteInput& input;
  FrameReader frames;
  BlockReader blocks;
  bool begun = false;
  bool framed = false;
};

JobReader::JobReader(ByteInput& input, JobVisitor& visitor)
    : readers_(std::make_unique<Readers>(input, visitor)) {}

JobReader::~JobReader() = default;

bool JobReader::read_next() {
  if (!readers_->begun) {
    readers_->begun = true;
    readers_->framed = is_framed(readers_->input.look(kFrameHeaderBytes));
  }
  // A job that is passed through leaves the frames for good.
  if (readers_->framed && readers_->frames.at_passed_through_job()) {
    readers_->framed = false;
  }
  return readers_->framed ? readers_->frames.read_next() : readers_->blocks.read_next();
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
