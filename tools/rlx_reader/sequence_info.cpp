#include <array>
#include <cstdio>
#include <string_view>

#include "rlx_reader/sequence.h"

namespace rlx::reader {

namespace {

constexpr std::uint8_t kFs = 0x1c;
/// The unit of the language, in parts of an inch.
constexpr std::uint64_t kUnitsPerInch = 7200;

using Number = std::optional<std::uint64_t>;
using Fields = std::vector<Number>;

std::string_view text_of(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A number with at most two decimals, none that are 0.
std::string short_number(double value) {
  std::array<char, 40> digits{};
  std::snprintf(digits.data(), digits.size(), "%.2f", value);
  std::string text = digits.data();
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text;
}

std::string divided(std::uint64_t number, std::uint64_t by) {
  return short_number(static_cast<double>(number) / static_cast<double>(by));
}

std::string in_units(std::uint64_t units) {
  return std::to_string(units) + "/7200 in";
}

std::string per_inch(std::uint64_t units, std::string_view what) {
  return units == 0 ? "" : ", " + divided(kUnitsPerInch, units) + std::string(what);
}

std::string line_pitch(std::uint64_t units) {
  constexpr std::uint64_t kUnitsPerPoint = 100;
  return in_units(units) + " = " + divided(units, kUnitsPerPoint) + "/72 in" +
         per_inch(units, " lines per inch");
}

std::string character_pitch(std::uint64_t units) {
  return in_units(units) + per_inch(units, " per inch");
}

Number field(const Fields& fields, std::size_t index) {
  return index < fields.size() ? fields[index] : std::nullopt;
}

/// A parameter that is a number; "?" when there is none.
Parameter number_parameter(std::string name, Number number) {
  return {std::move(name), number ? std::to_string(*number) : "?", number};
}

// ---- ESC "Q", as in page headers ----------------------------------------------------------------

std::string paper_name(Number series, Number size) {
  if (!series || !size) {
    return "?";
  }
  if (*series == 3) {
    return "letter";
  }
  std::string name(1, *series == 0 ? 'A' : 'B');
  return *series > 1 ? "?" : name.append(std::to_string(*size));
}

std::string tray_name(Number tray) {
  // The printer leaves out 2.
  constexpr std::array<std::string_view, 5> kTrays{"P1", "P2", "?", "P3", "P4"};
  return std::string(tray && *tray < kTrays.size() ? kTrays[*tray] : "?");
}

std::string orientation_name(Number orientation) {
  if (!orientation || *orientation > 1) {
    return "?";
  }
  return *orientation == 0 ? "portrait" : "landscape";
}

void describe_paper(const Fields& fields, bool with_tray, SequenceInfo& info) {
  info.name = "paper";
  info.parameters.push_back({"size", paper_name(field(fields, 0), field(fields, 1))});
  if (with_tray) {
    info.parameters.push_back({"tray", tray_name(field(fields, 2)), field(fields, 2)});
  }
  const Number orientation = field(fields, with_tray ? 3 : 2);
  info.parameters.push_back({"orientation", orientation_name(orientation), orientation});
}

void describe_form_length(const Fields& fields, SequenceInfo& info) {
  info.name = "form length";
  if (const Number tenths = field(fields, 2)) {
    info.parameters.push_back({"length", divided(*tenths, 10) + " in", tenths});
  }
}

void describe_binding(const Fields& fields, SequenceInfo& info) {
  const bool duplex = field(fields, 0) == Number(2);
  info.name = duplex ? "duplex" : "simplex";
  if (const Number edge = field(fields, 1)) {
    info.parameters.push_back({"binding edge", *edge == 2 ? "upper" : "left", edge});
  }
  if (const Number margin = field(fields, 2)) {
    info.parameters.push_back({"binding margin", in_units(*margin), margin});
  }
}

/// n / parts of an inch.
void describe_unit(const Fields& fields, SequenceInfo& info) {
  info.name = "unit";
  const Number n = field(fields, 0);
  const Number parts = field(fields, 1);
  const bool known = n && parts && *n != 0 && *parts != 0;
  info.parameters.push_back(
      {"length", known ? std::to_string(*n) + "/" + std::to_string(*parts) + " in" : "?", {}});
}

void describe_offsets(const Fields& fields, SequenceInfo& info) {
  info.name = "offsets";
  for (const std::size_t i : {0U, 1U}) {
    const Number offset = field(fields, i);
    info.parameters.push_back(
        {i == 0 ? "first" : "second", offset ? in_units(*offset) : "none", offset});
  }
}

void describe_size(const Fields& fields, SequenceInfo& info) {
  const Number width = field(fields, 0);
  const Number height = field(fields, 1);
  if (!width || !height) {
    return;
  }
  const bool larger = *width > 100 || *height > 100;
  info.name = *width == 100 && *height == 100 ? "full size" : larger ? "scale" : "reduction";
  info.parameters.push_back({"width", std::to_string(*width) + " %", width});
  info.parameters.push_back({"height", std::to_string(*height) + " %", height});
}

/// The separator is "!".
void describe_page_setting(char final, const Fields& fields, SequenceInfo& info) {
  switch (final) {
    case 'A':
      info.name = "density";
      info.parameters.push_back(number_parameter("dots per inch", field(fields, 0)));
      break;
    case 'C':
      describe_unit(fields, info);
      break;
    case '@':
      describe_paper(fields, true, info);
      break;
    case 'F':
      describe_paper(fields, false, info);
      break;
    case '\\':
      describe_form_length(fields, info);
      break;
    case 'W':
      describe_binding(fields, info);
      break;
    case 'H':
      describe_offsets(fields, info);
      break;
    case 'I':
      describe_size(fields, info);
      break;
    case 'a':
    case 'x':
    case 'y':
    case 'z':
    case '\x7f':
      info.name = "content";
      break;
    default:
      break;
  }
}

// ---- ESC "Q", as in page data -------------------------------------------------------------------

void describe_character_size(const Fields& fields, SequenceInfo& info) {
  info.name = "character size";
  const Number size = field(fields, 0);
  const bool known = size == Number(1) || size == Number(2);
  const std::string_view set = size == Number(1) ? "single-byte" : "double-byte";
  info.parameters.push_back({"set", std::string(known ? set : "?"), size});
}

void describe_slash(char final, const Fields& fields, SequenceInfo& info) {
  switch (final) {
    case 'G':
      info.name = "character pitch";
      if (const Number pitch = field(fields, 1)) {
        info.parameters.push_back({"pitch", character_pitch(*pitch), pitch});
      }
      break;
    case '`':
      info.name = "pass through";
      break;
    case '~':
      info.name = "content";
      break;
    default:
      break;
  }
}

void describe_q(Bytes sequence, SequenceInfo& info) {
  const std::string_view text = text_of(sequence);
  const char final = text.back();
  const Fields fields = q_fields(sequence);
  switch (text[text.size() - 2]) {
    case '!':
      describe_page_setting(final, fields, info);
      break;
    case '/':
      describe_slash(final, fields, info);
      break;
    case ' ':
      if (final == 'y') {
        describe_character_size(fields, info);
      } else if (final == 'n') {
        info.name = "for the operator";
      }
      break;
    default:
      break;
  }
  if (const std::uint64_t data = counted_data(sequence); data != 0) {
    info.parameters.push_back(
        {"data", std::to_string(data) + (data == 1 ? " byte" : " bytes"), data});
  }
}

// ---- FS and the others --------------------------------------------------------------------------

void describe_field(Bytes sequence, SequenceInfo& info) {
  const Number number = numeric_form(sequence.subspan(2));
  const auto parameter = [&](const char* name, auto text) {
    if (number) {
      info.parameters.push_back({name, text(*number), number});
    }
  };
  const auto plain = [](std::uint64_t value) { return std::to_string(value); };
  switch (sequence[1]) {
    case '%':
      info.name = "line pitch";
      parameter("pitch", line_pitch);
      break;
    case '$':
      info.name = "double-byte pitch";
      parameter("pitch", character_pitch);
      break;
    case '&':
      info.name = "character spacing";
      parameter("spacing", plain);
      break;
    case '0':
      info.name = "glyph size";
      parameter("rows", plain);
      break;
    default:
      break;
  }
}

void describe_position(Bytes sequence, SequenceInfo& info) {
  constexpr std::string_view kFinals = "`ade";
  constexpr std::array<std::string_view, 4> kNames{"to column position", "right by",
                                                   "to line position", "down by"};
  const std::size_t which = kFinals.find(text_of(sequence).back());
  if (which == std::string_view::npos) {
    return;
  }
  info.name = kNames[which];
  const Number units = decimal_number(sequence.subspan(2, sequence.size() - 3));
  const bool from_edge = which == 0 || which == 2;
  info.parameters.push_back(
      {from_edge ? "position" : "distance", units ? in_units(*units) : "?", units});
}

/// Sequences that are always the same.
struct WholeSequence {
  std::string_view bytes;
  std::string_view name;
};

constexpr std::array<WholeSequence, 8> kWholeSequences{{
    {"\x1b$@", "double-byte set"},
    {"\x1b(H", "single-byte set"},
    {"\x1b$D", "download set"},
    {"\x1c(`q", "standard state"},
    {"\x1c(ap", "standard state"},
    {"\x1bQ1;!f", "standard state"},
    {{"\x1b\x7f\0\0\x01\x06", 6}, "job start"},
    {{"\x1b\x7f\0\0\x01\0", 6}, "job end"},
}};

void describe_whole(Bytes sequence, SequenceInfo& info) {
  for (const WholeSequence& whole : kWholeSequences) {
    if (whole.bytes == text_of(sequence)) {
      info.name = whole.name;
    }
  }
}

}  // namespace

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
  }
  describe_whole(sequence, info);
  return info;
}

}  // namespace rlx::reader
