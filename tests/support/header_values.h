#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "job/print_conditions.h"
#include "job/settings.h"
#include "output/job_header.h"
#include "support/printer_blocks.h"

namespace rlx::testing {

/// What the job header takes its values from, as one piece of data.
struct HeaderValues {
  std::string_view form_name{};
  std::int32_t overlays = 0;
  std::int32_t copies = 0;
  std::string_view form_code{};
  std::string_view duplex{};
  std::string_view edge{};
  std::string_view mode{};
  std::int32_t margin = 0;
  std::string_view orientation{};
  std::string_view paper{};
  std::int32_t form_length = 0;
  std::string_view tray{};
  std::int32_t first_offset = 0;
  std::int32_t second_offset = 0;
};

template <std::size_t Room>
void set_text(std::array<char, Room>& field, std::string_view text) {
  field.fill('\0');
  text.copy(field.data(), Room - 1);
}

/// Puts values in force, as a print-condition record and a form do.
inline void apply(const HeaderValues& values) {
  set_text(print_conditions.condition_form_name, values.form_name);
  print_conditions.condition_count_a = values.overlays;
  print_conditions.condition_count_b = values.copies;
  set_text(print_conditions.condition_code_4, values.form_code);
  set_text(print_conditions.condition_flag_3, values.duplex);
  set_text(print_conditions.condition_flag_1, values.edge);
  set_text(print_conditions.condition_flag_2, values.mode);
  print_conditions.condition_value_3 = values.margin;
  set_text(print_conditions.condition_code_2, values.orientation);
  set_text(print_conditions.condition_code_3, values.paper);
  job_settings.form_length_tenths = values.form_length;
  set_text(print_conditions.condition_code_2b, values.tray);
  print_conditions.condition_value_1 = values.first_offset;
  print_conditions.condition_value_2 = values.second_offset;
}

/// What stands in front of one page, without the job start and the density: the lines of the
/// parameter text, the page format sequences, and the page setup sequences behind the unit.
struct PageHeader {
  std::string lines{};
  std::string format{};
  std::string setup{};
};

inline std::string header_bytes(const PageHeader& page) {
  return (page.lines.empty() ? "" : parameter_block(page.lines)) +
         (page.format.empty() ? "" : block('7', page.format)) + block('9', kUnit + page.setup);
}

inline std::string next_header() {
  return output_of([] { EXPECT_EQ(dtout_pji(kWholeHeader), 0); });
}

/// Values on four pages: given, unchanged, changed, changed back.
struct HeaderRow {
  HeaderValues values;
  HeaderValues changed;
  PageHeader first;
  PageHeader unchanged;
  PageHeader after_change;
  PageHeader changed_back;
};

/// The usual row: nothing comes again, and changing back sends what was sent first.
inline HeaderRow sent_once(const HeaderValues& values, const HeaderValues& changed,
                           const PageHeader& first, const PageHeader& after_change) {
  return {values, changed, first, {}, after_change, first};
}

/// Sends a row behind a first page without conditions.
inline void expect_pages(const HeaderRow& row) {
  next_header();
  apply(row.values);
  EXPECT_EQ(next_header(), header_bytes(row.first)) << "first";
  EXPECT_EQ(next_header(), header_bytes(row.unchanged)) << "unchanged";
  apply(row.changed);
  EXPECT_EQ(next_header(), header_bytes(row.after_change)) << "changed";
  apply(row.values);
  EXPECT_EQ(next_header(), header_bytes(row.changed_back)) << "changed back";
}

}  // namespace rlx::testing
