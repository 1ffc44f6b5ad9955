#include "rlx_reader/sequence.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace rlx::reader {

namespace {

constexpr std::uint8_t kEsc = 0x1b;
constexpr std::uint8_t kFs = 0x1c;
constexpr std::uint8_t kDel = 0x7f;
/// The unit of the language, in parts of an inch.
constexpr std::uint64_t kUnitsPerInch = 7200;
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

/// A number with at most two decimals, none that are 0.
std::string short_number(double value) {
  std::array<char, 32> digits{};
  std::snprintf(digits.data(), digits.size(), "%.2f", value);
  std::string text = digits.data();
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text;
}

std::string in_units(std::uint64_t units) {
  return std::to_string(units) + "/7200 in";
}

std::string line_pitch(std::uint64_t units) {
  std::string text =
      in_units(units) + " = " + short_number(static_cast<double>(units) / 100) + "/72 in";
  if (units != 0) {
    text += ", " + short_number(static_cast<double>(kUnitsPerInch) / static_cast<double>(units)) +
            " lines per inch";
  }
  return text;
}

std::string character_pitch(std::uint64_t units) {
  std::string text = in_units(units);
  if (units != 0) {
    text += ", " + short_number(static_cast<double>(kUnitsPerInch) / static_cast<double>(units)) +
            " per inch";
  }
  return text;
}

std::string number_or(std::optional<std::uint64_t> number, std::string_view other) {
  return number ? std::to_string(*number) : std::string(other);
}

std::optional<std::uint64_t> field(const Fields& fields, std::size_t index) {
  return index < fields.size() ? fields[index] : std::nullopt;
}

// ---- ESC "Q" ------------------------------------------------------------------------------------

std::string paper_name(std::optional<std::uint64_t> series, std::optional<std::uint64_t> size) {
  if (!series || !size) {
    return "?";
  }
  switch (*series) {
    case 0:
      return "A" + std::to_string(*size);
    case 1:
      return "B" + std::to_string(*size);
    case 3:
      return "letter";
    default:
      return "?";
  }
}

std::string tray_name(std::optional<std::uint64_t> tray) {
  // The printer leaves out 2.
  constexpr std::array<std::string_view, 4> kTrays{"1", "2", "?", "3"};
  if (!tray || *tray > 4) {
    return "?";
  }
  return *tray == 4 ? "4" : std::string(kTrays[static_cast<std::size_t>(*tray)]);
}

std::string orientation_name(std::optional<std::uint64_t> orientation) {
  return orientation == 0U ? "portrait" : orientation == 1U ? "landscape" : "?";
}

void describe_page(char final, const Fields& fields, SequenceInfo& info) {
  auto& list = info.parameters;
  switch (final) {
    case 'A':
      info.name = "density";
      list.push_back({"dots per inch", number_or(field(fields, 0), "?")});
      break;
    case 'C':
      info.name = "unit";
      list.push_back({"parts of an inch", number_or(field(fields, 1), "?")});
      break;
    case '@':
      info.name = "paper";
      list.push_back({"size", paper_name(field(fields, 0), field(fields, 1))});
      list.push_back({"tray", tray_name(field(fields, 2))});
      list.push_back({"orientation", orientation_name(field(fields, 3))});
      break;
    case 'F':
      info.name = "paper";
      list.push_back({"size", paper_name(field(fields, 0), field(fields, 1))});
      list.push_back({"orientation", orientation_name(field(fields, 2))});
      break;
    case '\\':
      info.name = "form length";
      if (const auto tenths = field(fields, 2)) {
        list.push_back({"length", short_number(static_cast<double>(*tenths) / 10) + " in"});
      }
      break;
    case 'W':
      info.name = field(fields, 0) == 2U ? "duplex" : "simplex";
      if (const auto edge = field(fields, 1)) {
        list.push_back({"binding edge", *edge == 2 ? "upper" : "left"});
      }
      if (const auto margin = field(fields, 2)) {
        list.push_back({"binding margin", in_units(*margin)});
      }
      break;
    case 'H':
      info.name = "offsets";
      list.push_back({"first", field(fields, 0) ? in_units(*field(fields, 0)) : "none"});
      list.push_back({"second", field(fields, 1) ? in_units(*field(fields, 1)) : "none"});
      break;
    case 'I':
      info.name = "reduction";
      list.push_back(
          {"percent", number_or(field(fields, 0), "?") + " x " + number_or(field(fields, 1), "?")});
      break;
    case 'R':
      info.name = "form data";
      break;
    default:
      break;
  }
}

void describe_q(Bytes sequence, SequenceInfo& info) {
  const std::string_view text = text_of(sequence);
  const char final = text.back();
  const char separator = text[text.size() - 2];
  const Fields fields = q_fields(sequence);
  if (separator == '!') {
    describe_page(final, fields, info);
  } else if (separator == ' ' && final == 'y') {
    info.name = "character size";
    const auto size = field(fields, 0);
    info.parameters.push_back({"set", size == 1U   ? "single-byte"
                                      : size == 2U ? "double-byte"
                                                   : "?"});
  } else if (separator == '/' && final == 'G') {
    info.name = "character pitch";
    if (const auto pitch = field(fields, 1)) {
      info.parameters.push_back({"pitch", character_pitch(*pitch)});
    }
  } else if (separator == '/' && final == '`') {
    info.name = "pass through";
  }
  if (const std::uint64_t data = counted_data(sequence); data != 0) {
    info.parameters.push_back({"data", std::to_string(data) + " bytes"});
  }
}

// ---- FS and the others
// ---------------------------------------------------------------------------

void describe_field(Bytes sequence, SequenceInfo& info) {
  const auto number = numeric_form(sequence.subspan(2));
  switch (sequence[1]) {
    case '%':
      info.name = "line pitch";
      if (number) {
        info.parameters.push_back({"pitch", line_pitch(*number)});
      }
      break;
    case '$':
      info.name = "double-byte pitch";
      if (number) {
        info.parameters.push_back({"pitch", character_pitch(*number)});
      }
      break;
    case '&':
      info.name = "character spacing";
      if (number) {
        info.parameters.push_back({"spacing", std::to_string(*number)});
      }
      break;
    case '0':
      info.name = "glyph size";
      if (number) {
        info.parameters.push_back({"rows", std::to_string(*number)});
      }
      break;
    default:
      break;
  }
}

void describe_position(Bytes sequence, SequenceInfo& info) {
  constexpr std::string_view kFinals = "`ade";
  constexpr std::array<std::string_view, 4> kNames{"to column position", "right by",
                                                   "to line position", "down by"};
  const std::string_view text = text_of(sequence);
  const std::size_t which = kFinals.find(text.back());
  if (which == std::string_view::npos) {
    return;
  }
  info.name = kNames[which];
  const auto units = decimal(text.substr(2, text.size() - 3));
  info.parameters.push_back({"units", units ? in_units(*units) : "?"});
}

void describe_set(Bytes sequence, SequenceInfo& info) {
  const std::string_view text = text_of(sequence);
  if (text == "\x1b$@") {
    info.name = "double-byte set";
  } else if (text == "\x1b(H") {
    info.name = "single-byte set";
  } else if (text == "\x1b$D") {
    info.name = "download set";
  }
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
  if (text.size() < 4 || text[0] != '\x1b' || text[1] != 'Q') {
    return 0;
  }
  const char final = text.back();
  const char separator = text[text.size() - 2];
  if (separator == '!' && final == 'p') {
    return kTransparentData;
  }
  const bool field_count = (separator == '!' && (final == 'a' || final == '\x7f')) ||
                           (separator == ' ' && (final == 'n' || final == 'o'));
  const bool fifth = separator == '/' && final == '~';
  if (!field_count && !fifth) {
    return 0;
  }
  // The count stands behind the first ";", or behind the fourth one.
  std::size_t at = 1;
  for (int i = fifth ? 4 : 1; i > 0; --i) {
    at = text.find(';', at + 1);
    if (at == std::string_view::npos) {
      return 0;
    }
  }
  std::string_view digits = text.substr(at + 1);
  const std::size_t end =
      std::min(digits.find(separator), final == '\x7f' ? digits.find(';') : std::string_view::npos);
  digits = digits.substr(0, end);
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits.size() <= kCountDigits ? decimal(digits).value_or(0) : 0;
}

SequenceInfo describe_sequence(Bytes sequence) {
  SequenceInfo info{spell(sequence), "passed on", {}};
  if (sequence.size() < 2) {
    return info;
  }
  if (sequence[0] == kFs) {
    describe_field(sequence, info);
  } else if (sequence[1] == '[') {
    describe_position(sequence, info);
  } else if (sequence[1] == 'Q' && sequence.size() >= 4) {
    describe_q(sequence, info);
  } else {
    describe_set(sequence, info);
  }
  return info;
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
