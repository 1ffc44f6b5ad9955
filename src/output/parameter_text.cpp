#include "output/parameter_text.h"

#include <array>
#include <string_view>

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

constexpr auto kOrientations = std::to_array({
    ValueRow{"P", "0"},
    ValueRow{"L", "1"},
    ValueRow{"PZ", "2"},
    ValueRow{"LZ", "3"},
    ValueRow{"LP", "4"},
});

constexpr auto kTrays = std::to_array({
    ValueRow{"P1", "1"},
    ValueRow{"P2", "2"},
    ValueRow{"P3", "3"},
    ValueRow{"P4", "4"},
    ValueRow{"P", "A"},
});

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
void append_form_lines(JobHeader& header, ParameterText& text) {
  const PrintConditions& now = header.conditions;
  PrintConditions& sent = header.sent.conditions;
  append_changed_text(text, "FOV=", now.form_overlay, sent.form_overlay);
  if (now.overlay_count != 0) {
    append_changed_number(text, "OVS=", now.overlay_count, sent.overlay_count);
  }
  append_changed_number(text, "CPS=", now.copies, sent.copies);
  append_changed_text(text, "FRM=", now.form_code, sent.form_code);
}

/// PSZ and FFL: a new form length means line-printer paper.
void append_paper_lines(JobHeader& header, ParameterText& text) {
  auto& paper_size = header.conditions.paper_size;
  const bool new_form_length = header.form_length_changed();
  if (new_form_length) {
    paper_size = {'L', 'P'};
  }
  if (header.paper_size_changed()) {
    const std::string_view size = paper_size.data();
    append_line(text, "PSZ=", size == "LTR" ? "LT" : size);
  }
  if (new_form_length) {
    append_number_line(text, "FFL=", header.job.form_length_tenths);
  }
}

}  // namespace

ParameterText build_parameter_text(JobHeader& header) {
  ParameterText text;
  text.append(kFirstLine);
  text.append(kEmulationLine);
  if (header.command_line.resolution != header.sent.resolution) {
    append_number_line(text, "DCH=", header.command_line.resolution);
  }
  append_form_lines(header, text);
  if (header.duplex_changed()) {
    append_line(text, "DUP=", header.conditions.duplex[0] == 'B' ? "1" : "0");
  }
  if (header.orientation_changed()) {
    append_mapped_line(text, "ORT=", header.conditions.orientation.data(), kOrientations);
  }
  append_paper_lines(header, text);
  if (header.tray_changed()) {
    append_mapped_line(text, "BIN=", header.conditions.tray.data(), kTrays);
  }
  text.append(kLastLine);
  return text;
}

bool has_parameter_lines(const ParameterText& text) {
  return text.size() > kFixedBytes;
}

}  // namespace rlx
