#pragma once

#include <string>

#include "fcbcheck/layout.h"

namespace rlx::fcbcheck {

/// A form as a picture, the text of an SVG file: the paper in its true length (96 units an inch)
/// with a ruler of inches, a box for each line with its number and its lines per inch, the top line
/// marked, hatched what is not printed on, and beside it the runs of lines.
std::string svg_picture(const Layout& layout);

}  // namespace rlx::fcbcheck
