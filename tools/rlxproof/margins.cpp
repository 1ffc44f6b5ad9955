#include "rlxproof/margins.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "rlxproof/colours.h"

namespace rlx::proof {

namespace {

// All in points.
constexpr double kSide = 14.4;
constexpr double kHeadingTop = 1.6;
/// The first of these in which a heading fits; in the last one its end is left out.
constexpr std::array<double, 4> kHeadingSizes{5.4, 4.8, 4.2, 3.6};
constexpr double kNoteSize = 5.4;
constexpr double kNoteDistance = 4;
constexpr double kFromEdge = 7;
constexpr int kMostNoteLines = 3;
constexpr const char* kFamilies = "Liberation Sans,DejaVu Sans,sans-serif";
constexpr const char* kSeparator = "   \xc2\xb7   ";

/// A length in inches with at most two decimals.
std::string inches(double points) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.4g in",
                std::round(points / kPointsPerInch * 100) / 100);
  return text.data();
}

void add(std::string& text, const std::string& part) {
  text += (text.empty() ? "" : kSeparator) + part;
}

void add_named(std::string& text, const char* name, const std::string& value) {
  if (!value.empty()) {
    add(text, name + value);
  }
}

std::string overlay_of(const PageSettings& page) {
  return page.overlay.empty() || page.overlay_count.empty()
             ? page.overlay
             : page.overlay + " x " + page.overlay_count;
}

void add_side(std::string& text, const Sheet& sheet) {
  const PageSettings& page = sheet.settings;
  if (sheet.side != Side::only) {
    add(text, sheet.side == Side::front ? "front" : "back");
  }
  if (page.binding_margin != 0) {
    add(text, std::string("bound at the ") + (page.binding_is_upper ? "top, " : "left, ") +
                  inches(page.binding_margin));
  }
}

using LayoutPtr = ObjectPtr<PangoLayout>;

LayoutPtr make_layout(Fonts& fonts, double size, double width) {
  LayoutPtr layout(pango_layout_new(fonts.context()));
  const FontDescriptionPtr font(pango_font_description_from_string(kFamilies));
  pango_font_description_set_absolute_size(font.get(), size * PANGO_SCALE);
  pango_layout_set_font_description(layout.get(), font.get());
  pango_layout_set_width(layout.get(), static_cast<int>(width * PANGO_SCALE));
  pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
  return layout;
}

/// Text with the marks that pango's markup asks for.
std::string escaped(const std::string& text) {
  const std::unique_ptr<char, Releaser<g_free>> safe(
      g_markup_escape_text(text.data(), static_cast<gssize>(text.size())));
  return safe.get();
}

