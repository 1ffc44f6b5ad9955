#include "rlx_reader/block_reader.h"

#include <algorithm>
#include <string>

#include "rlx_reader/sequence_shape.h"

namespace rlx::reader {

bool BlockReader::read_next() {
  if (in_block_) {
    read_payload();
    return true;
  }
  if (input_.look(1).empty()) {
    end();
    return false;
  }
  if (const auto header = parse_header(input_.look(kHeaderBytes))) {
    in_outside_ = false;
    begin_block(*header);
    read_payload();
  } else if (const std::size_t length = pass_through_length(input_.look(kMostSequence));
             length != 0 && !in_outside_) {
    read_pass_through(length);
  } else {
    read_outside();
  }
  return true;
}

View BlockReader::look_behind_header() {
  const Bytes bytes = input_.look(ByteInput::kMostLookAhead);
  return {bytes.subspan(kHeaderBytes), bytes.size() < ByteInput::kMostLookAhead};
}

void BlockReader::begin_block(const BlockHeader& header) {
  const View view = look_behind_header();
  const BlockEnd end = find_block_end(header, view);
  block_ = {input_.offset(), header, BlockUse::unknown, end.payload,
            end.count_is_right && !end.cut};
  if (!end.what.empty()) {
    visitor_.fault({block_.offset, end.what});
  }
  BlockHeader real = header;
  real.count = count_for(header.ending, end.payload);
  block_.use =
      use_of(real, view.bytes.first(std::min<std::uint64_t>(end.payload, view.bytes.size())));
  if (end.cut && block_.use == BlockUse::further_data) {
    // It may have been the front of a job end or of something else.
    order_.lose_block();
  }
  cut_ = end.cut;
  left_ = end.payload;
  last_byte_ = -1;
  in_block_ = true;
  order_.begin(block_);
  visitor_.begin_block(block_);
  input_.take(kHeaderBytes);
}

/// Hands on what is left of a payload, or a portion of it.
void BlockReader::read_payload() {
  const std::uint64_t wanted = std::min<std::uint64_t>(left_, ByteInput::kMostLookAhead);
  const Bytes part = input_.look(wanted);
  if (!part.empty()) {
    last_byte_ = part.back();
    visitor_.payload(block_, part);
    left_ -= part.size();
    input_.take(part.size());
  }
  if (part.size() < wanted) {
    cut_block();
  }
  if (left_ == 0) {
    end_block();
  }
}

/// The input ends in a block that was too long to be looked at.
void BlockReader::cut_block() {
  const std::uint64_t declared = block_.payload;
  block_.payload -= left_;
  block_.count_is_right = false;
  left_ = 0;
  cut_ = true;
  visitor_.fault({block_.offset, truncated_text(block_.payload, declared)});
}

void BlockReader::end_block() {
  in_block_ = false;
  visitor_.end_block(block_);
  order_.end(block_, last_byte_);
}

void BlockReader::read_pass_through(std::size_t length) {
  order_.pass_through();
  visitor_.pass_through(input_.offset(), input_.look(length));
  input_.take(length);
}

void BlockReader::begin_outside(Bytes bytes) {
  cut_ = is_cut_header(bytes);
  visitor_.fault({input_.offset(), cut_ ? "truncated block: " + std::to_string(bytes.size()) +
                                              " of 16 bytes of its header"
                                        : "data outside blocks"});
  if (looks_like_header(bytes)) {
    order_.lose_block();
  }
  in_outside_ = true;
}

/// Bytes up to the next header, or a portion of them.
void BlockReader::read_outside() {
  const Bytes bytes = input_.look(ByteInput::kMostLookAhead);
  if (!in_outside_) {
    begin_outside(bytes);
  }
  std::size_t count = find_header(bytes);
  // A header may begin in the last bytes.
  if (count == bytes.size() && bytes.size() == ByteInput::kMostLookAhead) {
    count -= kHeaderBytes - 1;
  }
  // The first byte is in no header, so there is always one to hand on.
  visitor_.outside(input_.offset(), input_.look(std::max<std::size_t>(count, 1)));
  input_.take(std::max<std::size_t>(count, 1));
}

/// That a job which was cut off does not end goes without saying.
void BlockReader::end() {
  if (!done_ && !cut_) {
    order_.end_of_stream(input_.offset());
  }
  done_ = true;
}

}  // namespace rlx::reader
