#include "rlxproof/rulers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "rlxproof/cell_painter.h"
#include "rlxproof/colours.h"

namespace rlx::proof {

namespace {

// All in points.
constexpr double kThin = 0.3;
constexpr double kDistance = 0.8;  ///< of ticks from the text
constexpr double kShortTick = 1.1;
constexpr double kMiddleTick = 2;
constexpr double kLongTick = 3.2;
constexpr double kLabelSize = 4.2;
constexpr double kLabelDistance = 4.6;
/// Ruler lines below it are too close to one another to be read.
constexpr double kLeastStep = 0.9;
constexpr std::uint64_t kNumberedLine = 5;

double tick_of_column(unsigned column) {
  if (column % 10 == 0) {
    return kLongTick;
  }
  return column % 5 == 0 ? kMiddleTick : kShortTick;
}

void paint_columns(cairo_t* cairo, Fonts& fonts, const Sheet& sheet) {
  const double edge = sheet.top - kDistance;
  for (unsigned column = 0;; ++column) {
    const double x = sheet.left + column * sheet.column_width;
    if (x > sheet.settings.width()) {
      break;
    }
    cairo_move_to(cairo, x, edge);
    cairo_line_to(cairo, x, edge - tick_of_column(column));
    if (column != 0 && column % 10 == 0) {
      show_label(cairo, fonts, std::to_string(column), kLabelSize, x - 0.8, edge - 1.6, 1);
      cairo_move_to(cairo, x, edge);
    }
  }
  cairo_stroke(cairo);
}

std::string lines_per_inch(double height) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.3g/in", kPointsPerInch / height);
  return text.data();
}

/// Labels are not higher than their line, and not wider than the room left of them.
double label_size(Fonts& fonts, const Sheet& sheet, const Line& line, const std::string& text) {
  const double room = sheet.left - kLabelDistance - 2 * kDistance;
  const double advance = fonts.single('0').advance * static_cast<double>(text.size());
  return std::min({kLabelSize, line.height, room / advance});
}

void paint_label(cairo_t* cairo, Fonts& fonts, const Sheet& sheet, const Line& line,
                 double before) {
  const bool changes = line.height != before;
  if (!changes && (line.number == 0 || line.number % kNumberedLine != 0)) {
    return;
  }
  const std::string text =
      changes ? lines_per_inch(line.height / sheet.down) : std::to_string(line.number);
  use_colour(cairo, changes ? kGrey : kFaint);
  const double size = label_size(fonts, sheet, line, text);
  show_label(cairo, fonts, text, size, sheet.left - kLabelDistance, line.top + size * 0.75 + 0.6,
             1);
  use_colour(cairo, kFaint);
}

void tick(cairo_t* cairo, const Sheet& sheet, double y, double length) {
  cairo_move_to(cairo, sheet.left - kDistance, y);
  cairo_line_to(cairo, sheet.left - kDistance - length, y);
}

/// Below the last line the ruler goes on with its pitch.
void paint_rest(cairo_t* cairo, const Sheet& sheet) {
  const Line& last = sheet.lines.back();
  double y = last.top + last.height;
  while (y < sheet.settings.height()) {
    tick(cairo, sheet, y, kShortTick);
    y += last.height;
  }
  cairo_stroke(cairo);
}

void paint_lines(cairo_t* cairo, Fonts& fonts, const Sheet& sheet) {
  double before = 0;
  double last_top = -kPointsPerInch;
  for (const Line& line : sheet.lines) {
    if (std::abs(line.top - last_top) < kLeastStep || line.height < kLeastStep) {
      continue;
    }
    paint_label(cairo, fonts, sheet, line, before);
    tick(cairo, sheet, line.top, kLongTick);
    cairo_stroke(cairo);
    before = line.height;
    last_top = line.top;
  }
  if (sheet.lines.back().height >= kLeastStep) {
    paint_rest(cairo, sheet);
  }
}

/// A small triangle where the form ends.
void paint_form_end(cairo_t* cairo, const Sheet& sheet) {
  const double y = sheet.top + sheet.settings.form_length * sheet.down;
  if (sheet.settings.form_length == 0 || y > sheet.settings.height()) {
    return;
  }
  const double x = sheet.left - kDistance;
  use_colour(cairo, kMark);
  cairo_move_to(cairo, x, y);
  cairo_line_to(cairo, x - 2 * kLongTick, y);
  cairo_stroke(cairo);
  cairo_move_to(cairo, x - kLongTick, y);
  cairo_rel_line_to(cairo, -kMiddleTick, -kLongTick);
  cairo_rel_line_to(cairo, 2 * kMiddleTick, 0);
  cairo_close_path(cairo);
  cairo_fill(cairo);
}

}  // namespace

void paint_rulers(cairo_t* cairo, Fonts& fonts, const Sheet& sheet) {
  cairo_set_line_width(cairo, kThin);
  use_colour(cairo, kFaint);
  if (sheet.column_width >= kLeastStep) {
    paint_columns(cairo, fonts, sheet);
  }
  if (!sheet.lines.empty()) {
    paint_lines(cairo, fonts, sheet);
  }
  paint_form_end(cairo, sheet);
}

}  // namespace rlx::proof
