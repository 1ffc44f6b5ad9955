#include "rlx_reader/frame_reader.h"

#include <cstdio>
#include <string_view>

#include "rlx_reader/sequence_shape.h"

namespace rlx::reader {

namespace {

constexpr std::size_t kCountDigits = 4;
constexpr std::string_view kContinued{"CNT_PRN_DAT\0", 12};
constexpr std::string_view kEnd{"END_PRN_DAT\0", 12};

std::string_view text_of(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

std::optional<Frame> parse_frame(Bytes bytes) {
  if (bytes.size() < kFrameHeaderBytes) {
    return std::nullopt;
  }
  Frame frame;
  for (const std::uint8_t byte : bytes.first(kCountDigits)) {
    if (byte < '0' || byte > '9') {
      return std::nullopt;
    }
    frame.count = frame.count * 10 + (byte - std::uint64_t{'0'});
  }
  const std::string_view marker =
      text_of(bytes.subspan(kCountDigits, kFrameHeaderBytes - kCountDigits));
  frame.last = marker == kEnd;
  return frame.last || marker == kContinued ? std::optional(frame) : std::nullopt;
}

std::string header_bytes(const Frame& frame) {
  std::string digits = std::to_string(frame.count);
  digits.insert(0, kCountDigits - digits.size(), '0');
  return digits.append(frame.last ? kEnd : kContinued);
}

bool FrameReader::at_passed_through_job() {
  return !malformed_ && pass_through_length(input_.look(kMostSequence)) != 0;
}

bool FrameReader::read_next() {
  if (input_.look(1).empty()) {
    end();
    return false;
  }
  auto frame = malformed_ ? std::nullopt : parse_frame(input_.look(kFrameHeaderBytes));
  if (frame) {
    frame->offset = input_.offset();
    read_frame(*frame);
  } else {
    read_outside();
  }
  return true;
}

void FrameReader::read_frame(const Frame& frame) {
  const std::uint64_t there =
      input_.look(kFrameHeaderBytes + frame.count).size() - kFrameHeaderBytes;
  if (there < frame.count) {
    visitor_.fault({frame.offset, "truncated frame: " + std::to_string(there) + " of " +
                                      std::to_string(frame.count) + " bytes of data"});
    malformed_ = true;
  }
  input_.take(kFrameHeaderBytes);
  visitor_.begin_frame(frame);
  if (there != 0) {
    visitor_.frame_data(frame, input_.look(there));
    input_.take(there);
  }
  visitor_.end_frame(frame);
  ended_ = frame.last;
}

void FrameReader::read_outside() {
  const Bytes part = input_.look(ByteInput::kMostLookAhead);
  if (!malformed_) {
    const bool cut = part.size() < kFrameHeaderBytes;
    visitor_.fault({input_.offset(), cut ? "truncated frame: " + std::to_string(part.size()) +
                                               " of 16 bytes of its header"
                                         : "no frame header"});
    malformed_ = true;
  }
  visitor_.outside(input_.offset(), part);
  input_.take(part.size());
}

/// That a stream which is broken off has no END frame goes without saying.
void FrameReader::end() {
  if (!done_ && !malformed_ && !ended_) {
    visitor_.fault({input_.offset(), "no END frame"});
  }
  done_ = true;
}

}  // namespace rlx::reader
