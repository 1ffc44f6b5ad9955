#include "rlx_reader/job_parameters.h"

#include <algorithm>
#include <array>

namespace rlx::reader {

namespace {

struct KeyRow {
  std::string_view key;
  std::string_view name;
};

constexpr std::array<KeyRow, 13> kKeys{{
    {"EMU", "fixed line"},
    {"DCH", "dots per inch"},
    {"FOV", "form overlay"},
    {"OVS", "overlay count"},
    {"CPS", "copies"},
    {"FRM", "form code"},
    {"DUP", "duplex"},
    {"ORT", "orientation"},
    {"PSZ", "paper size"},
    {"FFL", "form length"},
    {"BIN", "tray"},
    {"MAK", "fixed line"},
    {"%%%", "fixed line"},
}};

struct ValueRow {
  std::string_view key;
  std::string_view value;
  std::string_view meaning;
};

constexpr std::array<ValueRow, 14> kValues{{
    {"DUP", "0", "no"},
    {"DUP", "1", "yes"},
    {"ORT", "0", "P, portrait"},
    {"ORT", "1", "L, landscape"},
    {"ORT", "2", "PZ, portrait, reduced"},
    {"ORT", "3", "LZ, landscape, reduced"},
    {"ORT", "4", "LP, portrait, reduced"},
    {"BIN", "1", "P1"},
    {"BIN", "2", "P2"},
    {"BIN", "3", "P3"},
    {"BIN", "4", "P4"},
    {"BIN", "A", "P, any"},
    {"PSZ", "LT", "letter"},
    {"PSZ", "LP", "line-printer paper"},
}};

bool is_number(std::string_view text) {
  return !text.empty() && text.size() < 9 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// Tenths of an inch, as inches.
std::string inches(std::string_view tenths) {
  const unsigned long number = std::stoul(std::string(tenths));
  const std::string tenth = number % 10 == 0 ? "" : "." + std::to_string(number % 10);
  return std::to_string(number / 10) + tenth + " in";
}

std::string meaning_of(std::string_view key, std::string_view value) {
  if (key == "FFL" && is_number(value)) {
    return inches(value);
  }
  const auto* const row = std::find_if(kValues.begin(), kValues.end(), [&](const ValueRow& each) {
    return each.key == key && each.value == value;
  });
  return row == kValues.end() ? "" : std::string(row->meaning);
}

}  // namespace

JobParameter describe_job_parameter(std::string_view line) {
  const std::size_t end = line.find('=');
  if (end == std::string_view::npos) {
    return {"", std::string(line), "", ""};
  }
  const std::string_view key = line.substr(0, end);
  const std::string_view value = line.substr(end + 1);
  const auto* const row =
      std::find_if(kKeys.begin(), kKeys.end(), [&](const KeyRow& each) { return each.key == key; });
  return {std::string(key), std::string(value), row == kKeys.end() ? "" : std::string(row->name),
          meaning_of(key, value)};
}

}  // namespace rlx::reader
