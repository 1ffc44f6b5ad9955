#include "rlxproof/cell_painter.h"

#include <glib.h>

#include <algorithm>
#include <array>

#include "rlxproof/colours.h"

namespace rlx::proof {

namespace {

/// A gap between two characters that readers do not yet take for one between words, in parts of the
/// size; theirs is 0.1.
constexpr double kNoGap = 0.08;
/// Characters are not made wider than so many times their height.
constexpr double kWidest = 2;
/// How far a glyph's square reaches below the baseline, in parts of its side.
constexpr double kGlyphDescent = 0.12;
constexpr double kBoxLine = 0.5;

void show_box(cairo_t* cairo, const Cell& cell) {
  const double width = cell.width * 0.7;
  const double height = std::min(cell.height * 0.7, cell.width * 1.4);
  cairo_rectangle(cairo, cell.x + (cell.width - width) / 2, cell.baseline() - height, width,
                  height);
  cairo_set_line_width(cairo, kBoxLine);
  use_colour(cairo, kMark);
  cairo_stroke(cairo);
  use_colour(cairo, kInk);
}

bool dot_at(const reader::Glyph& glyph, std::size_t row, std::size_t column) {
  const std::size_t row_bytes = (glyph.rows + 7) / 8;
  const std::size_t at = row * row_bytes + column / 8;
  return at < glyph.dots.size() && (glyph.dots[at] & (0x80U >> column % 8)) != 0;
}

/// Adds the dots of a row, those that touch as one rectangle. A dot is 1 wide and high.
void add_row(cairo_t* cairo, const reader::Glyph& glyph, std::size_t row) {
  for (std::size_t column = 0; column < glyph.rows; ++column) {
    const std::size_t first = column;
    while (column < glyph.rows && dot_at(glyph, row, column)) {
      ++column;
    }
    if (column != first) {
      cairo_rectangle(cairo, static_cast<double>(first), static_cast<double>(row),
                      static_cast<double>(column - first), 1);
    }
  }
}

void show_glyph(cairo_t* cairo, const Cell& cell) {
  const reader::Glyph& glyph = *cell.glyph;
  const double side = std::min(cell.width, cell.height);
  cairo_save(cairo);
  cairo_translate(cairo, cell.x + (cell.width - side) / 2,
                  cell.baseline() + (kGlyphDescent - 1) * side);
  const double dot = side / static_cast<double>(std::max<std::size_t>(glyph.rows, 1));
  cairo_scale(cairo, dot, dot);
  for (std::size_t row = 0; row < glyph.rows; ++row) {
    add_row(cairo, glyph, row);
  }
  cairo_fill(cairo);
  cairo_restore(cairo);
}

}  // namespace

GlyphSize glyph_size(const Cell& cell, double advance) {
  if (cell.is_double) {
    advance = std::max(advance, 1.0);
  }
  const double fitting = cell.width / advance;
  const double down = std::min(fitting, cell.height);
  const double closed = (cell.width - kNoGap * down) / advance;
  return {std::min({fitting, std::max(down, closed), kWidest * down}), down};
}

bool CellPainter::Run::takes(const cairo_font_face_t* other_face, const GlyphSize& other_size,
                             double other_line) const {
  return face == other_face && size.across == other_size.across && size.down == other_size.down &&
         baseline == other_line;
}

void CellPainter::show(cairo_t* cairo) {
  if (!run_.glyphs.empty()) {
    cairo_matrix_t matrix;
    cairo_matrix_init_scale(&matrix, run_.size.across, run_.size.down);
    cairo_set_font_face(cairo, run_.face);
    cairo_set_font_matrix(cairo, &matrix);
    cairo_show_text_glyphs(cairo, run_.text.data(), static_cast<int>(run_.text.size()),
                           run_.glyphs.data(), static_cast<int>(run_.glyphs.size()),
                           run_.clusters.data(), static_cast<int>(run_.clusters.size()),
                           static_cast<cairo_text_cluster_flags_t>(0));
  }
  run_.glyphs.clear();
  run_.clusters.clear();
  run_.text.clear();
}

void CellPainter::add(cairo_t* cairo, const Cell& cell, const FontGlyph& glyph) {
  const GlyphSize size = glyph_size(cell, glyph.advance);
  if (!run_.takes(glyph.face, size, cell.baseline())) {
    show(cairo);
    run_.face = glyph.face;
    run_.size = size;
    run_.baseline = cell.baseline();
  }
  std::array<char, 6> utf8{};
  const int bytes = g_unichar_to_utf8(cell.character, utf8.data());
  run_.text.append(utf8.data(), static_cast<std::size_t>(bytes));
  run_.clusters.push_back({bytes, 1});
  const double x = cell.x + (cell.width - glyph.advance * size.across) / 2;
  run_.glyphs.push_back({glyph.index, x, run_.baseline});
}

std::uint64_t CellPainter::paint(cairo_t* cairo, const std::vector<Cell>& cells) {
  std::uint64_t missing = 0;
  const FontOptionsPtr options = Fonts::options();
  cairo_set_font_options(cairo, options.get());
  use_colour(cairo, kInk);
  for (const Cell& cell : cells) {
    if (cell.glyph != nullptr) {
      show_glyph(cairo, cell);
      continue;
    }
    if (cell.character == kNoCharacter) {
      show_box(cairo, cell);
      continue;
    }
    const FontGlyph& glyph =
        cell.is_double ? fonts_.wide(cell.character) : fonts_.single(cell.character);
    if (glyph.face == nullptr) {
      show_box(cairo, cell);
      ++missing;
      continue;
    }
    add(cairo, cell, glyph);
  }
  show(cairo);
  return missing;
}

void show_label(cairo_t* cairo, Fonts& fonts, const std::string& text, double size, double x,
                double baseline, double align) {
  const double advance = fonts.single('0').advance * size;
  x -= align * advance * static_cast<double>(text.size());
  std::vector<cairo_glyph_t> glyphs;
  std::vector<cairo_text_cluster_t> clusters;
  for (const char character : text) {
    glyphs.push_back({fonts.single(static_cast<unsigned char>(character)).index, x, baseline});
    clusters.push_back({1, 1});
    x += advance;
  }
  cairo_set_font_face(cairo, fonts.single('0').face);
  cairo_set_font_size(cairo, size);
  cairo_show_text_glyphs(cairo, text.data(), static_cast<int>(text.size()), glyphs.data(),
                         static_cast<int>(glyphs.size()), clusters.data(),
                         static_cast<int>(clusters.size()),
                         static_cast<cairo_text_cluster_flags_t>(0));
}

}  // namespace rlx::proof