/// Names of files may be any bytes.
std::string valid_utf8(const std::string& text) {
  const std::unique_ptr<char, Releaser<g_free>> valid(
      g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  return valid.get();
}

/// A long name without its middle, so that it leaves room for what is told about the sheet.
std::string short_name(const std::string& name) {
  constexpr glong kMostCharacters = 40;
  constexpr glong kKept = 18;  // of the front, and of the end
  std::string valid = valid_utf8(name);
  const glong length = g_utf8_strlen(valid.data(), -1);
  if (length <= kMostCharacters) {
    return valid;
  }
  const char* const all = valid.data();
  const char* const front_end = g_utf8_offset_to_pointer(all, kKept);
  const char* const back = g_utf8_offset_to_pointer(all, length - kKept);
  return std::string(all, front_end) + " .. " + back;
}

/// @param lack  what is not drawn, in few words; empty when there is nothing.
void paint_heading(cairo_t* cairo, Fonts& fonts, double width, const std::string& heading,
                   const std::string& lack) {
  const std::string note = lack.empty() ? "" : "   " + escaped(valid_utf8(lack));
  const std::string markup =
      "<span color='#b23829'><b>PROOF</b>" + note + "</span>   " + escaped(valid_utf8(heading));
  LayoutPtr layout;
  for (const double size : kHeadingSizes) {
    layout = make_layout(fonts, size, width - 2 * kSide);
    pango_layout_set_markup(layout.get(), markup.data(), static_cast<int>(markup.size()));
    if (pango_layout_is_ellipsized(layout.get()) == 0) {
      break;
    }
  }
  use_colour(cairo, kGrey);
  cairo_move_to(cairo, kSide, kHeadingTop);
  pango_cairo_show_layout(cairo, layout.get());
}

/// A note for the heading: it leaves room for what the heading says.
std::string short_note(const std::string& note) {
  constexpr std::size_t kMostCharacters = 80;
  const bool fits = note.size() <= kMostCharacters;
  return "not drawn: " + (fits ? note : note.substr(0, note.rfind(',', kMostCharacters)) + " ..");
}

double rightmost(const Sheet& sheet) {
  double edge = 0;
  for (const Cell& cell : sheet.cells) {
    edge = std::max(edge, cell.x + cell.width);
  }
  return edge;
}

LayoutPtr note_layout(Fonts& fonts, const std::string& note, double width) {
  LayoutPtr layout = make_layout(fonts, kNoteSize, width);
  pango_layout_set_height(layout.get(), -kMostNoteLines);
  const std::string markup =
      "<span color='#b23829'>Not drawn:</span>  " + escaped(valid_utf8(note));
  pango_layout_set_markup(layout.get(), markup.data(), static_cast<int>(markup.size()));
  return layout;
}

double height_of(PangoLayout* layout) {
  int height = 0;
  pango_layout_get_size(layout, nullptr, &height);
  return static_cast<double>(height) / PANGO_SCALE;
}

/// @return false when text stands there.
bool paint_note_below(cairo_t* cairo, Fonts& fonts, const Sheet& sheet, const std::string& note) {
  const LayoutPtr layout = note_layout(fonts, note, sheet.settings.width() - 2 * kSide);
  const double top = sheet.settings.height() - kFromEdge - height_of(layout.get());
  if (sheet.lowest > top - kNoteDistance) {
    return false;
  }
  cairo_move_to(cairo, kSide, top);
  pango_cairo_show_layout(cairo, layout.get());
  return true;
}

bool paint_note_beside(cairo_t* cairo, Fonts& fonts, const Sheet& sheet, const std::string& note) {
  const double length = sheet.settings.height() - sheet.top - 2 * kSide;
  const LayoutPtr layout = note_layout(fonts, note, std::max(length, kSide));
  const double left = sheet.settings.width() - kFromEdge - height_of(layout.get());
  if (rightmost(sheet) > left - kNoteDistance) {
    return false;
  }
  cairo_save(cairo);
  cairo_translate(cairo, sheet.settings.width() - kFromEdge, sheet.top);
  cairo_rotate(cairo, std::acos(0.0));
  cairo_move_to(cairo, 0, 0);
  pango_cairo_show_layout(cairo, layout.get());
  cairo_restore(cairo);
  return true;
}

}  // namespace

std::string heading_of(const Sheet& sheet, const std::string& job) {
  const PageSettings& page = sheet.settings;
  std::string text = short_name(job);
  add(text, "page " + std::to_string(sheet.page) + ", sheet " + std::to_string(sheet.number));
  add_side(text, sheet);
  add(text, std::string(page.paper->name) + (page.landscape ? " landscape" : " upright"));
  if (page.form_length != 0) {
    add(text, "form length " + inches(page.form_length));
  }
  add_named(text, "", page.tray == "any" ? "any tray" : "");
  add_named(text, "tray ", page.tray == "any" ? "" : page.tray);
  add_named(text, "copies ", page.copies);
  add_named(text, "overlay ", overlay_of(page));
  add_named(text, "form code ", page.form_code);
  if (sheet.spacing != 0) {
    add(text, "character spacing " + std::to_string(sheet.spacing) + ", not drawn");
  }
  return text;
}

void paint_margins(cairo_t* cairo, Fonts& fonts, const Sheet& sheet, const std::string& job,
                   const std::string& note) {
  use_colour(cairo, kGrey);
  const bool is_told = note.empty() || paint_note_below(cairo, fonts, sheet, note) ||
                       paint_note_beside(cairo, fonts, sheet, note);
  const std::string lack = note.empty() ? "" : is_told ? "not all is drawn" : short_note(note);
  paint_heading(cairo, fonts, sheet.settings.width(), heading_of(sheet, job), lack);
}

void paint_message(cairo_t* cairo, Fonts& fonts, const std::string& job,
                   const std::string& message) {
  constexpr double kMessageSize = 11;
  paint_heading(cairo, fonts, default_paper().width, job, {});
  const LayoutPtr layout = make_layout(fonts, kMessageSize, default_paper().width - 4 * kSide);
  pango_layout_set_text(layout.get(), message.data(), static_cast<int>(message.size()));
  use_colour(cairo, kGrey);
  cairo_move_to(cairo, 2 * kSide, 4 * kSide);
  pango_cairo_show_layout(cairo, layout.get());
}

}  // namespace rlx::proof
