#pragma once

#include <cairo.h>

#include "rlxproof/fonts.h"
#include "rlxproof/sheet.h"

namespace rlx::proof {

/// Draws the rulers: above the first line the columns, left of the first column the lines, every
/// tenth and every fifth with its number; and where the line pitch changes, the lines per inch.
void paint_rulers(cairo_t* cairo, Fonts& fonts, const Sheet& sheet);

}  // namespace rlx::proof
