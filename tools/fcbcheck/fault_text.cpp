#include "fcbcheck/fault_text.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "fcbcheck/text.h"
#include "job/units.h"

namespace rlx::fcbcheck {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

std::string word_of(const FcbFault& fault) {
  return shown_word(fault.word.data());
}

std::string no_number(const FcbFault& fault) {
  return " " + word_of(fault) + " is no number";
}

std::string above(const FcbFault& fault) {
  return " " + word_of(fault) + " is above " + std::to_string(fault.limit);
}

/// "2400, 1800, 1200, 900 and 600".
std::string all_pitches() {
  std::string text;
  for (const LinePitch& pitch : kLinePitches) {
    const char* const separator = text.empty()                                 ? ""
                                  : pitch.height == kLinePitches.back().height ? " and "
                                                                               : ", ";
    text += separator + std::to_string(pitch.height);
  }
  return text;
}

bool is_keyword_in_capitals(std::string_view word) {
  const auto same = [word](std::string_view keyword) {
    return std::ranges::equal(word, keyword, [](char a, char b) { return a == b || a + ' ' == b; });
  };
  return same("lpi") || same("print");
}

/// What may be behind an unknown keyword.
std::string keyword_text(const FormFile& form) {
  const FcbFault& fault = form.report.fault;
  const std::string_view word = fault.word.data();
  const std::string text = word_of(fault) + ": unknown keyword; ";
  if (is_keyword_in_capitals(word)) {
    return text + "keywords are in lower case";
  }
  if (word.starts_with(kByteOrderMark)) {
    return text + "the file begins with a byte order mark";
  }
  return text + "lpi and print are known";
}

std::string pitch_text(const FormFile& form) {
  return "lpi: pitch " + word_of(form.report.fault) + " is none of " + all_pitches();
}

std::string too_many_text(const FormFile& form) {
  const FcbFault& fault = form.report.fault;
  return "lpi: " + std::to_string(fault.value) + " lines are more than " +
         std::to_string(fault.limit);
}

std::string below_text(const FormFile& form) {
  const FcbFault& fault = form.report.fault;
  return "print: first line " + word_of(fault) + " is below " + std::to_string(fault.limit);
}

std::string second_print_text(const FormFile& form) {
  return "print: second print line, the first is line " + std::to_string(form.report.fault.value);
}

/// How the length that a form has differs from what its print line says.
std::string length_text(const FormFile& form) {
  std::string_view given = form.report.given_length.data();
  if (given.empty()) {
    return "; without a length in the print line it has 11 inches";
  }
  given.remove_prefix(std::min(given.find_first_not_of('0'), given.size()));
  return given == std::to_string(form.report.fault.limit)
             ? ""
             : "; the length in the print line counts as that";
}

std::string tall_text(const FormFile& form) {
  const FcbFault& fault = form.report.fault;
  return "lpi: lines of " + std::to_string(fault.value) + " are taller than the form, " +
         std::to_string(fault.limit) + " (1/7200 inch" + length_text(form) + ")";
}

std::string too_few_text(const FormFile& form) {
  const FcbFault& fault = form.report.fault;
  return "print: first line " + std::to_string(fault.limit) + " is above " +
         std::to_string(fault.value) + ", the number of lines" +
         (form.report.print_line == 0 ? " (without a print line it is 4)" : "");
}

struct FaultRow {
  FcbWrong wrong;
  std::string (*text)(const FormFile&);
};

constexpr auto kFaultRows = std::to_array<FaultRow>({
    {FcbWrong::file, [](const FormFile& form) { return form.system_text; }},
    {FcbWrong::keyword, keyword_text},
    {FcbWrong::pitch_missing, [](const FormFile&) { return std::string("lpi: no pitch"); }},
    {FcbWrong::pitch, pitch_text},
    {FcbWrong::count_missing, [](const FormFile&) { return std::string("lpi: no count"); }},
    {FcbWrong::count_no_number,
     [](const FormFile& form) { return "lpi: count" + no_number(form.report.fault); }},
    {FcbWrong::count_above,
     [](const FormFile& form) { return "lpi: count" + above(form.report.fault); }},
    {FcbWrong::too_many_lines, too_many_text},
    {FcbWrong::second_print, second_print_text},
    {FcbWrong::first_line_missing,
     [](const FormFile&) { return std::string("print: no first line"); }},
    {FcbWrong::first_line_no_number,
     [](const FormFile& form) { return "print: first line" + no_number(form.report.fault); }},
    {FcbWrong::first_line_below, below_text},
    {FcbWrong::first_line_above,
     [](const FormFile& form) { return "print: first line" + above(form.report.fault); }},
    {FcbWrong::length_no_number,
     [](const FormFile& form) { return "print: length" + no_number(form.report.fault); }},
    {FcbWrong::lines_too_tall, tall_text},
    {FcbWrong::too_few_lines, too_few_text},
});
static_assert(kFaultRows.size() == static_cast<std::size_t>(FcbWrong::too_few_lines));

/// What the person who wrote the line may not see.
std::string hidden_causes(const FcbFault& fault) {
  std::string text;
  if (std::string_view(fault.word.data()).ends_with('\r')) {
    text += " (the line ends with a carriage return)";
  }
  if (fault.in_rest_of_line) {
    text += " (behind byte 511 of its line, which begins another one)";
  }
  return text;
}

}  // namespace

std::string fault_text(const FormFile& form) {
  const FcbFault& fault = form.report.fault;
  const auto* const row = std::ranges::find(kFaultRows, fault.wrong, &FaultRow::wrong);
  const std::string what = row == kFaultRows.end() ? "" : row->text(form);
  return shown_name(form.label) + ":" + std::to_string(fault.line) + ": " + what +
         hidden_causes(fault);
}

}  // namespace rlx::fcbcheck
