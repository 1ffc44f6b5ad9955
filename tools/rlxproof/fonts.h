#pragma once

#include <cairo.h>

#include <map>
#include <unordered_map>
#include <utility>

#include "rlxproof/cairo_handles.h"

namespace rlx::proof {

/// A character in the font that has it.
struct FontGlyph {
  cairo_font_face_t* face = nullptr;  ///< null when no font has the character
  unsigned long index = 0;
  double advance = 0;  ///< to the next character, in parts of the font's size
};

/// Finds characters among the fonts that are installed. Each is looked up once.
class Fonts {
 public:
  /// @throws std::runtime_error when there is no font at all.
  Fonts();

  /// A character of a monospaced font.
  const FontGlyph& single(char32_t character) { return find(single_, character); }
  /// A character of a font with Japanese, where one is installed.
  const FontGlyph& wide(char32_t character) { return find(double_, character); }

  /// For the text around the sheet.
  PangoContext* context() { return context_.get(); }

  /// How glyphs are drawn: without being fitted to dots.
  static FontOptionsPtr options();

 private:
  struct Family {
    ObjectPtr<PangoFontset> fonts;
    std::unordered_map<char32_t, FontGlyph> known;
  };

  Family load(const char* names, const char* language);
  const FontGlyph& find(Family& family, char32_t character);
  FontGlyph look_up(const Family& family, char32_t character);
  cairo_font_face_t* face_of(PangoFont* font);

  ObjectPtr<PangoFontMap> map_;
  ObjectPtr<PangoContext> context_;
  Family single_;
  Family double_;
  /// Faces, with the fonts that they are of.
  std::map<PangoFont*, std::pair<ObjectPtr<PangoFont>, FontFacePtr>> faces_;
};

}  // namespace rlx::proof
