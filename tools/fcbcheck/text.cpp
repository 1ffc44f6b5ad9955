#include "fcbcheck/text.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "job/units.h"

namespace rlx::fcbcheck {

namespace {

constexpr std::size_t kMaxShownBytes = 40;

std::string without_zeros(std::string number) {
  if (number.find('.') != std::string::npos) {
    number.erase(number.find_last_not_of('0') + 1);
  }
  if (number.ends_with('.')) {
    number.pop_back();
  }
  return number;
}

std::string with_decimals(std::int32_t units, int decimals) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals,
                static_cast<double>(units) / kUnitsPerInch);
  return without_zeros(text.data());
}

std::string shown_byte(char byte) {
  if (byte >= '!' && byte <= '~') {
    return {byte};
  }
  if (byte == '\r') {
    return "\\r";
  }
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "\\x%02x",
                static_cast<unsigned>(static_cast<unsigned char>(byte)));
  return text.data();
}

bool is_control(char byte) {
  return static_cast<unsigned char>(byte) < ' ' || byte == '\x7f';
}

std::uint32_t byte_at(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
}

/// The bytes of a character of UTF-8, as its first one says; 0 when that begins none.
std::size_t announced_bytes(std::uint32_t first) {
  if (first < 0x80) {
    return 1;
  }
  if (first < 0xc2 || first > 0xf4) {
    return 0;
  }
  return first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

/// The character that so many bytes of UTF-8 make; 0 when one of them is no continuation.
std::uint32_t decoded(std::string_view text, std::size_t count) {
  std::uint32_t code = byte_at(text, 0);
  if (count > 1) {
    code &= 0x7fU >> count;
  }
  for (std::size_t i = 1; i < count; ++i) {
    const std::uint32_t next = byte_at(text, i);
    if ((next & 0xc0U) != 0x80U) {
      return 0;
    }
    code = code << 6U | (next & 0x3fU);
  }
  return code;
}

/// True for what XML takes, told by the shortest form of UTF-8.
bool is_xml_character(std::uint32_t code, std::size_t count) {
  constexpr std::array<std::uint32_t, 5> kSmallest{0, 0x20, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xd800 && code <= 0xdfff;
  return code >= kSmallest[count] && code <= 0x10ffff && !surrogate && code != 0x7f &&
         code != 0xfffe && code != 0xffff;
}

/// Takes a character off the front of a text, as XML shows it.
std::string next_xml_character(std::string_view& text) {
  const std::size_t count = announced_bytes(byte_at(text, 0));
  const std::uint32_t code = count == 0 ? 0 : decoded(text, count);
  if (count == 0 || !is_xml_character(code, count)) {
    text.remove_prefix(1);
    return "?";
  }
  std::string character(text.substr(0, count));
  text.remove_prefix(count);
  switch (code) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return character;
  }
}

}  // namespace

std::string inches(std::int32_t units) {
  constexpr std::int64_t kUnits = kUnitsPerInch;
  const std::int64_t hundredths = (units * std::int64_t{100} + kUnits / 2) / kUnits;
  const bool looks_even = hundredths % 50 == 0 && hundredths * kUnits != units * std::int64_t{100};
  const bool eighths = units % (kUnitsPerInch / 8) == 0;
  return with_decimals(units, looks_even ? 4 : eighths ? 3 : 2);
}

std::string counted(std::int64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string shown_word(std::string_view word) {
  std::string text;
  for (const char byte : word.substr(0, kMaxShownBytes)) {
    text += shown_byte(byte);
  }
  return word.size() > kMaxShownBytes ? text + "..." : text;
}

std::string shown_name(std::string_view name) {
  std::string text(name);
  std::ranges::replace_if(text, is_control, '?');
  return text;
}

std::string xml_text(std::string_view text, std::size_t max_characters) {
  std::string xml;
  for (std::size_t count = 0; !text.empty(); ++count) {
    if (count == max_characters) {
      return xml + "\xe2\x80\xa6";
    }
    xml += next_xml_character(text);
  }
  return xml;
}

}  // namespace rlx::fcbcheck
