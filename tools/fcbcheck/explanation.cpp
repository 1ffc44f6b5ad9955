#include "fcbcheck/explanation.h"

#include <algorithm>
#include <string_view>

#include "fcbcheck/layout.h"
#include "fcbcheck/text.h"
#include "job/units.h"

namespace rlx::fcbcheck {

namespace {

/// "79300/7200 in = 11.01 in"
std::string both_units(std::int32_t length) {
  return std::to_string(length) + "/7200 in = " + inches(length) + " in";
}

/// The number that a length word says; -1 when it is no number that can be told. The form was
/// taken, so the reader stopped at a digit that passed the ceiling.
std::int32_t told_length(std::string_view word) {
  constexpr std::size_t kMostDigits = 9;
  const bool digits = std::ranges::all_of(word, [](char c) { return c >= '0' && c <= '9'; });
  word.remove_prefix(std::min(word.find_first_not_of('0'), word.size()));
  if (!digits || word.size() > kMostDigits) {
    return -1;
  }
  std::int32_t value = 0;
  for (const char digit : word) {
    value = value * 10 + (digit - '0');
  }
  return value;
}

/// What the limits did to the length.
std::string limits_text(std::string_view word, std::int32_t given, std::int32_t length) {
  if (word.empty()) {
    return "length not given, " + both_units(length);
  }
  if (given == length) {
    return "length " + both_units(length);
  }
  const std::string told = given >= 0 ? both_units(given) : shown_word(word);
  const bool raised = given >= 0 && given < length;
  return "length " + told + (raised ? ", raised to the shortest, " : ", cut to the longest, ") +
         both_units(length);
}

std::string environment_text(const Reading& reading) {
  const char* const file = reading.environment_found ? "environment file" : "no environment file";
  const char* const state = reading.environment.fcbprint_halfinch != 0 ? "on" : "off";
  return std::string(" (") + file + ": half inches " + state + ")";
}

std::string rounding_text(const FormFile& form, const Reading& reading) {
  const std::int32_t rounded = form.table.form_halfinch * kUnitsPerHalfInch;
  if (form.report.length % kUnitsPerInch == 0) {
    return "";
  }
  const bool half_inches = reading.environment.fcbprint_halfinch != 0;
  const bool exact = rounded == form.report.length;
  const char* const how = exact         ? ", whole half inches stay: "
                          : half_inches ? ", rounded down to the half inch: "
                                        : ", rounded up to the whole inch: ";
  return how + inches(rounded) + " in" + environment_text(reading);
}

std::string length_text(const FormFile& form, const Reading& reading) {
  const std::string_view word = form.report.given_length.data();
  const bool sent = reading.stream_variant != kPlainStream;
  return limits_text(word, told_length(word), form.report.length) + rounding_text(form, reading) +
         (sent ? "; sent to the printer" : "");
}

/// "72 lines, 11 in: 12 at 6, 36 at 8, 24 at 6 lines per inch"
std::string lines_text(const Layout& layout) {
  std::string text = counted(static_cast<std::int64_t>(layout.lines.size()), "line") + ", " +
                     inches(layout.lines_bottom()) + " in:";
  const char* separator = " ";
  for (const LineRun& run : layout.runs) {
    text += separator + std::to_string(run.count) + " at " + std::to_string(run.lines_per_inch);
    separator = ", ";
  }
  return text + " lines per inch";
}

std::string top_line_text(const Layout& layout) {
  const LineBox& line = layout.lines[static_cast<std::size_t>(layout.top_line) - 1];
  return "printing starts on line " + std::to_string(line.number) + ", " + inches(line.top) +
         " in below the top";
}

/// Empty when the last line ends with the form.
std::string rest_text(const Layout& layout) {
  const std::int32_t rest = layout.length - layout.lines_bottom();
  if (rest == 0) {
    return "";
  }
  return rest > 0 ? inches(rest) + " in below the last line are unused"
                  : "the last line ends " + inches(-rest) + " in past the rounded length";
}

}  // namespace

std::string explanation(const FormFile& form, const Reading& reading) {
  const Layout layout = lay_out(form.name, form.table);
  std::string text;
  for (const std::string& line :
       {length_text(form, reading), lines_text(layout), top_line_text(layout), rest_text(layout)}) {
    if (!line.empty()) {
      text += shown_name(form.label) + ": " + line + "\n";
    }
  }
  return text;
}

}  // namespace rlx::fcbcheck
