#include "rlxproof/page_settings.h"

#include <array>
#include <charconv>
#include <vector>

#include "rlx_reader/sequence.h"

namespace rlx::proof {

namespace {

using reader::Bytes;
using Field = std::optional<std::uint64_t>;

/// An offset below it is none.
constexpr std::uint64_t kLeastOffset = 1440;
/// Pitches above these, 20 and 2 inches, are no pitches.
constexpr std::uint64_t kMostLinePitch = 144000;
constexpr std::uint64_t kMostCharacterPitch = 14400;
constexpr std::uint64_t kLeastPercent = 10;
constexpr std::uint64_t kMostPercent = 400;
constexpr double kPointsPerTenth = kPointsPerInch / 10;

/// The fields of an ESC "Q" sequence; one that is missing is nothing.
class Fields {
 public:
  explicit Fields(Bytes sequence) : fields_(reader::q_fields(sequence)) {}
  Field operator[](std::size_t index) const {
    return index < fields_.size() ? fields_[index] : std::nullopt;
  }

 private:
  std::vector<Field> fields_;
};

double points(std::uint64_t units) {
  return static_cast<double>(units) * kPointsPerUnit;
}

std::optional<double> offset_of(Field units) {
  return units && *units >= kLeastOffset ? std::optional(points(*units)) : std::nullopt;
}

/// True when a number is a pitch of at most so many units.
bool is_pitch(Field units, std::uint64_t most) {
  return units && *units != 0 && *units <= most;
}

bool is_percent(Field value) {
  return value && *value >= kLeastPercent && *value <= kMostPercent;
}

/// Separator and final byte of an ESC "Q" sequence, such as "!F"; empty for others.
std::string_view ending_of(Bytes sequence) {
  const std::string_view text(reinterpret_cast<const char*>(sequence.data()), sequence.size());
  return text.size() >= 4 && text.starts_with("\x1bQ") ? text.substr(text.size() - 2)
                                                       : std::string_view();
}

void set_paper(Field series, Field size, Field orientation, PageSettings& page) {
  const Paper* const paper = series && size ? find_paper(*series, *size) : nullptr;
  page.paper = paper != nullptr ? paper : &default_paper();
  page.paper_is_unknown = paper == nullptr;
  page.landscape = orientation == 1U;
}

std::string tray_of_digit(Field digit) {
  // The printer leaves out 2.
  constexpr std::array<std::string_view, 5> kTrays{"1", "2", "", "3", "4"};
  return digit && *digit < kTrays.size() ? std::string(kTrays[*digit]) : std::string();
}

void set_duplex(const Fields& fields, PageSettings& page) {
  page.duplex = fields[0] == 2U;
  page.binding_is_upper = fields[1] == 2U;
  page.binding_margin = points(fields[2].value_or(0));
  ++page.duplex_switches;
}

double form_length_of(std::string_view tenths) {
  std::uint64_t value = 0;
  std::from_chars(tenths.data(), tenths.data() + tenths.size(), value);
  return static_cast<double>(value) * kPointsPerTenth;
}

void apply_parameter(std::string_view key, std::string_view value, PageSettings& page) {
  if (key == "FOV") {
    page.overlay = value;
  } else if (key == "OVS") {
    page.overlay_count = value;
  } else if (key == "CPS") {
    page.copies = value == "0" ? "" : value;
  } else if (key == "FRM") {
    page.form_code = value;
  } else if (key == "FFL") {
    page.form_length = form_length_of(value);
  } else if (key == "BIN") {
    page.tray = value == "A" ? "any" : value;
  }
}

bool set_reduction(const Fields& fields, TextSettings& text) {
  if (!is_percent(fields[0]) || !is_percent(fields[1])) {
    return false;
  }
  text.across = static_cast<double>(*fields[0]) / 100;
  text.down = static_cast<double>(*fields[1]) / 100;
  return true;
}

bool set_unit(const Fields& fields, TextSettings& text) {
  if (fields[0].value_or(0) == 0 || fields[1].value_or(0) == 0) {
    return false;
  }
  text.unit = kPointsPerInch * static_cast<double>(*fields[0]) / static_cast<double>(*fields[1]);
  return true;
}

bool apply_q(Bytes sequence, std::string_view ending, TextSettings& text) {
  const Fields fields(sequence);
  if (ending == "!I") {
    return set_reduction(fields, text);
  }
  if (ending == "!C") {
    return set_unit(fields, text);
  }
  if (ending != "/G" || !is_pitch(fields[1], kMostCharacterPitch)) {
    return false;
  }
  text.character_pitch = points(*fields[1]);
  return true;
}

bool set_pitch(Field units, std::uint64_t most, double& pitch) {
  if (!is_pitch(units, most)) {
    return false;
  }
  pitch = points(*units);
  return true;
}

bool set_double_pitch(Field units, TextSettings& text) {
  double pitch = 0;
  if (!set_pitch(units, kMostCharacterPitch, pitch)) {
    return false;
  }
  text.double_pitch = pitch;
  return true;
}

bool apply_field_separator(Bytes sequence, TextSettings& text) {
  const Field number = reader::numeric_form(sequence.subspan(2));
  switch (sequence[1]) {
    case '%':
      return set_pitch(number, kMostLinePitch, text.line_pitch);
    case '$':
      return set_double_pitch(number, text);
    case '&':
      text.spacing = number.value_or(text.spacing);
      return number.has_value();
    default:
      return false;
  }
}

}  // namespace

void apply_parameters(std::string_view text, PageSettings& page) {
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() == text.size() ? line.size() : line.size() + 1);
    const std::size_t equals = line.find('=');
    if (equals != std::string_view::npos) {
      apply_parameter(line.substr(0, equals), line.substr(equals + 1), page);
    }
  }
}

bool apply_page_sequence(Bytes sequence, PageSettings& page) {
  const std::string_view ending = ending_of(sequence);
  const Fields fields(sequence);
  if (ending == "!@") {
    set_paper(fields[0], fields[1], fields[3], page);
    page.tray = tray_of_digit(fields[2]);
  } else if (ending == "!F") {
    set_paper(fields[0], fields[1], fields[2], page);
  } else if (ending == "!\\") {
    page.form_length = static_cast<double>(fields[2].value_or(0)) * kPointsPerTenth;
  } else if (ending == "!W") {
    set_duplex(fields, page);
  } else if (ending == "!H") {
    page.left = offset_of(fields[0]);
    page.top = offset_of(fields[1]);
  } else {
    return false;
  }
  return true;
}

bool apply_text_sequence(Bytes sequence, TextSettings& text) {
  constexpr std::uint8_t kFs = 0x1c;
  if (sequence.size() > 2 && sequence[0] == kFs) {
    return apply_field_separator(sequence, text);
  }
  const std::string_view ending = ending_of(sequence);
  return !ending.empty() && apply_q(sequence, ending, text);
}

}  // namespace rlx::proof
