#include "rlx_reader/job_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "rlx_reader/job_order.h"

namespace rlx::reader {

namespace {

constexpr std::uint8_t kEsc = 0x1b;
constexpr int kFormFeed = 0x0c;
/// Longest sequence that passes a job through.
constexpr std::size_t kMostSequence = 4096;
/// Bytes that tell what a block is for.
constexpr std::size_t kFront = 16;
/// A payload whose end can be looked at before its beginning is handed on.
constexpr std::uint64_t kMostLookedAt = ByteInput::kMostLookAhead - kHeaderBytes - kMostSequence;

constexpr std::size_t kFrameCountDigits = 4;
constexpr std::size_t kFrameHeader = 16;
constexpr std::string_view kContinued{"CNT_PRN_DAT", 12};
constexpr std::string_view kEnd{"END_PRN_DAT", 12};

std::string_view text_of(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool is_digit(std::uint8_t byte) {
  return byte >= '0' && byte <= '9';
}

/// The position of the first header in some bytes; their number when there is none.
std::size_t find_header(Bytes bytes) {
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    const void* const found = std::memchr(bytes.data() + at, kEsc, bytes.size() - at);
    if (found == nullptr) {
      break;
    }
    at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
    if (parse_header(bytes.subspan(at))) {
      return at;
    }
  }
  return bytes.size();
}

/// The length of a sequence that passes a job through; 0 when the bytes do not begin with one.
std::size_t pass_through_length(Bytes bytes) {
  if (bytes.size() < 4 || bytes[0] != kEsc || bytes[1] != 'Q') {
    return 0;
  }
  const std::size_t most = std::min(bytes.size(), kMostSequence);
  for (std::size_t at = 2; at < most; ++at) {
    // A DEL is a final byte only behind "!".
    const bool final =
        bytes[at] >= 0x40 && (bytes[at] < 0x7f || (bytes[at] == 0x7f && bytes[at - 1] == '!'));
    if (final) {
      return bytes[at] == '`' && bytes[at - 1] == '/' ? at + 1 : 0;
    }
  }
  return 0;
}

std::optional<Frame> parse_frame(Bytes bytes) {
  if (bytes.size() < kFrameHeader) {
    return std::nullopt;
  }
  Frame frame;
  for (const std::uint8_t byte : bytes.first(kFrameCountDigits)) {
    if (!is_digit(byte)) {
      return std::nullopt;
    }
    frame.count = frame.count * 10 + (byte - std::uint64_t{'0'});
  }
  const std::string_view marker =
      text_of(bytes.subspan(kFrameCountDigits, kFrameHeader - kFrameCountDigits));
  frame.last = marker == kEnd;
  return frame.last || marker == kContinued ? std::optional(frame) : std::nullopt;
}

/// True when sequences fill some bytes to their end: every ESC and FS in them is followed by a
/// final byte, and nothing but a final byte stands last.
bool ends_a_sequence(Bytes bytes) {
  const std::string_view text = text_of(bytes);
  const std::size_t last = text.find_last_of("\x1b\x1c");
  if (last == std::string_view::npos ||
      last + 2 >= text.size() + (text.size() - last == 2 ? 1 : 0)) {
    return last != std::string_view::npos && text.size() - last == 2;
  }
  const auto final = static_cast<std::uint8_t>(text.back());
  return text[last] == '\x1c' ? final >= 'p' && final <= 'y' : final >= 0x40;
}

/// Reads blocks.
class BlockReader {
 public:
  BlockReader(ByteInput& input, JobVisitor& visitor)
      : input_(input), visitor_(visitor), order_(visitor) {}

  void read() {
    while (!input_.look(1).empty()) {
      read_next();
    }
    // That a job which was cut off does not end goes without saying.
    if (!truncated_) {
      order_.end_of_stream(input_.offset());
    }
  }

 private:
  void read_next() {
    const Bytes front = input_.look(kHeaderBytes);
    if (const auto header = parse_header(front)) {
      read_block(*header);
      return;
    }
    const std::size_t sequence = pass_through_length(input_.look(kMostSequence));
    if (sequence != 0) {
      visitor_.pass_through(input_.offset(), input_.look(sequence));
      order_.pass_through();
      input_.take(sequence);
      return;
    }
    read_outside();
  }

