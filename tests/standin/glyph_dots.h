#pragma once

#include <cstdint>
#include <initializer_list>

namespace rlx::testing {

/// One dot of the patterns that the stand-in font library delivers. Font, character, row and column
/// are all mixed in, so that no row, column, shift or character can be taken for another. Columns
/// behind the width, up to the byte border, have such dots as well: who sends them is found out.
inline bool glyph_dot(std::int32_t font_id, std::uint32_t code, std::int32_t row,
                      std::int32_t column) {
  std::uint32_t mixed = static_cast<std::uint32_t>(font_id) * 0x9E3779B1U;
  for (const std::uint32_t part :
       {code, static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(column)}) {
    mixed = (mixed ^ part) * 0x85EBCA6BU;
    mixed ^= mixed >> 15U;
  }
  return (mixed >> 7U & 1U) != 0;
}

}  // namespace rlx::testing
