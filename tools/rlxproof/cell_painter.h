#pragma once

#include <cairo.h>

#include <cstdint>
#include <string>
#include <vector>

#include "rlxproof/fonts.h"
#include "rlxproof/sheet.h"

namespace rlx::proof {

/// How large a character of a font is drawn, in points.
struct GlyphSize {
  double across = 0;
  double down = 0;
};

/// The size in which a character fills a cell: not higher than its line, and so wide that what is
/// left between two cells is no gap between words. In a double-byte cell a character that its font
/// makes narrower than high stays as it is beside those that are square.
/// @param advance  of the character in its font, in parts of the size.
GlyphSize glyph_size(const Cell& cell, double advance);

/// Draws characters and downloaded glyphs in their cells, as text that programs can find.
class CellPainter {
 public:
  explicit CellPainter(Fonts& fonts) : fonts_(fonts) {}

  /// @return how many characters no font has. They are drawn as empty boxes.
  std::uint64_t paint(cairo_t* cairo, const std::vector<Cell>& cells);

 private:
  /// Glyphs that are drawn in one go.
  struct Run {
    cairo_font_face_t* face = nullptr;
    GlyphSize size;
    double baseline = 0;
    std::vector<cairo_glyph_t> glyphs;
    std::vector<cairo_text_cluster_t> clusters;
    std::string text;

    bool takes(const cairo_font_face_t* other_face, const GlyphSize& other_size,
               double other_line) const;
  };

  void add(cairo_t* cairo, const Cell& cell, const FontGlyph& glyph);
  void show(cairo_t* cairo);

  Fonts& fonts_;
  Run run_;
};

/// Writes a short text of ASCII in the font of the sheet's text.
/// @param align  0 when it begins at x, 1 when it ends there, 0.5 for the middle.
void show_label(cairo_t* cairo, Fonts& fonts, const std::string& text, double size, double x,
                double baseline, double align);

}  // namespace rlx::proof
