#pragma once

#include <cairo.h>

namespace rlx::proof {

struct Colour {
  double red;
  double green;
  double blue;
};

inline constexpr Colour kInk{0.09, 0.10, 0.12};    ///< what the printer prints
inline constexpr Colour kGrey{0.36, 0.42, 0.48};   ///< words in the margins
inline constexpr Colour kFaint{0.66, 0.72, 0.78};  ///< rulers
inline constexpr Colour kMark{0.70, 0.22, 0.16};   ///< that it is a proof, and what it lacks

inline void use_colour(cairo_t* cairo, const Colour& colour) {
  cairo_set_source_rgb(cairo, colour.red, colour.green, colour.blue);
}

}  // namespace rlx::proof
