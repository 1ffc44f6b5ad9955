#include "driver/loop/command_parameters.h"

#include <algorithm>
#include <cstring>

#include "support/condition_columns.h"
#include "support/number.h"

namespace rlx {

namespace {

/// Values of command 479 from here on leave the line unit alone.
constexpr int kFirstOtherLineUnit = 5;
constexpr std::size_t kMaxFields492 = 5;
constexpr std::string_view kFormParameterStart = "6;";
constexpr std::size_t kFormLengthBytes = 4;

std::string_view parameters_to_end(const CommandRecord& record) {
  const auto length = static_cast<std::size_t>(record.length);
  const std::string_view bytes(reinterpret_cast<const char*>(record.bytes.data()), length);
  return bytes.substr(std::min(kFirstParameter, length));
}

std::string_view without_leading_zeros(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of('0'), text.size()));
}

/// The value of up to seven digits; -1 for any other text. No digits are 0.
int small_number(std::string_view text) {
  text = without_leading_zeros(text);
  if (text.size() > std::size_t{kMaxParameterDigits}) {
    return -1;
  }
  int value = 0;
  for (const char character : text) {
    if (!is_digit(static_cast<std::uint8_t>(character))) {
      return -1;
    }
    value = value * 10 + (character - '0');
  }
  return value;
}

/// The value of one field of command 492, -1 when it is malformed.
int field_value_492(std::string_view field) {
  const std::string_view digits = without_leading_zeros(field);
  if (digits.empty()) {
    return 0;
  }
  return digits == "1" ? 1 : -1;
}

}  // namespace

std::string_view parameter_text(const CommandRecord& record) {
  const std::string_view text = parameters_to_end(record);
  return text.substr(0, text.find('!'));
}

bool resets_line_unit(std::string_view parameter) {
  const int value = small_number(parameter);
  return value >= 0 && value < kFirstOtherLineUnit;
}

int parse_command_492(std::string_view parameter, int& state) {
  int new_state = 0;
  for (std::size_t field = 0;; ++field) {
    const std::size_t end = parameter.find(';');
    const int value = field < kMaxFields492 ? field_value_492(parameter.substr(0, end)) : -1;
    if (value < 0) {
      return -1;
    }
    new_state = field == 0 ? value : new_state;
    if (end == std::string_view::npos) {
      break;
    }
    parameter.remove_prefix(end + 1);
  }
  const bool changed = new_state != state;
  state = new_state;
  return changed ? 1 : 0;
}

bool switch_resolution(std::string_view parameter, std::int32_t resolution, JobState& job) {
  const int value = parameter.empty() ? resolution : small_number(parameter);
  int fonts = job.high_resolution_fonts;
  if (value == kHighResolution) {
    fonts = 1;
  } else if (value == kLowResolution || parameter.empty()) {
    fonts = 0;
  }
  const bool changed = fonts != job.high_resolution_fonts;
  job.high_resolution_fonts = fonts;
  return changed;
}

bool parse_form_parameter(const CommandRecord& command, int capability_g,
                          SettingsRecord& settings) {
  std::string_view text = without_leading_zeros(parameters_to_end(command));
  if (!text.starts_with(kFormParameterStart)) {
    return false;
  }
  text = text.substr(std::min(text.find('o'), text.size()));
  constexpr std::size_t kDataAt = 1 + 1 + kFormLengthBytes;  // "o", kind, length
  if (text.size() < kDataAt) {
    return false;
  }
  const auto byte_at = [text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t kind = byte_at(1);
  std::uint32_t length = 0;
  for (std::size_t i = 0; i < kFormLengthBytes; ++i) {
    length = length << 8 | byte_at(2 + i);
  }
  const bool too_long = length > static_cast<std::uint32_t>(kMaxFormData);
  if (kind < 1 || kind > 3 || (!too_long && text.size() - kDataAt < length)) {
    return false;
  }
  if (settings.form_source != kFromCommandLine) {
    settings.form_source = kind == 3 ? kFromFormKind3 : kFromForm;
  }
  settings.spacing_index = kind == 3 ? 4 : 3;
  if (kind == 2 && capability_g != 0) {
    settings.form_flag = 1;
  }
  settings.form_data_length = too_long ? 0 : static_cast<std::int32_t>(length);
  std::memcpy(settings.form_data.data(), text.data() + kDataAt,
              static_cast<std::size_t>(settings.form_data_length));
  return !too_long;
}

FormName parse_form_name(const CommandRecord& record) {
  const std::size_t layout = layout_position(record);
  const bool short_name = column_at(record, layout) == kShortNameLayout;
  const Column column = short_name ? command_columns::kShortName : command_columns::kName;
  FormName name;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < column.width; ++i) {
    const std::uint8_t byte = column_at(record, layout + column.offset + i);
    name.as_given[i] = static_cast<char>(byte);
    if (is_letter_or_digit(byte)) {
      name.letters_and_digits[kept++] = static_cast<char>(byte);
    }
  }
  return name;
}

}  // namespace rlx
