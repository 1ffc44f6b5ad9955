#include "rlxproof/fonts.h"

#include <pango/pangocairo.h>

#include <stdexcept>
#include <string>

namespace rlx::proof {

namespace {

constexpr const char* kSingleFamilies = "Liberation Mono,Cousine,DejaVu Sans Mono,monospace";
constexpr const char* kDoubleFamilies =
    "IPAGothic,Noto Sans Mono CJK JP,Noto Sans CJK JP,TakaoGothic,VL Gothic,monospace";
/// Fonts are looked up in this size, whatever size they are drawn in.
constexpr double kLookUpSize = 12;

std::string utf8_of(char32_t character) {
  std::string bytes(6, '\0');
  bytes.resize(static_cast<std::size_t>(g_unichar_to_utf8(character, bytes.data())));
  return bytes;
}

/// The glyph of a character in a font of size 1.
FontGlyph glyph_in(cairo_font_face_t* face, char32_t character) {
  cairo_matrix_t identity;
  cairo_matrix_init_identity(&identity);
  const FontOptionsPtr options = Fonts::options();
  const ScaledFontPtr font(cairo_scaled_font_create(face, &identity, &identity, options.get()));
  const std::string utf8 = utf8_of(character);
  cairo_glyph_t* glyphs = nullptr;
  int count = 0;
  const cairo_status_t status =
      cairo_scaled_font_text_to_glyphs(font.get(), 0, 0, utf8.data(), static_cast<int>(utf8.size()),
                                       &glyphs, &count, nullptr, nullptr, nullptr);
  if (status != CAIRO_STATUS_SUCCESS || count != 1) {
    cairo_glyph_free(glyphs);
    return {};
  }
  cairo_text_extents_t extents;
  cairo_scaled_font_glyph_extents(font.get(), glyphs, 1, &extents);
  const FontGlyph found{face, glyphs->index, extents.x_advance};
  cairo_glyph_free(glyphs);
  return found.advance > 0 ? found : FontGlyph{};
}

}  // namespace

FontOptionsPtr Fonts::options() {
  FontOptionsPtr options(cairo_font_options_create());
  cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
  return options;
}

Fonts::Fonts()
    : map_(pango_cairo_font_map_new()), context_(pango_font_map_create_context(map_.get())) {
  pango_cairo_context_set_font_options(context_.get(), options().get());
  pango_context_set_round_glyph_positions(context_.get(), FALSE);
  single_ = load(kSingleFamilies, "en");
  double_ = load(kDoubleFamilies, "ja");
  if (single_.fonts == nullptr || double_.fonts == nullptr || single('0').face == nullptr) {
    throw std::runtime_error("no font is installed");
  }
}

Fonts::Family Fonts::load(const char* names, const char* language) {
  const FontDescriptionPtr description(pango_font_description_from_string(names));
  pango_font_description_set_size(description.get(), static_cast<int>(kLookUpSize * PANGO_SCALE));
  Family family;
  family.fonts.reset(pango_font_map_load_fontset(map_.get(), context_.get(), description.get(),
                                                 pango_language_from_string(language)));
  return family;
}

cairo_font_face_t* Fonts::face_of(PangoFont* font) {
  auto& [kept_font, face] = faces_[font];
  if (face == nullptr) {
    kept_font.reset(static_cast<PangoFont*>(g_object_ref(font)));
    cairo_scaled_font_t* const scaled = pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font));
    face.reset(cairo_font_face_reference(cairo_scaled_font_get_font_face(scaled)));
  }
  return face.get();
}

FontGlyph Fonts::look_up(const Family& family, char32_t character) {
  const ObjectPtr<PangoFont> font(pango_fontset_get_font(family.fonts.get(), character));
  if (font == nullptr || pango_font_has_char(font.get(), character) == 0) {
    return {};
  }
  return glyph_in(face_of(font.get()), character);
}

const FontGlyph& Fonts::find(Family& family, char32_t character) {
  const auto known = family.known.find(character);
  if (known != family.known.end()) {
    return known->second;
  }
  return family.known.emplace(character, look_up(family, character)).first->second;
}

}  // namespace rlx::proof
