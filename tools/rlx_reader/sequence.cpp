#include "rlx_reader/sequence.h"

#include <algorithm>
#include <string_view>

namespace rlx::reader {

namespace {

constexpr std::uint8_t kEsc = 0x1b;
constexpr std::uint8_t kFs = 0x1c;
constexpr std::uint8_t kDel = 0x7f;
/// Digits of a count that are looked at.
constexpr std::size_t kCountDigits = 7;
constexpr std::uint64_t kTransparentData = 32;

using Fields = std::vector<std::optional<std::uint64_t>>;

std::string_view text_of(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool is_digit(char character) {
  return character >= '0' && character <= '9';
}

std::optional<std::uint64_t> decimal(std::string_view text) {
  constexpr std::size_t kMostDigits = 18;
  if (text.empty() || text.size() > kMostDigits ||
      !std::all_of(text.begin(), text.end(), is_digit)) {
    return std::nullopt;
  }
  std::uint64_t value = 0;
  for (const char digit : text) {
    value = value * 10 + static_cast<std::uint64_t>(digit - '0');
  }
  return value;
}

/// The count behind some fields, each with its ";".
/// @param parameters  with the separator behind them.
/// @param separator  ends the count; 0 when it comes before the count.
/// @param other_end  ends the count, too.
std::uint64_t count_in(std::string_view parameters, int fields_before, char separator,
                       char other_end) {
  for (; fields_before > 0; --fields_before) {
    const std::size_t end = parameters.find_first_of(std::string{';', separator});
    if (end == std::string_view::npos || parameters[end] != ';') {
      return 0;
    }
    parameters.remove_prefix(end + 1);
  }
  std::string_view digits =
      parameters.substr(0, parameters.find_first_of(std::string{separator, other_end}));
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits.size() <= kCountDigits ? decimal(digits).value_or(0) : 0;
}

std::string_view name_of_byte(std::uint8_t byte) {
  switch (byte) {
    case 0x00:
      return "NUL";
    case 0x08:
      return "BS";
    case 0x09:
      return "HT";
    case 0x0a:
      return "LF";
    case 0x0b:
      return "VT";
    case 0x0c:
      return "FF";
    case 0x0d:
      return "CR";
    case 0x0e:
      return "SO";
    case 0x0f:
      return "SI";
    case 0x11:
      return "DC1";
    case kEsc:
      return "ESC";
    case kFs:
      return "FS";
    case kDel:
      return "DEL";
    default:
      return "";
  }
}

std::string hexadecimal(std::uint8_t byte) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  return {kDigits[byte >> 4U], kDigits[byte & 0xfU]};
}

}  // namespace

std::optional<std::uint64_t> numeric_form(Bytes bytes) {
  constexpr std::size_t kMostDigits = 18;
  if (bytes.empty() || bytes.size() > kMostDigits) {
    return std::nullopt;
  }
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::uint8_t base = i + 1 == bytes.size() ? 0x70 : 0x20;
    const auto digit = static_cast<std::uint8_t>(bytes[i] - base);
    if (digit > 9) {
      return std::nullopt;
    }
    value = value * 10 + digit;
  }
  return value;
}

std::optional<std::uint64_t> decimal_number(Bytes bytes) {
  return decimal(text_of(bytes));
}

Fields q_fields(Bytes sequence) {
  Fields fields;
  const std::string_view text = text_of(sequence);
  if (text.size() < 4) {
    return fields;
  }
  std::string_view rest = text.substr(2, text.size() - 4);
  for (;;) {
    const std::size_t end = rest.find(';');
    fields.push_back(decimal(rest.substr(0, end)));
    if (end == std::string_view::npos) {
      return fields;
    }
    rest.remove_prefix(end + 1);
  }
}

std::uint64_t counted_data(Bytes sequence) {
  const std::string_view text = text_of(sequence);
  if (text.size() < 4 || !text.starts_with("\x1bQ")) {
    return 0;
  }
  const std::string_view parameters = text.substr(2, text.size() - 3);
  switch (text.back()) {
    case 'p':
      return parameters.ends_with('!') ? kTransparentData : 0;
    case 'a':
      return parameters.ends_with('!') ? count_in(parameters, 1, '!', '!') : 0;
    case kDel:
      return count_in(parameters, 1, '!', ';');
    case 'n':
      return parameters.ends_with(' ') ? count_in(parameters, 1, ' ', ' ') : 0;
    case '~':
      return parameters.ends_with('/') ? count_in(parameters, 4, '/', '/') : 0;
    default:
      return 0;
  }
}

std::string spell(Bytes bytes) {
  std::string spelled;
  bool quoted = false;
  for (const std::uint8_t byte : bytes) {
    const bool text = byte >= 0x20 && byte < kDel;
    if (text != quoted) {
      spelled += text ? (spelled.empty() ? "\"" : " \"") : "\"";
      quoted = text;
    }
    if (text) {
      spelled += byte == '"' || byte == '\\' ? "\\" : "";
      spelled += static_cast<char>(byte);
      continue;
    }
    const std::string_view name = name_of_byte(byte);
    spelled += spelled.empty() ? "" : " ";
    spelled += name.empty() ? hexadecimal(byte) : std::string(name);
  }
  return spelled + (quoted ? "\"" : "");
}

}  // namespace rlx::reader
