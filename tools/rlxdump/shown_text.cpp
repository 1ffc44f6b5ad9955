#include "rlxdump/shown_text.h"

#include <string_view>

namespace rlx::dump {

namespace {

using reader::Bytes;

constexpr std::string_view kDigits = "0123456789abcdef";

/// Length of the UTF-8 character at the front that can be seen; 0 when there is none.
std::size_t visible_length(Bytes text) {
  const std::uint8_t lead = text[0];
  if (lead < 0x80) {
    return lead >= 0x20 && lead < 0x7f ? 1 : 0;
  }
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || text.size() < length) {
    return 0;
  }
  std::uint32_t code = lead & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((text[i] & 0xc0U) != 0x80) {
      return 0;
    }
    code = code << 6U | (text[i] & 0x3fU);
  }
  constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xd800 && code < 0xe000;
  const bool control = code < 0xa0 || code == 0x2028 || code == 0x2029 || code == 0xfeff;
  // They change the direction of what follows.
  const bool direction = (code >= 0x200b && code <= 0x200f) || (code >= 0x202a && code <= 0x202e) ||
                         (code >= 0x2066 && code <= 0x2069);
  const bool none = code < kLeast[length] || code > 0x10ffff || surrogate;
  return none || control || direction ? 0 : length;
}

void append_hexadecimal(std::string& text, std::uint8_t byte) {
  text += kDigits[byte >> 4U];
  text += kDigits[byte & 0xfU];
}

/// True for characters that stand for themselves wherever they are.
bool is_plain(std::uint8_t byte) {
  return byte >= 0x20 && byte < 0x7f && byte != '"' && byte != '\\';
}

std::string visible(Bytes text, bool escaped) {
  std::string all;
  all.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t front = at;
    while (at < text.size() && is_plain(text[at])) {
      ++at;
    }
    all.append(reinterpret_cast<const char*>(text.data()) + front, at - front);
    if (at == text.size()) {
      break;
    }
    const std::size_t length = visible_length(text.subspan(at));
    if (length == 0) {
      all += "\\x";
      append_hexadecimal(all, text[at]);
      ++at;
      continue;
    }
    all += escaped && (text[at] == '"' || text[at] == '\\') ? "\\" : "";
    all.append(reinterpret_cast<const char*>(text.data()) + at, length);
    at += length;
  }
  return all;
}

}  // namespace

std::string quoted(Bytes text) {
  return '"' + visible(text, true) + '"';
}

std::string shown(Bytes text) {
  return visible(text, false);
}

std::string hexadecimal(Bytes bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += text.empty() ? "" : " ";
    append_hexadecimal(text, byte);
  }
  return text;
}

}  // namespace rlx::dump
