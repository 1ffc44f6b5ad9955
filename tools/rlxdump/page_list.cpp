#include "rlxdump/page_list.h"

#include "rlxdump/shown_text.h"

namespace rlx::dump {

namespace {

using reader::TokenKind;

constexpr std::size_t kNumberWidth = 6;
constexpr std::size_t kBytesWidth = 9;
constexpr std::size_t kLinesWidth = 5;
/// Characters of the first words that are shown.
constexpr std::size_t kWordCharacters = 48;

/// The text with one blank where several stand, cut to some characters.
std::string first_words(const std::string& text) {
  std::string words;
  std::size_t characters = 0;
  for (const char c : text) {
    const bool blank = c == ' ' && (words.empty() || words.back() == ' ');
    const bool begins = (static_cast<unsigned char>(c) & 0xc0U) != 0x80;
    characters += begins && !blank ? 1 : 0;
    if (characters > kWordCharacters) {
      return words + " ...";
    }
    words += blank ? "" : std::string(1, c);
  }
  return words;
}

}  // namespace

void PageList::section(const reader::Section& section) {
  out_page();
  page_ = section.page;
}

void PageList::token(reader::Place place, const reader::Token& token) {
  if (place != reader::Place::page_data) {
    return;
  }
  bytes_ += token.bytes.size();
  switch (token.kind) {
    case TokenKind::text:
    case TokenKind::double_text:
      lines_ += line_has_text_ ? 0 : 1;
      line_has_text_ = true;
      add_text(token.bytes);
      break;
    case TokenKind::control:
      line_has_text_ = line_has_text_ && token.bytes[0] != '\n' && token.bytes[0] != '\f';
      word_ended_ = true;
      break;
    default:
      break;
  }
}

void PageList::add_text(reader::Bytes text) {
  constexpr std::size_t kEnough = 16 * kWordCharacters;
  if (words_.size() < kEnough) {
    words_ += word_ended_ ? " " : "";
    words_ += shown(text);
    word_ended_ = false;
  }
}

void PageList::out_page() {
  if (has_data_) {
    output_.put("page " + painter_.paint(Look::bold, right(std::to_string(page_), kNumberWidth)) +
                "  " + right(std::to_string(bytes_), kBytesWidth) + " bytes  " +
                right(std::to_string(lines_), kLinesWidth) + " lines  " +
                (words_.empty() ? "(no text)" : first_words(words_)) + '\n');
  }
  has_data_ = false;
  bytes_ = 0;
  lines_ = 0;
  line_has_text_ = false;
  words_.clear();
  word_ended_ = false;
}

void PageList::finish() {
  out_page();
}

}  // namespace rlx::dump
