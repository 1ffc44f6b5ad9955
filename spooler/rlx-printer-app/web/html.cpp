#include "rlx-printer-app/web/html.h"

#include <array>
#include <cstdint>

namespace rlx::printer_app {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// First bytes of characters, the characters' lengths, and which second bytes may follow.
struct Lead {
  std::uint8_t first, last;
  std::size_t length;
  std::uint8_t second_least, second_most;
};
constexpr std::array<Lead, 9> kLeads{{
    {0x00, 0x7F, 1, 0, 0},
    {0xC2, 0xDF, 2, 0x80, 0xBF},
    {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F},
    {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF},
    {0xF4, 0xF4, 4, 0x80, 0x8F},
}};

bool is_allowed(std::uint8_t byte) {
  return (byte >= ' ' && byte != 0x7F) || byte == '\t' || byte == '\n' || byte == '\r';
}

bool continues(std::string_view text, const Lead& lead) {
  if (text.size() < lead.length) {
    return false;
  }
  for (std::size_t i = 1; i < lead.length; ++i) {
    const auto byte = static_cast<std::uint8_t>(text[i]);
    const std::uint8_t least = i == 1 ? lead.second_least : 0x80;
    const std::uint8_t most = i == 1 ? lead.second_most : 0xBF;
    if (byte < least || byte > most) {
      return false;
    }
  }
  return true;
}

/// Bytes of the character at the front; 0 when there is none that may be shown.
std::size_t character_length(std::string_view text) {
  const auto byte = static_cast<std::uint8_t>(text.front());
  for (const Lead& lead : kLeads) {
    if (byte >= lead.first && byte <= lead.last) {
      return is_allowed(byte) && continues(text, lead) ? lead.length : 0;
    }
  }
  return 0;
}

std::string_view entity(char byte) {
  switch (byte) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 8);
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    const std::string_view special = entity(text.front());
    if (length == 0) {
      result += kReplacement;
    } else if (!special.empty()) {
      result += special;
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

bool is_plain_text(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

std::string url_encoded(std::string_view text) {
  constexpr std::string_view kHexDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain = "-._~";
  std::string result;
  for (const char character : text) {
    const auto byte = static_cast<std::uint8_t>(character);
    const bool is_plain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                          (byte >= 'a' && byte <= 'z') ||
                          kPlain.find(character) != std::string_view::npos;
    if (is_plain) {
      result += character;
    } else {
      result += {'%', kHexDigits[byte >> 4U], kHexDigits[byte & 15U]};
    }
  }
  return result;
}

std::string filled(std::string_view pattern, std::initializer_list<std::string> values) {
  std::string result;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const bool is_place = pattern.size() - i >= 3 && pattern[i] == '{' && pattern[i + 2] == '}' &&
                          pattern[i + 1] >= '0' && pattern[i + 1] <= '9';
    const std::size_t which = is_place ? static_cast<std::size_t>(pattern[i + 1] - '0') : 0;
    if (is_place && which < values.size()) {
      result += values.begin()[which];
      i += 2;
    } else {
      result += pattern[i];
    }
  }
  return result;
}

std::string with_line_feeds(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') {
      result += text[i];
    }
  }
  return result;
}

}  // namespace rlx::printer_app
