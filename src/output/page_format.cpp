#include "output/page_format.h"

#include <string_view>
#include <utility>

#include "job/control_bytes.h"
#include "job/units.h"
#include "support/narrowing.h"

namespace rlx {

namespace {

/// The unit of lengths, 1/7200 inch.
constexpr std::string_view kUnitSequence = "1;7200!C";
static_assert(kUnitsPerInch == 7200);
/// Smallest offset that is sent, 1/7200 inch.
constexpr std::int32_t kSmallestOffset = 1440;

/// Appends ESC "Q" and what stands behind it.
void append_q(PageSequences& out, std::string_view rest) {
  out.append(kEscQText);
  out.append(rest);
}

bool contains(std::string_view text, char character) {
  return text.find(character) != std::string_view::npos;
}

char paper_digit(std::string_view paper_size) {
  if (contains(paper_size, 'B')) {
    return '1';
  }
  return paper_size == "LTR" ? '3' : '0';
}

char size_digit(std::string_view paper_size) {
  if (contains(paper_size, '3')) {
    return '3';
  }
  return contains(paper_size, '5') ? '5' : '4';
}

char orientation_digit(std::string_view orientation) {
  return orientation.empty() || contains(orientation, 'P') ? '0' : '1';
}

bool is_numbered_tray(std::string_view tray) {
  return tray == "P1" || tray == "P2" || tray == "P3" || tray == "P4";
}

/// P1 is 0 and P2 is 1, deliberately: the printer counts its trays 0, 1, 3, 4.
char tray_digit(std::string_view tray) {
  for (const auto& [number, digit] : {std::pair{'2', '1'}, {'3', '3'}, {'4', '4'}}) {
    if (contains(tray, number)) {
      return digit;
    }
  }
  return '0';
}

/// ESC Q p;s;t;o !@ with a tray, ESC Q p;s;o !F without.
void append_paper(JobHeader& header, PageSequences& out, std::string_view tray) {
  const std::string_view size = header.conditions.paper_size.data();
  out.append(kEscQText);
  out.append(paper_digit(size));
  out.append(';');
  out.append(size_digit(size));
  out.append(';');
  if (!tray.empty()) {
    out.append(tray_digit(tray));
    out.append(';');
  }
  out.append(orientation_digit(header.conditions.orientation.data()));
  out.append(tray.empty() ? "!F" : "!@");
  header.sent.conditions.paper_size = header.conditions.paper_size;
}

void append_changed_paper(JobHeader& header, PageSequences& out) {
  const std::string_view tray = header.conditions.tray.data();
  if (header.tray_changed() && is_numbered_tray(tray)) {
    append_paper(header, out, tray);
    header.sent.conditions.tray = header.conditions.tray;
  } else if (header.tray_changed() || header.orientation_changed() || header.paper_size_changed()) {
    append_paper(header, out, "");
  }
}

void append_form_length(JobHeader& header, PageSequences& out) {
  if (header.form_length_changed()) {
    append_q(out, "10;;");
    out.append_decimal(header.job.form_length_tenths, 5);
    out.append(";!\\");
    header.sent.form_length_tenths = header.job.form_length_tenths;
  }
}

/// What selects the reduction that goes with an orientation; most have none.
std::string_view reduction(std::string_view orientation) {
  if (orientation == "PZ" || orientation == "LZ") {
    return "66;66!I";
  }
  return orientation == "LP" ? "66;80!I" : "";
}

/// The binding margin that is sent. A copy that is left as it was, and one that is set although
/// 00000 is sent, are deliberate.
std::int32_t choose_binding_margin(JobHeader& header, bool duplex) {
  if (!duplex && header.command_line.header_selector == kSimplexBindingHeader) {
    return 0;
  }
  const std::int32_t margin = header.conditions.binding_margin;
  header.sent.conditions.binding_margin = margin;
  const char edge = header.conditions.binding_edge[0];
  return edge == '\0' || edge == 'L' || edge == 'U' ? margin : 0;
}

/// ESC Q d;e;mmmmm;00000!W with duplex, or with -D; ESC Q 0;;;!W without.
void append_duplex(JobHeader& header, PageSequences& out) {
  const PrintConditions& now = header.conditions;
  const bool duplex = now.duplex[0] == 'B';
  if (duplex || header.command_line.header_selector == kSimplexBindingHeader) {
    append_q(out, duplex ? "2;" : "0;");
    out.append(now.binding_edge[0] == 'U' ? "2;" : "0;");
    out.append_decimal(choose_binding_margin(header, duplex), 5);
    out.append(";00000!W");
  } else {
    append_q(out, "0;;;!W");
  }
  header.sent.conditions.duplex = now.duplex;
  header.sent.conditions.binding_edge = now.binding_edge;
  header.sent.conditions.binding_mode = now.binding_mode;
}

void append_offset(PageSequences& out, std::int32_t offset) {
  ByteBuilder<24> digits;
  digits.append_decimal(offset);
  const std::int32_t length =
      narrow_ulong_to_int(digits.size(), "rlxinout_ctl", "dtout_pji", kKeepTruncated);
  out.append(digits.text().substr(0, static_cast<std::size_t>(length)));
}

/// ESC Q first;second;;!H. What the copies hold afterwards is deliberate: an offset that is not 0
/// but too small, and a second offset that is sent, make the sequence come again on every page.
void append_offsets(JobHeader& header, PageSequences& out) {
  const PrintConditions& now = header.conditions;
  PrintConditions& sent = header.sent.conditions;
  out.append(kEscQText);
  sent.first_offset = 0;
  if (now.first_offset >= kSmallestOffset) {
    append_offset(out, now.first_offset);
    sent.first_offset = now.first_offset;
  }
  out.append(';');
  if (now.second_offset >= kSmallestOffset) {
    append_offset(out, now.second_offset);
    sent.first_offset = now.second_offset;  // the first copy, not the second
  } else {
    sent.second_offset = 0;
  }
  out.append(";;!H");
}

bool offsets_changed(const JobHeader& header) {
  return header.conditions.first_offset != header.sent.conditions.first_offset ||
         header.conditions.second_offset != header.sent.conditions.second_offset;
}

}  // namespace

PageSequences build_page_format(JobHeader& header) {
  PageSequences out;
  const bool new_orientation = header.orientation_changed();
  if (new_orientation) {
    append_q(out, "100;100!I");
  }
  append_changed_paper(header, out);
  append_form_length(header, out);
  if (new_orientation) {
    const std::string_view selected = reduction(header.conditions.orientation.data());
    if (!selected.empty()) {
      append_q(out, selected);
    }
    header.sent.conditions.orientation = header.conditions.orientation;
  }
  return out;
}

PageSequences build_page_setup(JobHeader& header) {
  PageSequences out;
  append_q(out, kUnitSequence);
  if (header.duplex_changed()) {
    append_duplex(header, out);
  }
  if (offsets_changed(header)) {
    append_offsets(header, out);
  }
  return out;
}

}  // namespace rlx
