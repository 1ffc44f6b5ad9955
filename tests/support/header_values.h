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
#include "support/the_filter.h"

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

/// Puts values in force, as a print-condition command and a form do.
inline void apply(const HeaderValues& values) {
  set_text(the_filter().conditions.form_overlay, values.form_name);
  the_filter().conditions.overlay_count = values.overlays;
  the_filter().conditions.copies = values.copies;
  set_text(the_filter().conditions.form_code, values.form_code);
  set_text(the_filter().conditions.duplex, values.duplex);
  set_text(the_filter().conditions.binding_edge, values.edge);
  set_text(the_filter().conditions.binding_mode, values.mode);
  the_filter().conditions.binding_margin = values.margin;
  set_text(the_filter().conditions.orientation, values.orientation);
  set_text(the_filter().conditions.paper_size, values.paper);
  the_filter().job.form_length_tenths = values.form_length;
  set_text(the_filter().conditions.tray, values.tray);
  the_filter().conditions.first_offset = values.first_offset;
  the_filter().conditions.second_offset = values.second_offset;
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
  return output_of([] { dtout_pji(the_filter().header, kWholeHeader); });
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
