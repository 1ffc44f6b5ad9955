#include "fcbcheck/terminal_drawing.h"

#include <langinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "fcbcheck/text.h"
#include "job/units.h"

namespace rlx::fcbcheck {

namespace {

/// The columns of a row: position, frame with number and area, lines per inch.
constexpr std::size_t kPositionColumns = 7;
constexpr std::size_t kNumberColumns = 4;
constexpr std::size_t kAreaColumns = 36;
/// Between the sides of the frame: mark, number, blank, area, blank.
constexpr std::size_t kInnerColumns = 1 + kNumberColumns + 1 + kAreaColumns + 1;
constexpr std::size_t kPitchColumns = 4;
/// A shaded row of unused paper reaches to the next multiple of this.
constexpr std::int32_t kUnusedRow = kUnitsPerHalfInch;

struct Glyphs {
  const char* horizontal;
  const char* vertical;
  const char* tick;  ///< a whole inch on the left side
  const char* top_left;
  const char* top_right;
  const char* bottom_left;
  const char* bottom_right;
  const char* shade;
  const char* mark;  ///< of the top line
};

constexpr Glyphs kUtf8Glyphs{"─", "│", "┤", "┌", "┐", "└", "┘", "░", "▶"};
constexpr Glyphs kAsciiGlyphs{"-", "|", "+", "+", "+", "+", "+", ":", ">"};

/// Parameters of the terminal's sequence for colours.
constexpr const char* kBold = "1";
constexpr const char* kDim = "2";
constexpr const char* kCyan = "36";
constexpr const char* kBoldGreen = "1;32";
constexpr const char* kRed = "31";

std::string repeated(const char* glyph, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += glyph;
  }
  return text;
}

std::string right_aligned(const std::string& text, std::size_t columns) {
  return std::string(columns - std::min(columns, text.size()), ' ') + text;
}

/// One row of the drawing.
struct Row {
  std::string position;     ///< empty for none
  bool whole_inch = false;  ///< the position is one
  bool marked = false;      ///< the top line
  bool shaded = false;      ///< nothing is printed here
  bool past_end = false;    ///< outside the form
  std::int32_t number = 0;  ///< 0: no line
  std::uint32_t per_inch = 0;
  std::string note;
};

class Drawing {
 public:
  Drawing(const Layout& layout, const DrawingStyle& style)
      : layout_(layout), style_(style), glyphs_(style.utf8 ? kUtf8Glyphs : kAsciiGlyphs) {}

  std::string draw() {
    add_heading();
    add_border(glyphs_.top_left, glyphs_.top_right, 0);
    for (const LineBox& line : layout_.lines) {
      add_line(line);
    }
    add_unused();
    end_form();
    add_legend();
    return text_;
  }

 private:
  std::string coloured(const char* colour, const std::string& text) const {
    return style_.colour ? std::string("\x1b[") + colour + "m" + text + "\x1b[0m" : text;
  }

  void add_heading() {
    text_ += coloured(kBold, shown_name(layout_.name)) + ": " + layout_.summary() + "\n\n";
    text_ += " inches   line" + std::string(kAreaColumns, ' ') + "lines/inch\n";
  }

  void add_border(const char* left, const char* right, std::int32_t position) {
    text_ += coloured(kCyan, right_aligned(inches(position), kPositionColumns)) + " " + left +
             repeated(glyphs_.horizontal, kInnerColumns) + right + "\n";
  }

  /// The position of a place where another inch has begun since the last one; else empty.
  std::string position_in_new_inch(std::int32_t position) {
    if (position / kUnitsPerInch <= last_inch_) {
      return "";
    }
    last_inch_ = position / kUnitsPerInch;
    return inches(position);
  }

