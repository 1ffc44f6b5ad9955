#pragma once

#include <cstdint>
#include <string_view>

namespace rlx::proof {

inline constexpr double kPointsPerInch = 72;
/// The language's unit of lengths is 1/7200 inch.
inline constexpr double kPointsPerUnit = 0.01;

/// A size of paper, upright, in points.
struct Paper {
  std::string_view name;
  double width = 0;
  double height = 0;
};

/// What a sheet is drawn on when the job names no paper: A4.
const Paper& default_paper();

/// The paper that a page format names by series and size (docs/rlx.md, section 5).
/// @return null when there is none of that kind.
const Paper* find_paper(std::uint64_t series, std::uint64_t size);

}  // namespace rlx::proof
