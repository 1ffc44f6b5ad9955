#include "fcbcheck/svg_picture.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "fcbcheck/text.h"
#include "job/units.h"

namespace rlx::fcbcheck {

namespace {

// All positions in the picture are whole numbers of 1/96 inch: every pitch is a multiple of that.
constexpr std::int32_t kUnitsPerPixel = kUnitsPerInch / 96;
static_assert(std::ranges::all_of(kLinePitches, [](const LinePitch& pitch) {
  return pitch.height % kUnitsPerPixel == 0;
}));

constexpr int kPictureWidth = 760;
constexpr int kRulerX = 70;
constexpr int kPaperX = 84;
constexpr int kPaperWidth = 440;
constexpr int kStripWidth = 28;  ///< with the holes, on both sides of the paper
constexpr int kAreaX = kPaperX + kStripWidth;
constexpr int kAreaWidth = kPaperWidth - 2 * kStripWidth;
constexpr int kNumberX = kAreaX + 26;  ///< right end of the line numbers
constexpr int kPitchX = kAreaX + kAreaWidth - 8;
constexpr int kRunX = kPaperX + kPaperWidth + 14;
constexpr int kPaperY = 104;
constexpr int kLegendHeight = 58;
constexpr int kRunTextHeight = 15;
constexpr std::size_t kMaxNameCharacters = 48;

int pixels(std::int32_t units) {
  return units / kUnitsPerPixel;
}

int y_of(std::int32_t position) {
  return kPaperY + pixels(position);
}

std::string attribute(const char* name, int value) {
  return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
}

std::string rectangle(int x, int y, int width, int height, const std::string& style) {
  return "<rect" + attribute("x", x) + attribute("y", y) + attribute("width", width) +
         attribute("height", height) + " " + style + "/>\n";
}

std::string segment(int x1, int y1, int x2, int y2, const std::string& style) {
  return "<line" + attribute("x1", x1) + attribute("y1", y1) + attribute("x2", x2) +
         attribute("y2", y2) + " " + style + "/>\n";
}

/// @param text  as it stands in XML.
std::string label(int x, int y, const std::string& style, const std::string& text) {
  return "<text" + attribute("x", x) + attribute("y", y) + " " + style + ">" + text + "</text>\n";
}

constexpr const char* kStyles =
    "<style>\n"
    "text { font-family: 'DejaVu Sans', Verdana, Helvetica, Arial, sans-serif; fill: #37474f; }\n"
    ".name { font-size: 22px; font-weight: bold; fill: #1b2b34; }\n"
    ".summary { font-size: 13px; }\n"
    ".inch { font-size: 12px; text-anchor: end; }\n"
    ".run { font-size: 12px; }\n"
    ".legend { font-size: 11px; }\n"
    ".number { text-anchor: end; }\n"
    ".pitch { text-anchor: end; fill: #78909c; }\n"
    ".middle { text-anchor: middle; }\n"
    ".top { fill: #1b7f3b; font-weight: bold; }\n"
    ".past { fill: #b3261e; }\n"
    "</style>\n";

/// The hatching of what is not printed on.
constexpr const char* kHatching =
    R"(<defs><pattern id="hatch" width="6" height="6" patternUnits="userSpaceOnUse")"
    R"svg( patternTransform="rotate(45)"><rect width="6" height="6" fill="#eceff1"/>)svg"
    R"(<rect width="2" height="6" fill="#d5dce0"/></pattern></defs>)"
    "\n";

constexpr const char* kHatched = R"svg(fill="url(#hatch)" stroke="#c3ced3" stroke-width="0.5")svg";
constexpr const char* kOddLineStyle = R"(fill="#ffffff" stroke="#c9d6d0" stroke-width="0.5")";
constexpr const char* kEvenLineStyle = R"(fill="#f3f8f5" stroke="#c9d6d0" stroke-width="0.5")";
constexpr const char* kTopLineStyle = R"(fill="#dff3e4" stroke="#1b7f3b" stroke-width="1.5")";
constexpr const char* kPastEndStyle =
    R"(fill="#fdecea" stroke="#b3261e" stroke-width="0.75" stroke-dasharray="4 2")";
constexpr const char* kRulerStyle = R"(stroke="#546e7a" stroke-width="1")";
constexpr const char* kRunStyle = R"(stroke="#90a4ae" stroke-width="1")";

/// The size of the text in a line: smaller where lines are narrow. Tenths of a pixel.
int text_tenths(const LineBox& line) {
  return std::min(100, pixels(line.height) * 10 - 15);
}

std::string sized(const char* text_class, int tenths) {
  return std::string("class=\"") + text_class + "\" font-size=\"" + std::to_string(tenths / 10) +
         "." + std::to_string(tenths % 10) + "px\"";
}

/// The base line of text in the middle of a line.
int base_line(const LineBox& line) {
  return y_of(line.top) + (pixels(line.height) * 10 + text_tenths(line) * 7 / 10 + 5) / 20;
}

class Picture {
 public:
  explicit Picture(const Layout& layout)
      : layout_(layout),
        form_y_(y_of(layout.length)),
        lowest_(std::max(form_y_, y_of(layout.lines_bottom()))) {}

  std::string draw() {
    add_paper();
    add_ruler();
    for (const LineBox& line : layout_.lines) {
      add_line(line);
    }
    add_top_line();
    add_unused();
    add_runs();
    add_legend();
    return head() + body_ + "</svg>\n";
  }

 private:
  /// Written last: its height is what the body took.
  std::string head() const {
    const std::string name = xml_text(layout_.name, kMaxNameCharacters);
    const int height = lowest_ + kLegendHeight;
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\"" +
           attribute("width", kPictureWidth) + attribute("height", height) + " viewBox=\"0 0 " +
           std::to_string(kPictureWidth) + " " + std::to_string(height) +
           "\" role=\"img\">\n<title>Form " + name + "</title>\n" + kStyles + kHatching +
           rectangle(0, 0, kPictureWidth, height, "fill=\"#ffffff\"") +
           label(kPaperX, 44, "class=\"name\"", name) +
           label(kPaperX, 68, "class=\"summary\"", layout_.summary());
  }

  void add_paper() {
    const int height = form_y_ - kPaperY;
    body_ += rectangle(kPaperX + 3, kPaperY + 3, kPaperWidth, height, "fill=\"#cfd8dc\"");
    body_ += rectangle(kPaperX, kPaperY, kPaperWidth, height,
                       R"(fill="#fbfcfc" stroke="#78909c" stroke-width="1")");
    for (const int x : {kPaperX + kStripWidth / 2, kPaperX + kPaperWidth - kStripWidth / 2}) {
      for (int y = kPaperY + 24; y < form_y_; y += 48) {
        body_ += "<circle" + attribute("cx", x) + attribute("cy", y) +
                 " r=\"5\" fill=\"#ffffff\" stroke=\"#b0bec5\"/>\n";
      }
    }
  }

  /// Ticks each quarter of an inch, numbers at whole inches.
  void add_ruler() {
    constexpr std::int32_t kQuarter = kUnitsPerInch / 4;
    body_ += segment(kRulerX, kPaperY, kRulerX, form_y_, kRulerStyle);
    body_ += label(kRulerX, kPaperY - 14, "class=\"inch\"", "inches");
    for (std::int32_t at = 0; at <= layout_.length; at += kQuarter) {
      const bool whole = at % kUnitsPerInch == 0;
      const int length = whole ? 14 : at % kUnitsPerHalfInch == 0 ? 9 : 5;
      body_ += segment(kRulerX - length, y_of(at), kRulerX, y_of(at), kRulerStyle);
      if (whole || at == layout_.length) {
        body_ += label(kRulerX - 18, y_of(at) + 4, "class=\"inch\"", inches(at));
      }
    }
  }

  void add_line(const LineBox& line) {
    const bool past = line.bottom() > layout_.length;
    const char* const paper = line.number % 2 == 0 ? kEvenLineStyle : kOddLineStyle;
    const bool above = line.number < layout_.top_line;
    add_box(line, past ? kPastEndStyle : above ? kHatched : paper);
    add_numbers(line, past ? "number past" : "number");
  }

  void add_box(const LineBox& line, const std::string& style) {
    body_ += rectangle(kAreaX, y_of(line.top), kAreaWidth, pixels(line.height), style);
  }

  void add_numbers(const LineBox& line, const char* number_class) {
    const int tenths = text_tenths(line);
    body_ +=
        label(kNumberX, base_line(line), sized(number_class, tenths), std::to_string(line.number));
    body_ += label(kPitchX, base_line(line), sized("pitch", tenths),
                   std::to_string(line.lines_per_inch));
  }

  /// Over the other lines, so that its frame is whole.
  void add_top_line() {
    const LineBox& line = layout_.lines[static_cast<std::size_t>(layout_.top_line) - 1];
    add_box(line, kTopLineStyle);
    add_numbers(line, "number top");
    body_ += label(kAreaX + kAreaWidth / 2, base_line(line), sized("middle top", text_tenths(line)),
                   "top line");
    const int y = y_of(line.top) + pixels(line.height) / 2;
    body_ += "<path d=\"M" + std::to_string(kAreaX - 2) + " " + std::to_string(y) +
             " l-11 -6 v12 z\" fill=\"#1b7f3b\"/>\n";
  }

  void add_unused() {
    const int top = y_of(layout_.lines_bottom());
    const int height = form_y_ - top;
    if (height > 0) {
      body_ += rectangle(kAreaX, top, kAreaWidth, height, kHatched);
    }
    if (height >= kRunTextHeight) {
      const std::string text = inches(layout_.length - layout_.lines_bottom()) + " in unused";
      body_ +=
          label(kAreaX + kAreaWidth / 2, top + height / 2 + 4, "class=\"middle legend\"", text);
    }
  }

  /// A bracket beside each run, and its text: beside the bracket's middle, or below the text
  /// before. One that would stand far below is left out: the lines say it, too.
  void add_runs() {
    int free_y = kPaperY;
    for (const LineRun& run : layout_.runs) {
      const int top = y_of(run.top) + 1;
      const int bottom = y_of(run.bottom()) - 1;
      const int middle = (top + bottom) / 2;
      const int text_y = std::max(middle, free_y + kRunTextHeight / 2);
      body_ += "<path d=\"M" + std::to_string(kRunX) + " " + std::to_string(top) + " h5 V" +
               std::to_string(bottom) + R"( h-5" fill="none" )" + kRunStyle + "/>\n";
      if (text_y <= middle + 2 * kRunTextHeight) {
        body_ += segment(kRunX + 5, middle, kRunX + 15, text_y, kRunStyle);
        body_ += label(kRunX + 20, text_y + 4, "class=\"run\"", run_text(run));
        free_y = text_y + kRunTextHeight / 2 + 1;
      }
    }
    lowest_ = std::max(lowest_, free_y);
  }

  static std::string run_text(const LineRun& run) {
    return counted(run.count, "line") + ", " + std::to_string(run.lines_per_inch) + " per inch, " +
           inches(run.height) + " in";
  }

  void add_legend() {
    const int y = lowest_ + 22;
    add_swatch(kPaperX, y, kTopLineStyle, "top line, where printing starts");
    add_swatch(kPaperX + 220, y, kHatched, "nothing is printed here");
    if (layout_.lines_bottom() > layout_.length) {
      add_swatch(kPaperX + 396, y, kPastEndStyle, "past the end of the form");
    }
  }

  void add_swatch(int x, int y, const char* style, const char* text) {
    body_ += rectangle(x, y, 18, 11, style);
    body_ += label(x + 25, y + 10, "class=\"legend\"", text);
  }

  const Layout& layout_;
  const int form_y_;  ///< the end of the form
  int lowest_;        ///< the end of what has been drawn
  std::string body_;
};

}  // namespace

std::string svg_picture(const Layout& layout) {
  return Picture(layout).draw();
}

}  // namespace rlx::fcbcheck
