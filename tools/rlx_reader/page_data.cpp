#include "rlx_reader/page_data.h"

#include <algorithm>
#include <string_view>

#include "rlx_reader/sequence.h"

namespace rlx::reader {

namespace {

constexpr std::uint8_t kEsc = 0x1b;
constexpr std::uint8_t kFs = 0x1c;
constexpr std::uint8_t kDel = 0x7f;
/// Longest sequence; one that goes on is none.
constexpr std::size_t kMostSequence = 4096;
constexpr std::size_t kFixedRows = 24;

bool is_single(std::uint8_t byte) {
  return byte >= 0x20 && byte < kDel;
}

bool is_control(std::uint8_t byte) {
  return byte < 0x20 || byte == kDel;
}

/// Bytes of the character that a byte begins; 1 for what begins no longer one.
std::size_t character_length(std::uint8_t lead) {
  if (lead < 0xc0 || lead > 0xfd) {
    return 1;
  }
  if (lead < 0xe0) {
    return 2;
  }
  if (lead < 0xf0) {
    return 3;
  }
  if (lead < 0xf8) {
    return 4;
  }
  return lead < 0xfc ? 5 : 6;
}

bool begins_with(Bytes bytes, std::string_view front) {
  return bytes.size() >= front.size() &&
         std::equal(front.begin(), front.end(), bytes.begin(), [](char want, std::uint8_t byte) {
           return static_cast<std::uint8_t>(want) == byte;
         });
}

/// True when the bytes are the beginning of `front`, which is longer.
bool may_become(Bytes bytes, std::string_view front) {
  return bytes.size() < front.size() && begins_with(bytes, front.substr(0, bytes.size()));
}

/// A whole sequence that ends at the first byte for which `is_final` holds.
template <typename IsFinal>
std::size_t length_to(Bytes bytes, std::size_t from, IsFinal is_final) {
  const std::size_t most = std::min(bytes.size(), kMostSequence);
  for (std::size_t at = from; at < most; ++at) {
    if (is_final(bytes[at], bytes[at - 1])) {
      return at + 1;
    }
  }
  return 0;
}

/// Counts bytes at the front for which a rule holds.
template <typename Rule>
std::size_t front(Bytes bytes, Rule rule) {
  return static_cast<std::size_t>(std::find_if_not(bytes.begin(), bytes.end(), rule) -
                                  bytes.begin());
}

/// Dots of a pattern of half bytes, four dots in each character.
std::vector<std::uint8_t> dots_of_nibbles(Bytes pattern, std::size_t rows) {
  const std::size_t in_row = (rows + 3) / 4;
  const std::size_t row_bytes = (rows + 7) / 8;
  std::vector<std::uint8_t> dots(rows * row_bytes);
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t i = 0; i < in_row; ++i) {
      const unsigned nibble = pattern[row * in_row + i] & 0x0fU;
      dots[row * row_bytes + i / 2] |= static_cast<std::uint8_t>(i % 2 == 0 ? nibble << 4 : nibble);
    }
  }
  return dots;
}

}  // namespace

PageDataReader::Cut PageDataReader::cut_text(Bytes bytes) const {
  if (is_single(bytes[0])) {
    return {TokenKind::text, front(bytes, is_single)};
  }
  if (character_length(bytes[0]) == 1) {
    return {TokenKind::invalid, front(bytes, [](std::uint8_t byte) {
              return byte >= 0x80 && character_length(byte) == 1;
            })};
  }
  std::size_t length = 0;
  while (length < bytes.size() && character_length(bytes[length]) > 1 &&
         bytes.size() - length >= character_length(bytes[length])) {
    length += character_length(bytes[length]);
  }
  return {TokenKind::double_text, length};
}

/// A download of `header` bytes, a code of two and a pattern.
PageDataReader::Cut PageDataReader::cut_download(Bytes bytes, std::size_t header,
                                                 std::size_t pattern) const {
  const std::size_t length = header + 2 + pattern;
  return {TokenKind::glyph, bytes.size() < length ? 0 : length};
}

PageDataReader::Cut PageDataReader::cut_field(Bytes bytes) const {
  constexpr std::string_view kDownloadFixed =
      "\x1c"
      "20";
  constexpr std::string_view kDownload =
      "\x1c"
      "21";
  if (bytes.size() < 2) {
    return {};
  }
  if (bytes[1] == 'J' || bytes[1] == 'K') {
    return {TokenKind::sequence, 2};
  }
  if (may_become(bytes, kDownload)) {
    return {};
  }
  if (begins_with(bytes, kDownloadFixed)) {
    return cut_download(bytes, kDownloadFixed.size(), kFixedRows * kFixedRows / 4);
  }
  if (begins_with(bytes, kDownload)) {
    return cut_download(bytes, kDownload.size(), glyph_rows_ * ((glyph_rows_ + 3) / 4));
  }
  if (std::string_view("\"$%&(*0").find(static_cast<char>(bytes[1])) == std::string_view::npos) {
    return {TokenKind::unknown, 2};
  }
  const std::size_t length = length_to(
      bytes, 2, [](std::uint8_t byte, std::uint8_t) { return byte >= 'p' && byte <= 'y'; });
  return {TokenKind::sequence, length};
}