  /// Bytes up to the next header.
  void read_outside() {
    bool told = false;
    for (;;) {
      const Bytes bytes = input_.look(ByteInput::kMostLookAhead);
      const std::size_t header = find_header(bytes);
      // A header may begin in the last bytes.
      const bool all = header == bytes.size() && bytes.size() < ByteInput::kMostLookAhead;
      const std::size_t count =
          header != bytes.size() || all ? header : bytes.size() - (kHeaderBytes - 1);
      if (!told && count != 0) {
        visitor_.fault({input_.offset(), outside_text(bytes, all)});
        told = true;
      }
      visitor_.outside(input_.offset(), bytes.first(count));
      input_.take(count);
      if (header != bytes.size() || all) {
        return;
      }
    }
  }

  static std::string outside_text(Bytes bytes, bool to_the_end) {
    const bool cut = to_the_end && bytes.size() < kHeaderBytes && bytes[0] == kEsc;
    return cut ? "truncated block: " + std::to_string(bytes.size()) + " of 16 bytes of its header"
               : "data outside blocks";
  }

  void read_block(const BlockHeader& header) {
    Block block;
    block.offset = input_.offset();
    block.header = header;
    const std::uint64_t declared = header.payload().value_or(0);
    const Bytes front = input_.look(kHeaderBytes + kFront).subspan(kHeaderBytes);
    block.use = use_of(header, front);
    block.payload = declared;
    if (declared > kMostLookedAt) {
      read_long_block(block, declared);
      return;
    }
    const Bytes bytes = input_.look(ByteInput::kMostLookAhead).subspan(kHeaderBytes);
    if (!ends_well(bytes, declared) || !header.payload()) {
      find_real_end(block, bytes, declared);
    }
    input_.take(kHeaderBytes);
    order_.begin(block);
    visitor_.begin_block(block);
    hand_on(block, input_.look(block.payload));
    finish(block);
  }

  /// True when at the end of a payload a block, a passed-through job or the end of the input
  /// stands.
  static bool ends_well(Bytes bytes, std::uint64_t payload) {
    if (payload > bytes.size()) {
      return false;
    }
    const Bytes behind = bytes.subspan(payload);
    return behind.empty() || parse_header(behind) || pass_through_length(behind) != 0;
  }

  /// The count is wrong, the input ends too early, or something stands behind the block.
  void find_real_end(Block& block, Bytes bytes, std::uint64_t declared) {
    const std::size_t inside = find_header(bytes);
    if (declared > bytes.size() && inside == bytes.size()) {
      if (is_whole_constant(use_of_payload(block, inside))) {
        wrong_count(block, declared, inside);
        return;
      }
      block.payload = bytes.size();
      truncated(block, declared);
    } else if (inside < declared) {
      wrong_count(block, declared, inside);
    } else if (!is_complete(block, bytes, declared, inside)) {
      wrong_count(block, declared, inside);
    }
  }

  /// Blocks whose payload is always the same, so that it tells itself where it ends.
  static bool is_whole_constant(BlockUse use) {
    return use == BlockUse::job_end || use == BlockUse::final_form_feed;
  }

  void truncated(Block& block, std::uint64_t declared) {
    visitor_.fault({block.offset, "truncated block: " + std::to_string(block.payload) + " of " +
                                      std::to_string(declared) + " bytes"});
    block.count_is_right = false;
    truncated_ = true;
  }

  void wrong_count(Block& block, std::uint64_t declared, std::uint64_t real) {
    const std::string count = std::to_string(block.header.count);
    visitor_.fault({block.offset, "wrong count " + count + ": it stands for " +
                                      std::to_string(declared) + " bytes, the block has " +
                                      std::to_string(real)});
    block.payload = real;
    block.count_is_right = false;
    block.use = use_of_payload(block, real);
  }

  /// What the block is for, by the length that its payload really has.
  BlockUse use_of_payload(const Block& block, std::uint64_t real) {
    BlockHeader header = block.header;
    header.count = header.ending == Ending::data ? real + 12 : real;
    const Bytes front = input_.look(kHeaderBytes + kFront).subspan(kHeaderBytes);
    return use_of(header, front.first(std::min<std::size_t>(front.size(), real)));
  }

