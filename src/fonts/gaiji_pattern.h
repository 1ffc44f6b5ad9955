#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "fonts/fal_library.h"
#include "fonts/gaiji_cache.h"
#include "job/output_buffer.h"

namespace rlx {

// How the pattern of a user-defined character is written in the printer language: an introducer,
// the two bytes of the download code, then the dots with neither length nor terminator. The printer
// knows how many there are from the size that was selected before.

/// The three ways to download a pattern.
enum class GaijiForm {
  kFixed,      ///< FS "20": always 24 dots, 4 dots a character, no size selection
  kNibbles,    ///< FS "21": 4 dots a character ('0' + 0 to 15), size selected by FS "0"
  kUnencoded,  ///< ESC "Q0 D": 8 dots a byte, size selected by FS "0"
};

/// The sizes 1 to 4 of user-defined characters.
inline constexpr int kSmallestGaijiSize = 1;
inline constexpr int kLargestGaijiSize = 4;

/// Resolution classes 0 to 2 of a download (font classes are finer, see font_sets.h).
inline constexpr std::size_t kResolutionClasses = 3;

/// The part of a font's pattern that is sent.
struct PatternGeometry {
  std::int32_t font_dots;       ///< width and height of the font's pattern
  std::int32_t crop;            ///< rows left out at the top and dots left out at the left
  std::int32_t rows;            ///< rows sent
  std::int32_t row_characters;  ///< characters a row in groups of 4 dots
  std::uint8_t last_mask;       ///< dots of a row's last character that are sent

  constexpr std::int32_t row_bytes() const { return (font_dots + 7) / 8; }
};

/// The resolution class: 2 for kFineFonts, otherwise 1 with high-resolution fonts, otherwise 0.
int resolution_class_of(int font_variant, int high_resolution_fonts);

/// The form for a FontVariant: fixed for kFixedFont, nibbles for kFineFonts; for kAllFonts
/// unencoded when the printer class is kPrinterClassF1, otherwise nibbles.
GaijiForm gaiji_form_of(int font_variant, std::uint32_t printer_class);

/// What is sent of a pattern in the forms with size selection.
/// @param size_index  1 to 4
/// @param enlarged    whether the font delivers a larger pattern than the cell; counts in class 0
///                    only
const PatternGeometry& pattern_geometry(int resolution_class, int size_index, bool enlarged);

/// What is sent in the fixed form: a whole pattern of 24 dots.
const PatternGeometry& fixed_geometry();

/// The two characters that select a download size, behind FS "0".
std::string_view size_code(int resolution_class, int size_index);

// What a user-defined character becomes always fits in its buffer, see gaiji.cpp.

void append_bytes(OutputBuffer& out, std::string_view bytes);
void append_code(OutputBuffer& out, const DownloadCode& code);

/// Appends introducer, code and dots.
void append_download(GaijiForm form, const PatternGeometry& geometry, const DownloadCode& code,
                     const GlyphPattern& pattern, OutputBuffer& out);

}  // namespace rlx