PageDataReader::Cut PageDataReader::cut_escape(Bytes bytes) const {
  constexpr std::string_view kUnencoded = "\x1bQ0 D";
  if (bytes.size() < 2) {
    return {};
  }
  switch (bytes[1]) {
    case 'c':
      return {TokenKind::sequence, 2};
    case '$':
    case '(':
      return {TokenKind::sequence, bytes.size() < 3 ? std::size_t{0} : 3};
    case kDel:
      return {TokenKind::sequence, bytes.size() < 6 ? std::size_t{0} : 6};
    case '[':
      return {TokenKind::sequence, length_to(bytes, 2, [](std::uint8_t byte, std::uint8_t) {
                return byte >= 0x40 && byte < kDel;
              })};
    case 'Q':
      break;
    default:
      return {TokenKind::unknown, 2};
  }
  if (begins_with(bytes, kUnencoded) && glyph_rows_ != 0) {
    return cut_download(bytes, kUnencoded.size(), glyph_rows_ * ((glyph_rows_ + 7) / 8));
  }
  return {TokenKind::sequence, length_to(bytes, 2, [](std::uint8_t byte, std::uint8_t before) {
            return byte >= 0x40 && (byte < kDel || (byte == kDel && before == '!'));
          })};
}

PageDataReader::Cut PageDataReader::cut_token(Bytes bytes) const {
  if (bytes[0] == kEsc || bytes[0] == kFs) {
    const Cut cut = bytes[0] == kEsc ? cut_escape(bytes) : cut_field(bytes);
    const bool too_long = cut.length == 0 && bytes.size() >= kMostSequence;
    return too_long ? Cut{TokenKind::unknown, 2} : cut;
  }
  return is_control(bytes[0]) ? Cut{TokenKind::control, 1} : cut_text(bytes);
}

void PageDataReader::note_sequence(Bytes bytes) {
  data_left_ = counted_data(bytes);
  if (bytes[0] == kFs && bytes[1] == '0') {
    glyph_rows_ = static_cast<std::size_t>(numeric_form(bytes.subspan(2)).value_or(0));
  }
}

void PageDataReader::emit_glyph(Bytes bytes, std::uint64_t offset) {
  const bool unencoded = bytes[0] == kEsc;
  const std::size_t header = unencoded ? 5 : 3;
  const bool fixed = !unencoded && bytes[2] == '0';
  const Bytes pattern = bytes.subspan(header + 2);
  glyph_.code = {bytes[header], bytes[header + 1]};
  glyph_.rows = fixed ? kFixedRows : glyph_rows_;
  if (unencoded) {
    glyph_.dots.assign(pattern.begin(), pattern.end());
  } else {
    glyph_.dots = dots_of_nibbles(pattern, glyph_.rows);
  }
  visitor_.token({TokenKind::glyph, offset, bytes, &glyph_});
}

void PageDataReader::emit(TokenKind kind, Bytes bytes, std::uint64_t offset) {
  if (kind == TokenKind::glyph) {
    emit_glyph(bytes, offset);
    return;
  }
  if (kind == TokenKind::sequence) {
    note_sequence(bytes);
  }
  visitor_.token({kind, offset, bytes, nullptr});
}

/// @return the bytes that were whole tokens.
std::size_t PageDataReader::read_some(Bytes bytes, std::uint64_t offset) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    Bytes rest = bytes.subspan(at);
    if (data_left_ != 0) {
      rest = rest.first(std::min<std::uint64_t>(rest.size(), data_left_));
      data_left_ -= rest.size();
      emit(TokenKind::data, rest, offset + at);
      at += rest.size();
      continue;
    }
    const Cut cut = cut_token(rest);
    const std::size_t length = std::min(cut.length, rest.size());
    if (cut.length == 0) {
      break;
    }
    emit(cut.kind, rest.first(length), offset + at);
    at += length;
  }
  return at;
}

void PageDataReader::feed(Bytes bytes, std::uint64_t offset) {
  // A token that waits takes what it needs from the front, a few bytes at a time.
  while (!waiting_.empty() && !bytes.empty()) {
    const std::size_t before = waiting_.size();
    const std::size_t more = std::min<std::size_t>(bytes.size(), 64);
    waiting_.insert(waiting_.end(), bytes.begin(),
                    bytes.begin() + static_cast<std::ptrdiff_t>(more));
    const std::size_t taken = read_some(waiting_, waiting_offset_);
    if (taken < before) {
      bytes = bytes.subspan(more);
      offset += more;
      continue;
    }
    waiting_.clear();
    bytes = bytes.subspan(taken - before);
    offset += taken - before;
  }
  if (bytes.empty()) {
    return;
  }
  const std::size_t taken = read_some(bytes, offset);
  waiting_.assign(bytes.begin() + static_cast<std::ptrdiff_t>(taken), bytes.end());
  waiting_offset_ = offset + taken;
}

void PageDataReader::finish() {
  if (!waiting_.empty()) {
    const bool text = waiting_[0] != kEsc && waiting_[0] != kFs;
    visitor_.token(
        {text ? TokenKind::invalid : TokenKind::unknown, waiting_offset_, waiting_, nullptr});
    waiting_.clear();
  }
  data_left_ = 0;
}

}  // namespace rlx::reader