  void add_line(const LineBox& line) {
    if (line.bottom() > layout_.length) {
      end_form();
    }
    const bool top = line.number == layout_.top_line;
    Row row{.position = position_in_new_inch(line.top),
            .whole_inch = line.top % kUnitsPerInch == 0 && line.top > 0,
            .marked = top,
            .shaded = line.number < layout_.top_line,
            .past_end = form_ended_,
            .number = line.number,
            .per_inch = line.lines_per_inch,
            .note = form_ended_ ? "past the end"
                    : top       ? "top line"
                                : ""};
    if (top && line.top > 0) {
      row.position = inches(line.top);
    }
    add_row(row);
  }

  /// The paper below the last line.
  void add_unused() {
    const std::int32_t from = layout_.lines_bottom();
    for (std::int32_t at = from; at < layout_.length; at = (at / kUnusedRow + 1) * kUnusedRow) {
      const bool first = at == from;
      std::string position = position_in_new_inch(at);
      add_row({.position = first ? inches(at) : position,
               .whole_inch = at % kUnitsPerInch == 0 && at > 0,
               .shaded = true,
               .note = first ? inches(layout_.length - from) + " in unused" : ""});
    }
  }

  void end_form() {
    if (!form_ended_) {
      form_ended_ = true;
      add_border(glyphs_.bottom_left, glyphs_.bottom_right, layout_.length);
    }
  }

  void add_row(const Row& row) {
    const char* const side = row.past_end ? " " : glyphs_.vertical;
    const char* const left = row.whole_inch && !row.past_end ? glyphs_.tick : side;
    text_ += coloured(kCyan, right_aligned(row.position, kPositionColumns)) + " " + left +
             inner(row) + side + end_of(row) + "\n";
  }

  std::string inner(const Row& row) const {
    const std::string number =
        right_aligned(row.number == 0 ? "" : std::to_string(row.number), kNumberColumns);
    const std::string mark_and_number = (row.marked ? glyphs_.mark : " ") + number;
    const std::string area = repeated(row.shaded ? glyphs_.shade : " ", kAreaColumns);
    return (row.marked     ? coloured(kBoldGreen, mark_and_number)
            : row.past_end ? coloured(kRed, mark_and_number)
                           : mark_and_number) +
           " " + (row.shaded ? coloured(kDim, area) : area) + " ";
  }

  /// What is right of the frame.
  std::string end_of(const Row& row) const {
    const std::string pitch = row.per_inch == 0 ? "" : std::to_string(row.per_inch);
    if (row.note.empty()) {
      return pitch.empty() ? "" : right_aligned(pitch, kPitchColumns);
    }
    const char* const colour = row.past_end ? kRed : row.marked ? kBoldGreen : kDim;
    return right_aligned(pitch, kPitchColumns) + "  " + coloured(colour, row.note);
  }

  void add_legend() {
    const bool above = layout_.top_line > 1;
    const bool below = layout_.lines_bottom() < layout_.length;
    if (above || below) {
      text_ += "\n" + std::string(kPositionColumns + 1, ' ') +
               coloured(kDim, repeated(glyphs_.shade, 3)) +
               " nothing is printed here: " + (above ? "above the top line" : "") +
               (above && below ? ", " : "") + (below ? "below the last line" : "") + "\n";
    }
  }

  const Layout& layout_;
  const DrawingStyle& style_;
  const Glyphs& glyphs_;
  std::string text_;
  std::int32_t last_inch_ = 0;
  bool form_ended_ = false;
};

bool is_set(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool terminal_is_dumb() {
  const char* const terminal = std::getenv("TERM");
  return terminal == nullptr || std::strcmp(terminal, "dumb") == 0;
}

}  // namespace

DrawingStyle style_of_standard_output() {
  return {.utf8 = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0,
          .colour = isatty(STDOUT_FILENO) != 0 && !is_set("NO_COLOR") && !terminal_is_dumb()};
}

std::string terminal_drawing(const Layout& layout, const DrawingStyle& style) {
  return Drawing(layout, style).draw();
}

}  // namespace rlx::fcbcheck
