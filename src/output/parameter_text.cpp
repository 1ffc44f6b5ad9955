#include "output/parameter_text.h"

#include <array>
#include <string_view>

#include "job/print_conditions.h"
#include "job/settings.h"
#include "output/sent_copies.h"

namespace rlx {

namespace {

constexpr std::string_view kFirstLine = "%%%=Pji,0101,UNIC\n";
constexpr std::string_view kEmulationLine = "EMU=RLX\n";
constexpr std::string_view kLastLine = "MAK=UNIX\n";
constexpr std::size_t kFixedBytes = kFirstLine.size() + kEmulationLine.size() + kLastLine.size();
static_assert(kFixedBytes == 35);

/// A condition value and the value its line carries.
struct ValueRow {
  std::string_view value;
  std::string_view sent_as;
};

constexpr std::array kOrientations{
    ValueRow{"P", "0"},  ValueRow{"L", "1"},  ValueRow{"PZ", "2"},
    ValueRow{"LZ", "3"}, ValueRow{"LP", "4"},
};

constexpr std::array kTrays{
    ValueRow{"P1", "1"}, ValueRow{"P2", "2"}, ValueRow{"P3", "3"},
    ValueRow{"P4", "4"}, ValueRow{"P", "A"},
};

void append_line(ParameterText& text, std::string_view key, std::string_view value) {
  text.append(key);
  text.append(value);
  text.append('\n');
}

void append_number_line(ParameterText& text, std::string_view key, std::int32_t value) {
  text.append(key);
  text.append_decimal(value);
  text.append('\n');
}

/// The line of a value that the table knows; any other value has no line.
template <std::size_t N>
void append_mapped_line(ParameterText& text, std::string_view key, std::string_view value,
                        const std::array<ValueRow, N>& rows) {
  for (const ValueRow& row : rows) {
    if (row.value == value) {
      append_line(text, key, row.sent_as);
    }
  }
}

/// The line of a text value, and its copy.
template <typename Text>
void append_changed_text(ParameterText& text, std::string_view key, const Text& value, Text& copy) {
  if (text_changed(value, copy)) {
    append_line(text, key, value.data());
    copy = value;
  }
}

void append_changed_number(ParameterText& text, std::string_view key, std::int32_t value,
                           std::int32_t& copy) {
  if (value != copy) {
    append_number_line(text, key, value);
    copy = value;
  }
}

/// FOV, OVS, CPS and FRM.
void append_form_lines(ParameterText& text) {
  const PrintConditions& now = print_conditions;
  PrintConditions& sent = sent_copies.conditions;
  append_changed_text(text, "FOV=", now.condition_form_name, sent.condition_form_name);
  if (now.condition_count_a != 0) {
    append_changed_number(text, "OVS=", now.condition_count_a, sent.condition_count_a);
  }
  append_changed_number(text, "CPS=", now.condition_count_b, sent.condition_count_b);
  append_changed_text(text, "FRM=", now.condition_code_4, sent.condition_code_4);
}

/// PSZ and FFL: a new form length means line-printer paper.
void append_paper_lines(ParameterText& text) {
  auto& paper_size = print_conditions.condition_code_3;
  const bool new_form_length = form_length_changed();
  if (new_form_length) {
    paper_size = {'L', 'P'};
  }
  if (paper_size_changed()) {
    const std::string_view size = paper_size.data();
    append_line(text, "PSZ=", size == "LTR" ? "LT" : size);
  }
  if (new_form_length) {
    append_number_line(text, "FFL=", job_settings.form_length_tenths);
  }
}

}  // namespace

ParameterText build_parameter_text() {
  ParameterText text;
  text.append(kFirstLine);
  text.append(kEmulationLine);
  if (job_settings.resolution != sent_copies.resolution) {
    append_number_line(text, "DCH=", job_settings.resolution);
  }
  append_form_lines(text);
  if (duplex_changed()) {
    append_line(text, "DUP=", print_conditions.condition_flag_3[0] == 'B' ? "1" : "0");
  }
  if (orientation_changed()) {
    append_mapped_line(text, "ORT=", print_conditions.condition_code_2.data(), kOrientations);
  }
  append_paper_lines(text);
  if (tray_changed()) {
    append_mapped_line(text, "BIN=", print_conditions.condition_code_2b.data(), kTrays);
  }
  text.append(kLastLine);
  return text;
}

bool has_parameter_lines(const ParameterText& text) {
  return text.size() > kFixedBytes;
}

}  // namespace rlx
