#pragma once

#include <array>
#include <cstdint>

namespace rlx {

// Lengths are in 1/7200 inch, the pitches of lines in 1/72 inch, form lengths in half inches.

inline constexpr std::int32_t kUnitsPerInch = 7200;
inline constexpr std::int32_t kUnitsPerHalfInch = kUnitsPerInch / 2;
/// Units of 1/7200 inch in one of 1/72 inch.
inline constexpr std::int32_t kUnitsPer72nd = kUnitsPerInch / 72;

/// A line pitch that forms and the printer have.
struct LinePitch {
  std::int32_t height;  ///< of a line, 1/7200 inch
  std::uint32_t lines_per_inch;
};

/// All of them, the largest first.
inline constexpr std::array<LinePitch, 5> kLinePitches{
    {{2400, 3}, {1800, 4}, {1200, 6}, {900, 8}, {600, 12}}};

/// Lines per inch of a form, and of print conditions, that say nothing else.
inline constexpr std::uint32_t kDefaultLinesPerInch = 6;

}  // namespace rlx
