#include "rlx_reader/page_data.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "rlx_reader/sequence.h"
#include "rlx_reader/sequence_shape.h"

namespace rlx::reader {

namespace {

constexpr std::uint8_t kEsc = 0x1b;
constexpr std::uint8_t kFs = 0x1c;
constexpr std::uint8_t kDel = 0x7f;
constexpr std::size_t kFixedRows = 24;
constexpr std::size_t kCodeBytes = 2;

/// The fronts of the three forms of a download.
constexpr std::string_view kFixed{"\x1c\x32\x30", 3};        // FS "20"
constexpr std::string_view kNibbles{"\x1c\x32\x31", 3};      // FS "21"
constexpr std::string_view kUnencoded{"\x1b\x51\x30 D", 5};  // ESC "Q0 D"

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

/// Counts bytes at the front for which a rule holds.
template <typename Rule>
std::size_t count_front(Bytes bytes, Rule rule) {
  return static_cast<std::size_t>(std::find_if_not(bytes.begin(), bytes.end(), rule) -
                                  bytes.begin());
}

/// Bytes of the whole characters with lead bytes at the front.
std::size_t double_text_length(Bytes bytes) {
  std::size_t length = 0;
  while (length < bytes.size() && character_length(bytes[length]) > 1 &&
         bytes.size() - length >= character_length(bytes[length])) {
    length += character_length(bytes[length]);
  }
  return length;
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

/// A size of downloads that can be read, else 0.
std::size_t readable_rows(std::uint64_t rows) {
  return rows <= PageDataReader::kMostRows ? static_cast<std::size_t>(rows) : 0;
}

}  // namespace

PageDataReader::Cut PageDataReader::cut_field(Bytes bytes) const {
  if (begins_with(bytes, kFixed)) {
    return {TokenKind::glyph, kFixed.size() + kCodeBytes + kFixedRows * kFixedRows / 4};
  }
  if (begins_with(bytes, kNibbles) && glyph_rows_ != 0) {
    return {TokenKind::glyph, kNibbles.size() + kCodeBytes + glyph_rows_ * ((glyph_rows_ + 3) / 4)};
  }
  if (bytes.size() == 2 && begins_with(bytes, kFixed.substr(0, 2))) {
    return {};
  }
  const std::size_t length = sequence_length(bytes);
  const bool known = bytes.size() < 2 || length != 2 || bytes[1] == 'J' || bytes[1] == 'K';
  return {known ? TokenKind::sequence : TokenKind::unknown, length};
}

PageDataReader::Cut PageDataReader::cut_escape(Bytes bytes) const {
  if (begins_with(bytes, kUnencoded) && glyph_rows_ != 0) {
    return {TokenKind::glyph,
            kUnencoded.size() + kCodeBytes + glyph_rows_ * ((glyph_rows_ + 7) / 8)};
  }
  const std::size_t length = sequence_length(bytes);
  const bool known = bytes.size() < 2 || length != 2 || bytes[1] == 'c';
  return {known ? TokenKind::sequence : TokenKind::unknown, length};
}

/// The token that the bytes begin with. Only the length of a glyph may be more than there is.
PageDataReader::Cut PageDataReader::cut_token(Bytes bytes) const {
  if (bytes[0] == kEsc || bytes[0] == kFs) {
    const Cut cut = bytes[0] == kEsc ? cut_escape(bytes) : cut_field(bytes);
    const bool too_long = cut.length == 0 && bytes.size() >= kMostSequence;
    return too_long ? Cut{TokenKind::unknown, 2} : cut;
  }
  if (is_control(bytes[0])) {
    return {TokenKind::control, 1};
  }
  if (is_single(bytes[0])) {
    // Not the function's address: most bytes of a job come by here.
    return {TokenKind::text, count_front(bytes, [](std::uint8_t byte) { return is_single(byte); })};
  }
  if (character_length(bytes[0]) > 1) {
    return {TokenKind::double_text, double_text_length(bytes)};
  }
  return {TokenKind::invalid, count_front(bytes, [](std::uint8_t byte) {
            return byte >= 0x80 && character_length(byte) == 1;
          })};
}

void PageDataReader::note_sequence(Bytes bytes) {
  data_left_ = counted_data(bytes);
  if (bytes[0] == kFs && bytes[1] == '0') {
    glyph_rows_ = readable_rows(numeric_form(bytes.subspan(2)).value_or(0));
  }
}

void PageDataReader::emit_glyph(Bytes bytes, std::uint64_t offset) {
  const bool unencoded = bytes[0] == kEsc;
  const std::size_t code_at = unencoded ? kUnencoded.size() : kFixed.size();
  const Bytes pattern = bytes.subspan(code_at + kCodeBytes);
  glyph_.code = {bytes[code_at], bytes[code_at + 1]};
  glyph_.rows = begins_with(bytes, kFixed) ? kFixedRows : glyph_rows_;
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

/// Reads the token at the front. @return its bytes; 0 when it is not whole.
std::size_t PageDataReader::read_one(Bytes bytes, std::uint64_t offset) {
  Cut cut;
  if (data_left_ != 0) {
    cut = {TokenKind::data, std::min<std::uint64_t>(bytes.size(), data_left_)};
    data_left_ -= cut.length;
  } else {
    cut = cut_token(bytes);
  }
  if (cut.length == 0 || cut.length > bytes.size()) {
    return 0;
  }
  emit(cut.kind, bytes.first(cut.length), offset);
  return cut.length;
}

/// Reads whole tokens. @return their bytes.
std::size_t PageDataReader::read_some(Bytes bytes, std::uint64_t offset) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const std::size_t length = read_one(bytes.subspan(at), offset + at);
    if (length == 0) {
      break;
    }
    at += length;
  }
  return at;
}

void PageDataReader::wait(Bytes bytes, std::uint64_t offset) {
  waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
  waiting_offsets_.resize(waiting_.size());
  std::iota(waiting_offsets_.end() - static_cast<std::ptrdiff_t>(bytes.size()),
            waiting_offsets_.end(), offset);
}

void PageDataReader::forget_waiting(std::size_t count) {
  const auto front = static_cast<std::ptrdiff_t>(count);
  waiting_.erase(waiting_.begin(), waiting_.begin() + front);
  waiting_offsets_.erase(waiting_offsets_.begin(), waiting_offsets_.begin() + front);
}

/// Reads the whole tokens of what waits: there are some when a sequence turned out to be none.
void PageDataReader::read_waiting() {
  std::size_t at = 0;
  while (at < waiting_.size()) {
    const std::size_t length = read_one(Bytes(waiting_).subspan(at), waiting_offsets_[at]);
    if (length == 0) {
      break;
    }
    at += length;
  }
  forget_waiting(at);
}

/// Completes the token that waits. @return the bytes behind it; none when it still waits.
Bytes PageDataReader::complete_waiting(Bytes bytes, std::uint64_t offset) {
  const std::size_t before = waiting_.size();
  wait(bytes, offset);
  const std::size_t length = read_one(waiting_, waiting_offsets_[0]);
  if (length > before) {
    forget_waiting(waiting_.size());
    return bytes.subspan(length - before);
  }
  forget_waiting(length);
  if (length != 0) {
    read_waiting();
  }
  return {};
}

void PageDataReader::feed(Bytes bytes, std::uint64_t offset) {
  // More than any token needs, so that what waits is not read again and again.
  constexpr std::size_t kPortion = 4 * kMostSequence;
  while (!waiting_.empty() && !bytes.empty()) {
    const std::size_t portion = std::min(bytes.size(), kPortion);
    const std::size_t left = complete_waiting(bytes.first(portion), offset).size();
    bytes = bytes.subspan(portion - left);
    offset += portion - left;
  }
  const std::size_t taken = read_some(bytes, offset);
  wait(bytes.subspan(taken), offset + taken);
}

void PageDataReader::finish() {
  if (!waiting_.empty()) {
    const bool text = waiting_[0] != kEsc && waiting_[0] != kFs;
    visitor_.token(
        {text ? TokenKind::invalid : TokenKind::unknown, waiting_offsets_[0], waiting_, nullptr});
    forget_waiting(waiting_.size());
  }
  data_left_ = 0;
}

}  // namespace rlx::reader
