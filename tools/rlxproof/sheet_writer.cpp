#include "rlxproof/sheet_writer.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

namespace rlx::proof {

namespace {

using reader::Bytes;
using reader::Token;
using reader::TokenKind;

constexpr std::uint8_t kBackspace = 0x08;
constexpr std::uint8_t kTab = 0x09;
constexpr std::uint8_t kLineFeed = 0x0a;
constexpr std::uint8_t kVerticalTab = 0x0b;
constexpr std::uint8_t kFormFeed = 0x0c;
constexpr std::uint8_t kReturn = 0x0d;
constexpr std::uint8_t kFs = 0x1c;
/// Columns from one tab stop to the next.
constexpr double kTabColumns = 8;
/// What edges of cells may differ by and still be the same, in points.
constexpr double kHair = 0.01;

std::string_view text_of(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool is_blank(char32_t character) {
  constexpr char32_t kNoBreakSpace = 0xa0;
  constexpr char32_t kIdeographicSpace = 0x3000;
  return character == U' ' || character == kNoBreakSpace || character == kIdeographicSpace;
}

/// The character of some bytes of UTF-8; kNoCharacter when they are none.
char32_t decode(Bytes bytes) {
  constexpr std::array<char32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
  if (bytes.size() >= kLeast.size()) {
    return kNoCharacter;
  }
  char32_t character = bytes[0] & (0x7fU >> bytes.size());
  for (const std::uint8_t byte : bytes.subspan(1)) {
    if ((byte & 0xc0U) != 0x80U) {
      return kNoCharacter;
    }
    character = character << 6U | (byte & 0x3fU);
  }
  const bool is_control = character < 0xa0;
  const bool is_surrogate = character >= 0xd800 && character < 0xe000;
  const bool is_good =
      character >= kLeast[bytes.size()] && !is_control && !is_surrogate && character <= 0x10ffff;
  return is_good ? character : kNoCharacter;
}

/// The number of a sequence ESC "[" number final; an empty one is 0.
std::optional<std::uint64_t> position_of(Bytes sequence) {
  constexpr std::size_t kMostDigits = 9;
  const std::string_view digits = text_of(sequence).substr(2, sequence.size() - 3);
  std::uint64_t value = 0;
  const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  const bool is_number = digits.empty() || end == digits.data() + digits.size();
  return is_number && digits.size() <= kMostDigits ? std::optional(value) : std::nullopt;
}

/// Sequences that every job has, or that only say which size of character follows.
bool says_nothing_more(std::string_view sequence) {
  return sequence == "\x1c(`q" || sequence == "\x1c(ap" || sequence == "\x1bQ1;!f" ||
         sequence.starts_with(
             "\x1c"
             "0") ||
         (sequence.starts_with("\x1bQ") && sequence.ends_with(" y"));
}

/// Sequences that put something on the sheet.
bool is_content(std::string_view sequence) {
  constexpr std::array<std::string_view, 6> kEndings{"!a", "!x", "!y", "!z", "!\x7f", "/~"};
  return std::any_of(kEndings.begin(), kEndings.end(),
                     [&](std::string_view ending) { return sequence.ends_with(ending); });
}

/// True when the paper holds a cell wholly.
bool is_inside(const Cell& cell, const PageSettings& page) {
  return cell.x >= -kHair && cell.top >= -kHair && cell.x + cell.width <= page.width() + kHair &&
         cell.top + cell.height <= page.height() + kHair;
}

/// True when a part of a cell is on the paper.
bool is_visible(const Cell& cell, const PageSettings& page) {
  return cell.x < page.width() && cell.top < page.height();
}

}  // namespace

// ---- Sheets and lines ---------------------------------------------------------------------------

void SheetWriter::begin_page(std::uint64_t number) {
  end_sheet();
  if (number != numbers_.page) {
    numbers_ = {number, 0};
  }
}

Side SheetWriter::next_side() {
  if (duplex_switches_ != page_.duplex_switches) {
    duplex_switches_ = page_.duplex_switches;
    next_is_back_ = false;
  }
  if (!page_.duplex) {
    return Side::only;
  }
  const Side side = next_is_back_ ? Side::back : Side::front;
  next_is_back_ = !next_is_back_;
  return side;
}

void SheetWriter::open() {
  if (is_open_) {
    return;
  }
  constexpr double kDefaultOffset = 14.4;
  is_open_ = true;
  has_content_ = false;
  sheet_.page = numbers_.page;
  sheet_.number = ++numbers_.sheets;
  sheet_.side = next_side();
  sheet_.settings = page_;
  sheet_.left = page_.left.value_or(kDefaultOffset);
  sheet_.top = page_.top.value_or(kDefaultOffset);
  sheet_.column_width = 0;
  sheet_.down = text_.down;
  sheet_.spacing = text_.spacing;
  sheet_.lines.clear();
  sheet_.cells.clear();
  sheet_.lowest = 0;
  sheet_.note = Note();
  if (page_.paper_is_unknown) {
    sheet_.note.add("paper size that is not known");
  }
  x_ = sheet_.left;
  line_number_ = 1;
  start_line(sheet_.top, line_number_);
}

void SheetWriter::feed_sheet() {
  open();
  if (sheet_.column_width == 0) {
    sheet_.column_width = text_.single_cell();
  }
  visitor_.sheet(sheet_);
  is_open_ = false;
  if (sheets_are_pages_) {
    numbers_ = {numbers_.page + 1, 0};
  }
}

void SheetWriter::end_sheet() {
  if (is_open_ && has_content_) {
    feed_sheet();
  } else if (is_open_) {
    // It never was one: the next sheet takes its number and its side.
    is_open_ = false;
    --numbers_.sheets;
    next_is_back_ = sheet_.side == Side::back;
  }
}

void SheetWriter::start_line(double top, std::uint64_t number) {
  line_top_ = top;
  line_height_ = text_.line_pitch * text_.down;
  line_has_begun_ = false;
  if (top < sheet_.settings.height()) {
    sheet_.lines.push_back({top, line_height_, number});
  }
}

/// From now on the line keeps its height.
void SheetWriter::begin_line() {
  line_has_begun_ = true;
  if (sheet_.column_width == 0) {
    sheet_.column_width = text_.single_cell();
  }
}

void SheetWriter::change_height() {
  if (!line_has_begun_) {
    line_height_ = text_.line_pitch * text_.down;
    if (line_top_ < sheet_.settings.height()) {
      sheet_.lines.back().height = line_height_;
    }
  }
}

void SheetWriter::note(const std::string& what) {
  open();
  sheet_.note.add(what);
}

// ---- Tokens -------------------------------------------------------------------------------------

void SheetWriter::token(const Token& token) {
  switch (token.kind) {
    case TokenKind::text:
      download_set_ ? write_codes(token.bytes) : write_single(token.bytes);
      break;
    case TokenKind::double_text:
      write_double(token.bytes);
      break;
    case TokenKind::invalid:
      write_invalid(token.bytes);
      break;
    case TokenKind::control:
      control(token.bytes[0]);
      break;
    case TokenKind::sequence:
      sequence(token.bytes);
      break;
    case TokenKind::data:
      break;
    case TokenKind::glyph:
      glyphs_[token.glyph->code] = std::make_shared<reader::Glyph>(*token.glyph);
      break;
    case TokenKind::unknown:
      note("unknown " + shape_of(token.bytes));
      break;
  }
}

void SheetWriter::set_lasting(Bytes sequence) {
  apply_text_sequence(sequence, text_);
  apply_text_sequence(sequence, lasting_);
}

// ---- Text ---------------------------------------------------------------------------------------

void SheetWriter::put(Cell cell) {
  if (!is_inside(cell, sheet_.settings)) {
    sheet_.note.add_character("character beyond the paper");
  }
  if (is_visible(cell, sheet_.settings)) {
    sheet_.lowest = std::max(sheet_.lowest, cell.top + cell.height);
    sheet_.cells.push_back(std::move(cell));
  }
}

void SheetWriter::place(char32_t character, bool is_double,
                        std::shared_ptr<const reader::Glyph> glyph) {
  open();
  begin_line();
  has_content_ = true;
  const double width = is_double ? text_.double_cell() : text_.single_cell();
  if (glyph != nullptr || !is_blank(character)) {
    put({x_, line_top_, width, line_height_, character, is_double, std::move(glyph)});
  }
  x_ += width;
}

void SheetWriter::write_single(Bytes bytes) {
  for (const std::uint8_t byte : bytes) {
    place(byte, false);
  }
}

/// Two bytes make a character; the first of them may have come before.
void SheetWriter::write_codes(Bytes bytes) {
  for (const std::uint8_t byte : bytes) {
    if (first_of_code_) {
      write_code(*first_of_code_, byte);
      first_of_code_.reset();
    } else {
      first_of_code_ = byte;
    }
  }
}

void SheetWriter::write_code(std::uint8_t first, std::uint8_t second) {
  const auto found = glyphs_.find({first, second});
  if (found != glyphs_.end()) {
    place(0, true, found->second);
    return;
  }
  place(kNoCharacter, true);
  sheet_.note.add_character("code without a glyph");
}

void SheetWriter::write_double(Bytes bytes) {
  while (!bytes.empty()) {
    const auto length = std::min(static_cast<std::size_t>(std::countl_one(bytes[0])), bytes.size());
    const char32_t character = decode(bytes.first(length));
    place(character, true);
    if (character == kNoCharacter) {
      sheet_.note.add_character("character that is not UTF-8");
    }
    bytes = bytes.subspan(length);
  }
}

void SheetWriter::write_invalid(Bytes bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    place(kNoCharacter, false);
  }
  sheet_.note.add_character("byte that is no character", bytes.size());
}

// ---- Movements ----------------------------------------------------------------------------------

void SheetWriter::tabulate() {
  const double stop = kTabColumns * text_.single_cell();
  const double stops = std::floor((x_ - sheet_.left + kHair) / stop);
  x_ = sheet_.left + (stops + 1) * stop;
}

void SheetWriter::control(std::uint8_t byte) {
  if (byte == kFormFeed) {
    feed_sheet();
    return;
  }
  open();
  switch (byte) {
    case kLineFeed:
    case kVerticalTab:
      x_ = sheet_.left;
      start_line(line_top_ + line_height_, ++line_number_);
      break;
    case kReturn:
      x_ = sheet_.left;
      break;
    case kBackspace:
      x_ = std::max(sheet_.left, x_ - text_.single_cell());
      break;
    case kTab:
      begin_line();
      tabulate();
      break;
    default:
      note("control byte");
      break;
  }
}

/// @return false when the sequence does not move.
bool SheetWriter::move(Bytes bytes) {
  if (bytes.size() < 3 || bytes[1] != '[') {
    return false;
  }
  const auto number = position_of(bytes);
  if (!number) {
    return false;
  }
  const double length = static_cast<double>(*number) * text_.unit;
  switch (bytes.back()) {
    case '`':
      begin_line();
      x_ = sheet_.left + length * text_.across;
      return true;
    case 'a':
      begin_line();
      x_ += length * text_.across;
      return true;
    case 'd':
      start_line(sheet_.top + length * text_.down, 0);
      return true;
    case 'e':
      start_line(line_top_ + length * text_.down, 0);
      return true;
    default:
      return false;
  }
}

bool SheetWriter::select_set(Bytes bytes) {
  const std::string_view text = text_of(bytes);
  if (text != "\x1b$@" && text != "\x1b(H" && text != "\x1b$D") {
    return false;
  }
  download_set_ = text.back() == 'D';
  first_of_code_.reset();
  return true;
}

void SheetWriter::sequence(Bytes bytes) {
  open();
  has_content_ = has_content_ || is_content(text_of(bytes));
  const double pitch = text_.line_pitch;
  const double down = text_.down;
  if (apply_text_sequence(bytes, text_)) {
    sheet_.spacing = text_.spacing;
    const bool is_pitch = bytes[0] == kFs && bytes[1] == '%';
    if (is_pitch || pitch != text_.line_pitch || down != text_.down) {
      change_height();
    }
  } else if (!move(bytes) && !select_set(bytes) && !says_nothing_more(text_of(bytes))) {
    note(shape_of(bytes));
  }
}

}  // namespace rlx::proof
