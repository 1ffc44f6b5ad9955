#include "rlx_reader/block_end.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "rlx_reader/page_data.h"
#include "rlx_reader/sequence_shape.h"

namespace rlx::reader {

namespace {

constexpr std::uint8_t kEsc = 0x1b;
constexpr std::uint8_t kFormFeed = 0x0c;
/// A header's bytes: 0 stands for a digit, a for either ending.
constexpr std::string_view kPattern{"\x1bQ0;0000000000/a"};

bool fits(std::uint8_t byte, char pattern) {
  switch (pattern) {
    case '0':
      return byte >= '0' && byte <= '9';
    case 'a':
      return byte == 'a' || byte == '`';
    default:
      return byte == static_cast<std::uint8_t>(pattern);
  }
}

/// Bytes at the front that are those of a header.
std::size_t fitting(Bytes bytes) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < std::min(bytes.size(), kPattern.size()); ++i) {
    count += fits(bytes[i], kPattern[i]) ? 1U : 0U;
  }
  return count;
}

/// Notes whether there is anything but sequences and their data.
class OnlySequences : public TokenVisitor {
 public:
  void token(const Token& token) override {
    seen = true;
    only = only && (token.kind == TokenKind::sequence || token.kind == TokenKind::data);
  }

  bool seen = false;
  bool only = true;
};

bool is_whole_sequences(Bytes bytes) {
  OnlySequences sequences;
  PageDataReader reader(sequences);
  reader.feed(bytes, 0);
  return reader.is_whole() && sequences.seen && sequences.only;
}

bool ends_with(Bytes bytes, std::string_view end) {
  return bytes.size() >= end.size() &&
         std::memcmp(bytes.last(end.size()).data(), end.data(), end.size()) == 0;
}

/// What the block is for when its payload is `payload`.
BlockUse use_with(const BlockHeader& header, Bytes payload) {
  BlockHeader right = header;
  right.count = count_for(header.ending, payload.size());
  return use_of(right, payload);
}

/// True when a payload is whole by what it holds, and what follows up to the next header is none of
/// it.
bool is_whole(const BlockHeader& header, Bytes payload, Bytes behind) {
  switch (use_with(header, payload)) {
    case BlockUse::job_end:
    case BlockUse::final_form_feed:
      return true;
    case BlockUse::job_start:
      return payload.size() == kJobStartBytes;
    case BlockUse::job_parameters:
      return ends_with(payload, "MAK=UNIX\n") ||
             (ends_with(payload, "\n") && !ends_with(behind, "\n"));
    case BlockUse::first_data:
    case BlockUse::further_data:
      return !payload.empty() && payload.back() == kFormFeed && behind.back() != kFormFeed;
    case BlockUse::unknown:
      return false;
    default:
      return is_whole_sequences(payload) && !is_whole_sequences(behind);
  }
}

/// Payloads that are always the same, so that they tell by themselves where they end.
bool is_constant(BlockUse use) {
  return use == BlockUse::job_end || use == BlockUse::final_form_feed;
}

/// True when at the end of a payload something stands that may.
bool ends_well(Bytes behind, bool to_the_end) {
  if (behind.empty()) {
    return to_the_end;
  }
  return parse_header(behind) || pass_through_length(behind) != 0 || looks_like_header(behind) ||
         (to_the_end && is_cut_header(behind));
}

/// True when blocks follow one another, each in its right place, as far as can be seen: what only
/// looks like a header, in somebody's data, is seldom followed by others.
bool are_blocks(View view) {
  Bytes rest = view.bytes;
  while (const auto header = parse_header(rest)) {
    const Bytes behind = rest.subspan(kHeaderBytes);
    const auto payload = header->payload();
    if (!payload) {
      return false;
    }
    if (*payload > behind.size()) {
      return !view.to_the_end;
    }
    rest = behind.subspan(*payload);
  }
  const bool out_of_view = !view.to_the_end && rest.size() < kMostSequence;
  return out_of_view || ends_well(rest, view.to_the_end);
}

BlockEnd wrong_count(const BlockHeader& header, std::uint64_t real) {
  const std::string count = "wrong count " + std::to_string(header.count) + ": the block has " +
                            std::to_string(real) + " bytes of payload";
  const auto declared = header.payload();
  const std::string meaning =
      declared ? ", the count says " + std::to_string(*declared) : ", such a count is at least 12";
  return {real, false, false, count + meaning};
}

BlockEnd truncated(std::uint64_t declared, std::uint64_t real) {
  return {real, false, true, truncated_text(real, declared)};
}

/// The payload, or what follows it, reaches out of the view.
BlockEnd find_far_end(const BlockHeader& header, View view, std::uint64_t declared) {
  const std::size_t next = find_header(view.bytes);
  const bool is_next = next < std::min<std::uint64_t>(view.bytes.size(), declared);
  if (view.to_the_end) {
    const bool wrong = is_next || is_constant(use_with(header, view.bytes));
    return wrong ? wrong_count(header, next) : truncated(declared, next);
  }
  const bool wrong = is_next && are_blocks({view.bytes.subspan(next), view.to_the_end});
  return wrong ? wrong_count(header, next) : BlockEnd{declared, true, false, ""};
}

}  // namespace

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

bool looks_like_header(Bytes bytes) {
  constexpr std::size_t kDamaged = 2;
  return bytes.size() >= kHeaderBytes && fitting(bytes) >= kHeaderBytes - kDamaged;
}

bool is_cut_header(Bytes bytes) {
  return !bytes.empty() && bytes.size() < kHeaderBytes && fitting(bytes) == bytes.size();
}

std::string truncated_text(std::uint64_t there, std::uint64_t declared) {
  return "truncated block: " + std::to_string(there) + " of " + std::to_string(declared) +
         " bytes of payload";
}

BlockEnd find_block_end(const BlockHeader& header, View view) {
  const std::uint64_t declared = header.payload().value_or(0);
  const std::size_t unsure = view.to_the_end ? 0 : std::min(kMostSequence, view.bytes.size());
  const std::uint64_t seen = view.bytes.size() - unsure;
  if (declared > seen) {
    return find_far_end(header, view, declared);
  }
  const Bytes behind = view.bytes.subspan(declared);
  if (header.payload() && ends_well(behind, view.to_the_end)) {
    const bool empty = declared == 0;
    return {declared, true, false, empty ? "block without payload" : ""};
  }
  const std::size_t next = find_header(view.bytes);
  const bool right = next > declared && (is_whole(header, view.bytes.first(declared),
                                                  view.bytes.subspan(declared, next - declared)) ||
                                         (next == view.bytes.size() && !view.to_the_end));
  return header.payload() && right ? BlockEnd{declared, true, false, ""}
                                   : wrong_count(header, next);
}

}  // namespace rlx::reader
