#pragma once

#include "fonts/fal_library.h"
#include "job/status.h"

namespace rlx {

// Which system fonts serve the user-defined characters: opened through the font access library at
// start-up, again whenever the job switches between 240 and 400 dots per inch, closed at its end.

/// The font class of a FontVariant: kFixedFont has kFixedClass; kAllFonts kLowClass, or kHighClass
/// with high-resolution fonts; kFineFonts kFineClass, which needs high-resolution fonts. (The
/// download has a coarser class of its own, see gaiji_pattern.h.)
/// @return the class, or kNoFontClass when there is none.
FontClass font_class_of(int font_variant, int high_resolution_fonts);

/// Opens the fonts of all typefaces and code sets. Without the library it only forgets the fonts:
/// every user-defined character is then undefined. A size without a font is no error either.
/// Fonts that are open already must have been closed.
/// @param report_flag  1: a library error is reported on standard error.
/// @param second_typeface  0: no gothic fonts are opened, both typefaces use the mincho ones.
/// @return ST_OK; ST_NO_FONT_CLASS when the variant has no class (nothing is touched), or
/// ST_FONT_ERROR after a library error (what was opened has been closed).
Status fonts_open(FontSets& fonts, int font_variant, int high_resolution_fonts, int report_flag,
                  int second_typeface);

/// Closes every font that is open, each identifier once, and forgets them all.
void fonts_close(FontSets& fonts);

/// Opens the fonts of one set, size by size, with the locale set in the environment for the
/// library. A size without a font falls back: the second typeface to the first, the first to a
/// neighbouring size.
/// @param set  one of `fonts`, forgotten before; keeps what was opened before a failure.
/// @param font_class  any but kNoFontClass.
/// @return ST_OK or ST_FONT_ERROR.
Status font_set_open(FontSets& fonts, FontSet& set, int typeface, int code_set,
                     FontClass font_class, int report_flag);

}  // namespace rlx
