#include "output/page_format.h"

#include <string_view>
#include <utility>

#include "job/print_conditions.h"
#include "job/settings.h"
#include "output/sent_copies.h"
#include "support/error_log.h"

namespace rlx {

namespace {

constexpr std::string_view kQ = "\x1bQ";
/// Smallest offset that is sent, 1/7200 inch.
constexpr std::int32_t kSmallestOffset = 1440;
/// `header_selector` with option -D.
constexpr int kSimplexBindingSelector = 8;

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
void append_paper(PageSequences& out, std::string_view tray) {
  const std::string_view size = print_conditions.condition_code_3.data();
  out.append(kQ);
  out.append(paper_digit(size));
  out.append(';');
  out.append(size_digit(size));
  out.append(';');
  if (!tray.empty()) {
    out.append(tray_digit(tray));
    out.append(';');
  }
  out.append(orientation_digit(print_conditions.condition_code_2.data()));
  out.append(tray.empty() ? "!F" : "!@");
  sent_copies.conditions.condition_code_3 = print_conditions.condition_code_3;
}

void append_changed_paper(PageSequences& out) {
  const std::string_view tray = print_conditions.condition_code_2b.data();
  if (tray_changed() && is_numbered_tray(tray)) {
    append_paper(out, tray);
    sent_copies.conditions.condition_code_2b = print_conditions.condition_code_2b;
  } else if (tray_changed() || orientation_changed() || paper_size_changed()) {
    append_paper(out, "");
  }
}

void append_form_length(PageSequences& out) {
  if (form_length_changed()) {
    out.append("\x1bQ10;;");
    out.append_decimal(job_settings.form_length_tenths, 5);
    out.append(";!\\");
    sent_copies.form_length_tenths = job_settings.form_length_tenths;
  }
}

/// Reduction that goes with an orientation; most have none.
std::string_view reduction(std::string_view orientation) {
  if (orientation == "PZ" || orientation == "LZ") {
    return "\x1bQ66;66!I";
  }
  return orientation == "LP" ? "\x1bQ66;80!I" : "";
}

/// The binding margin that is sent. A copy that is left as it was, and one that is set although
/// 00000 is sent, are deliberate.
std::int32_t choose_binding_margin(bool duplex) {
  if (!duplex && job_settings.header_selector == kSimplexBindingSelector) {
    return 0;
  }
  const std::int32_t margin = print_conditions.condition_value_3;
  sent_copies.conditions.condition_value_3 = margin;
  const char edge = print_conditions.condition_flag_1[0];
  return edge == '\0' || edge == 'L' || edge == 'U' ? margin : 0;
}

/// ESC Q d;e;mmmmm;00000!W with duplex, or with -D; ESC Q 0;;;!W without.
void append_duplex(PageSequences& out) {
  const PrintConditions& now = print_conditions;
  const bool duplex = now.condition_flag_3[0] == 'B';
  if (duplex || job_settings.header_selector == kSimplexBindingSelector) {
    out.append(kQ);
    out.append(duplex ? "2;" : "0;");
    out.append(now.condition_flag_1[0] == 'U' ? "2;" : "0;");
    out.append_decimal(choose_binding_margin(duplex), 5);
    out.append(";00000!W");
  } else {
    out.append("\x1bQ0;;;!W");
  }
  sent_copies.conditions.condition_flag_3 = now.condition_flag_3;
  sent_copies.conditions.condition_flag_1 = now.condition_flag_1;
  sent_copies.conditions.condition_flag_2 = now.condition_flag_2;
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
void append_offsets(PageSequences& out) {
  const PrintConditions& now = print_conditions;
  PrintConditions& sent = sent_copies.conditions;
  out.append(kQ);
  sent.condition_value_1 = 0;
  if (now.condition_value_1 >= kSmallestOffset) {
    append_offset(out, now.condition_value_1);
    sent.condition_value_1 = now.condition_value_1;
  }
  out.append(';');
  if (now.condition_value_2 >= kSmallestOffset) {
    append_offset(out, now.condition_value_2);
    sent.condition_value_1 = now.condition_value_2;  // the first copy, not the second
  } else {
    sent.condition_value_2 = 0;
  }
  out.append(";;!H");
}

bool offsets_changed() {
  return print_conditions.condition_value_1 != sent_copies.conditions.condition_value_1 ||
         print_conditions.condition_value_2 != sent_copies.conditions.condition_value_2;
}

}  // namespace

PageSequences build_page_format() {
  PageSequences out;
  const bool new_orientation = orientation_changed();
  if (new_orientation) {
    out.append("\x1bQ100;100!I");
  }
  append_changed_paper(out);
  append_form_length(out);
  if (new_orientation) {
    out.append(reduction(print_conditions.condition_code_2.data()));
    sent_copies.conditions.condition_code_2 = print_conditions.condition_code_2;
  }
  return out;
}

PageSequences build_page_setup() {
  PageSequences out;
  out.append("\x1bQ1;7200!C");
  if (duplex_changed()) {
    append_duplex(out);
  }
  if (offsets_changed()) {
    append_offsets(out);
  }
  return out;
}

}  // namespace rlx
