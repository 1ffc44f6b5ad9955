#include "mapping/words.h"

#include <algorithm>
#include <charconv>

namespace rlx::spooler {

namespace {

char lower(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

/// The bytes of the UTF-8 character at the front; 0 when there is none, or a control character.
std::size_t shown_character(std::string_view text) {
  const auto byte = [text](std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
  };
  const unsigned first = byte(0);
  if (first < 0x80) {
    return first >= 0x20 && first != 0x7f ? 1 : 0;
  }
  const std::size_t count = first >= 0xf0 ? 4 : (first >= 0xe0 ? 3 : 2);
  for (std::size_t at = 1; at < count; ++at) {
    if ((byte(at) & 0xc0U) != 0x80) {
      return 0;
    }
  }
  // Overlong ones, surrogates, what is beyond Unicode, and the control characters 80 to 9f.
  const bool low = (first == 0xc2 && byte(1) < 0xa0) || (first == 0xe0 && byte(1) < 0xa0) ||
                   (first == 0xf0 && byte(1) < 0x90);
  const bool high = (first == 0xed && byte(1) >= 0xa0) || (first == 0xf4 && byte(1) >= 0x90);
  return first < 0xc2 || first > 0xf4 || low || high ? 0 : count;
}

}  // namespace

bool same_word(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

std::vector<std::string> divide(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end > 0) {
      pieces.emplace_back(text.substr(0, end));
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return pieces;
}

std::optional<unsigned> whole_number(std::string_view text, unsigned most) {
  unsigned number = 0;
  const char* const end = text.data() + text.size();
  if (text.empty() || text.front() < '0' || text.front() > '9') {
    return std::nullopt;
  }
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end || number > most) {
    return std::nullopt;
  }
  return number;
}

std::string in_one_line(std::string text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t count = shown_character(std::string_view(text).substr(at));
    if (count == 0) {
      text[at] = text[at] == '\n' ? ' ' : '?';
    }
    at += std::max(count, std::size_t{1});
  }
  return text;
}

}  // namespace rlx::spooler
