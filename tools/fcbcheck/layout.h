#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "forms/fcb.h"

namespace rlx::fcbcheck {

// Where everything stands on a form. Lengths are in 1/7200 inch, positions from the form's top.

/// One line.
struct LineBox {
  std::int32_t number = 0;  ///< from 1
  std::int32_t top = 0;
  std::int32_t height = 0;
  std::uint32_t lines_per_inch = 0;

  std::int32_t bottom() const { return top + height; }
};

/// Lines of one pitch, one below the other.
struct LineRun {
  std::int32_t count = 0;
  std::int32_t top = 0;
  std::int32_t height = 0;  ///< of all of them
  std::uint32_t lines_per_inch = 0;

  std::int32_t bottom() const { return top + height; }
};

struct Layout {
  std::string name;           ///< of the form
  std::int32_t length = 0;    ///< of the form, as the printer gets it
  std::int32_t top_line = 0;  ///< from 1; one of `lines`
  std::vector<LineBox> lines;
  std::vector<LineRun> runs;

  /// Where the last line ends: behind the form when its length was rounded down below its lines.
  std::int32_t lines_bottom() const { return lines.empty() ? 0 : lines.back().bottom(); }

  /// "11 in, 72 lines, printing starts on line 4"
  std::string summary() const;
};

/// The layout of a form that was taken.
Layout lay_out(const std::string& name, const FcbTable& table);

}  // namespace rlx::fcbcheck
