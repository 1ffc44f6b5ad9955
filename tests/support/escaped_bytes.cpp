#include "support/escaped_bytes.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace rlx::testing {

namespace {

struct NamedByte {
  char byte;
  char letter;
};

constexpr std::array<NamedByte, 6> kNamedBytes{{
    {'\n', 'n'},
    {'\r', 'r'},
    {'\f', 'f'},
    {'\x1b', 'e'},
    {'\x1c', 's'},
    {'\\', '\\'},
}};

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::size_t kBlockHeaderBytes = 16;

bool is_decimal(char c) {
  return c >= '0' && c <= '9';
}

std::string hex_escape(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return {'\\', 'x', kHexDigits[value >> 4U], kHexDigits[value & 0xfU]};
}

void append_escaped(std::string& text, char byte) {
  const auto named = std::ranges::find(kNamedBytes, byte, &NamedByte::byte);
  if (named != kNamedBytes.end()) {
    text += {'\\', named->letter};
  } else if (byte >= ' ' && byte <= '~') {
    text += byte;
  } else {
    text += hex_escape(byte);
  }
}

/// Ends the line that is being written, if there is one.
void break_line(std::string& text) {
  if (text.empty() || text.back() == '\n') {
    return;
  }
  if (text.back() == ' ') {
    text.pop_back();
    text += hex_escape(' ');
  }
  text += '\n';
}

/// The byte of \xHH whose digits begin at `position`, which is moved behind them.
std::optional<char> decode_hex(std::string_view text, std::size_t& position) {
  unsigned value = 0;
  for (int digit = 0; digit < 2; ++digit, ++position) {
    const std::size_t nibble =
        position < text.size() ? kHexDigits.find(text[position]) : std::string_view::npos;
    if (nibble == std::string_view::npos) {
      return std::nullopt;
    }
    value = value * 16 + static_cast<unsigned>(nibble);
  }
  return static_cast<char>(static_cast<unsigned char>(value));
}

/// The byte of the escape whose letter stands at `position`, which is moved behind the escape.
std::optional<char> decode_escape(std::string_view text, std::size_t& position) {
  if (position == text.size()) {
    return std::nullopt;
  }
  const char letter = text[position++];
  if (letter == 'x') {
    return decode_hex(text, position);
  }
  const auto named = std::ranges::find(kNamedBytes, letter, &NamedByte::letter);
  return named == kNamedBytes.end() ? std::nullopt : std::optional<char>(named->byte);
}

std::string side_of_difference(std::string_view name, std::string_view bytes, std::size_t offset) {
  constexpr std::size_t kBefore = 40;
  constexpr std::size_t kAfter = 60;
  const std::size_t start = offset > kBefore ? offset - kBefore : 0;
  std::string line = "  " + std::string(name) + ": " + (start > 0 ? "..." : "");
  line += encode_escaped_line(bytes.substr(start, offset - start)) + " >>> ";
  if (offset == bytes.size()) {
    return line + "(end)\n";
  }
  return line + encode_escaped_line(bytes.substr(offset, kAfter)) +
         (bytes.size() - offset > kAfter ? "...\n" : "\n");
}

}  // namespace

std::string encode_escaped(std::string_view bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (starts_with_block_header(bytes.substr(i))) {
      break_line(text);
    }
    append_escaped(text, bytes[i]);
    if (bytes[i] == '\n' || bytes[i] == '\f') {
      break_line(text);
    }
  }
  break_line(text);
  return text;
}

std::string encode_escaped_line(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    append_escaped(text, byte);
  }
  return text;
}

std::optional<std::string> decode_escaped(std::string_view text) {
  std::string bytes;
  std::size_t position = 0;
  while (position < text.size()) {
    const char character = text[position++];
    if (character == '\\') {
      const std::optional<char> byte = decode_escape(text, position);
      if (!byte) {
        return std::nullopt;
      }
      bytes += *byte;
    } else if (character >= ' ' && character <= '~') {
      bytes += character;
    } else if (character != '\n') {
      return std::nullopt;
    }
  }
  return bytes;
}

bool starts_with_block_header(std::string_view bytes) {
  return bytes.size() >= kBlockHeaderBytes && bytes.starts_with("\x1bQ") && is_decimal(bytes[2]) &&
         bytes[3] == ';' && std::ranges::all_of(bytes.substr(4, 10), is_decimal) &&
         bytes[14] == '/' && (bytes[15] == 'a' || bytes[15] == '`');
}

bool starts_with_job_parameter_block(std::string_view bytes) {
  return starts_with_block_header(bytes) && bytes[2] == '0' && bytes[15] == '`';
}

std::string describe_difference(std::string_view expected, std::string_view actual) {
  if (expected == actual) {
    return "";
  }
  const auto offset =
      static_cast<std::size_t>(std::ranges::mismatch(expected, actual).in1 - expected.begin());
  return "differs at byte " + std::to_string(offset) + " (" + std::to_string(expected.size()) +
         " bytes expected, " + std::to_string(actual.size()) + " written)\n" +
         side_of_difference("expected", expected, offset) +
         side_of_difference("written ", actual, offset);
}

}  // namespace rlx::testing
