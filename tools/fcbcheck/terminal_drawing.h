#pragma once

#include <string>

#include "fcbcheck/layout.h"

namespace rlx::fcbcheck {

struct DrawingStyle {
  bool utf8 = false;    ///< box-drawing characters; ASCII without
  bool colour = false;  ///< the terminal's colours
};

/// What suits standard output: UTF-8 as the locale says (setlocale must have been called), colour
/// on a terminal only, and there not with TERM=dumb or a NO_COLOR that is not empty.
DrawingStyle style_of_standard_output();

/// A form drawn with characters, 72 columns at most: one row a line with its number and its lines
/// per inch, inches at the left, and the places where nothing is printed shaded.
std::string terminal_drawing(const Layout& layout, const DrawingStyle& style);

}  // namespace rlx::fcbcheck