  /// True when what is behind the declared end belongs to no block: the payload is whole by what it
  /// holds.
  static bool is_complete(const Block& block, Bytes bytes, std::uint64_t declared,
                          std::size_t next) {
    const Bytes payload = bytes.first(declared);
    switch (block.use) {
      case BlockUse::job_start:
        return declared == 6;
      case BlockUse::job_end:
      case BlockUse::final_form_feed:
        return true;
      case BlockUse::job_parameters:
        return text_of(payload).ends_with("MAK=UNIX\n");
      case BlockUse::first_data:
      case BlockUse::further_data:
        return !payload.empty() && payload.back() == kFormFeed && bytes[next - 1] != kFormFeed;
      default:
        return ends_a_sequence(payload) && bytes[declared] != kEsc && bytes[declared] != 0x1c;
    }
  }

  /// A block whose end is too far away to be looked at first.
  void read_long_block(Block& block, std::uint64_t declared) {
    const Bytes bytes = input_.look(ByteInput::kMostLookAhead).subspan(kHeaderBytes);
    const std::size_t inside = find_header(bytes);
    if (inside != bytes.size()) {
      wrong_count(block, declared, inside);
    } else if (bytes.size() + kHeaderBytes < ByteInput::kMostLookAhead) {
      block.payload = bytes.size();
      truncated(block, declared);
    }
    input_.take(kHeaderBytes);
    order_.begin(block);
    visitor_.begin_block(block);
    for (std::uint64_t left = block.payload; left != 0;) {
      const Bytes part = input_.look(std::min<std::uint64_t>(left, ByteInput::kMostLookAhead));
      if (part.empty()) {
        block.payload -= left;
        truncated(block, declared);
        break;
      }
      hand_on(block, part);
      left -= part.size();
    }
    finish(block);
  }

  void hand_on(const Block& block, Bytes part) {
    if (!part.empty()) {
      last_byte_ = part.back();
      visitor_.payload(block, part);
      input_.take(part.size());
    }
  }

  void finish(const Block& block) {
    visitor_.end_block(block);
    order_.end(block, block.payload == 0 ? -1 : last_byte_);
  }

  ByteInput& input_;
  JobVisitor& visitor_;
  JobOrder order_;
  int last_byte_ = -1;
  bool truncated_ = false;
};

/// Reads frames.
class FramedReader {
 public:
  FramedReader(ByteInput& input, JobVisitor& visitor) : input_(input), visitor_(visitor) {}

  /// @return false when the rest of the stream is a job that was passed through.
  bool read() {
    bool ended = false;
    while (!input_.look(1).empty()) {
      auto frame = parse_frame(input_.look(kFrameHeader));
      if (!frame) {
        return !other_bytes();
      }
      frame->offset = input_.offset();
      read_frame(*frame);
      ended = frame->last;
    }
    if (!ended) {
      visitor_.fault({input_.offset(), "no END frame"});
    }
    return true;
  }

 private:
  void read_frame(const Frame& frame) {
    input_.take(kFrameHeader);
    visitor_.begin_frame(frame);
    const Bytes data = input_.look(frame.count);
    visitor_.frame_data(frame, data);
    if (data.size() < frame.count) {
      visitor_.fault({frame.offset, "truncated frame: " + std::to_string(data.size()) + " of " +
                                        std::to_string(frame.count) + " bytes"});
    }
    input_.take(data.size());
    visitor_.end_frame(frame);
  }

  /// @return true when a job follows that was passed through.
  bool other_bytes() {
    const std::size_t sequence = pass_through_length(input_.look(kMostSequence));
    if (sequence != 0) {
      return true;
    }
    visitor_.fault({input_.offset(), "no frame header"});
    for (Bytes part = input_.look(ByteInput::kMostLookAhead); !part.empty();
         part = input_.look(ByteInput::kMostLookAhead)) {
      visitor_.outside(input_.offset(), part);
      input_.take(part.size());
    }
    return false;
  }

  ByteInput& input_;
  JobVisitor& visitor_;
};

}  // namespace

bool is_framed(Bytes front) {
  return parse_frame(front).has_value();
}

void read_jobs(ByteInput& input, JobVisitor& visitor) {
  if (is_framed(input.look(kFrameHeader)) && FramedReader(input, visitor).read()) {
    return;
  }
  BlockReader(input, visitor).read();
}

}  // namespace rlx::reader
