#include "rlx_reader/block.h"

#include <algorithm>
#include <array>

namespace rlx::reader {

namespace {

constexpr std::uint8_t kEsc = 0x1b;
constexpr std::uint8_t kFormFeed = 0x0c;
constexpr std::size_t kCountAt = 4;
constexpr std::size_t kEndingAt = 14;
/// The ten digits and the two bytes of the ending, which a "/a" counts too.
constexpr std::uint64_t kCountedHeader = 12;

constexpr std::array<std::uint8_t, kJobStartBytes> kJobStart{kEsc, 0x7f, 0, 0, 1, 6};
constexpr std::array<std::uint8_t, 8> kJobEnd{kEsc, 'c', kEsc, 0x7f, 0, 0, 1, 0};

bool is_digit(std::uint8_t byte) {
  return byte >= '0' && byte <= '9';
}

bool equal(Bytes left, Bytes right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

/// Kind 0 with "/a".
BlockUse use_of_kind_0(std::uint64_t payload, Bytes front) {
  if (payload == kJobEnd.size() &&
      equal(front.first(std::min(front.size(), kJobEnd.size())), kJobEnd)) {
    return BlockUse::job_end;
  }
  const bool form_feed = payload == 1 && !front.empty() && front[0] == kFormFeed;
  return form_feed ? BlockUse::final_form_feed : BlockUse::further_data;
}

}  // namespace

std::optional<std::uint64_t> BlockHeader::payload() const {
  if (ending == Ending::parameters) {
    return count;
  }
  return count < kCountedHeader ? std::nullopt : std::optional(count - kCountedHeader);
}

std::uint64_t count_for(Ending ending, std::uint64_t payload) {
  return ending == Ending::data ? payload + kCountedHeader : payload;
}

std::string header_bytes(const BlockHeader& header) {
  std::string digits = std::to_string(header.count);
  digits.insert(0, kEndingAt - kCountAt - digits.size(), '0');
  return std::string("\x1bQ") + header.kind + ';' + digits +
         (header.ending == Ending::data ? "/a" : "/`");
}

std::optional<BlockHeader> parse_header(Bytes bytes) {
  if (bytes.size() < kHeaderBytes || bytes[0] != kEsc || bytes[1] != 'Q' || !is_digit(bytes[2]) ||
      bytes[3] != ';' || bytes[kEndingAt] != '/') {
    return std::nullopt;
  }
  BlockHeader header;
  header.kind = static_cast<char>(bytes[2]);
  for (const std::uint8_t byte : bytes.subspan(kCountAt, kEndingAt - kCountAt)) {
    if (!is_digit(byte)) {
      return std::nullopt;
    }
    header.count = header.count * 10 + (byte - std::uint64_t{'0'});
  }
  switch (bytes[kEndingAt + 1]) {
    case 'a':
      header.ending = Ending::data;
      return header;
    case '`':
      header.ending = Ending::parameters;
      // Only job parameters end so; another kind with it is a sequence that passes a job through.
      return header.kind == '0' ? std::optional(header) : std::nullopt;
    default:
      return std::nullopt;
  }
}

std::string_view name_of(BlockUse use) {
  constexpr std::array<std::string_view, 11> kNames{
      "job parameters", "job start",        "density",   "page format", "page setup", "first data",
      "further data",   "carried settings", "form feed", "job end",     "unknown"};
  return kNames[static_cast<std::size_t>(use)];
}

BlockUse use_of(const BlockHeader& header, Bytes front) {
  if (header.ending == Ending::parameters) {
    return BlockUse::job_parameters;
  }
  switch (header.kind) {
    case '0':
      return use_of_kind_0(header.payload().value_or(0), front);
    case '2':
      return BlockUse::first_data;
    case '6':
      return BlockUse::carried_settings;
    case '7':
      return BlockUse::page_format;
    case '8':
      return BlockUse::density;
    case '9':
      return front.size() >= kJobStart.size() && equal(front.first(kJobStart.size()), kJobStart)
                 ? BlockUse::job_start
                 : BlockUse::page_setup;
    default:
      return BlockUse::unknown;
  }
}

}  // namespace rlx::reader
