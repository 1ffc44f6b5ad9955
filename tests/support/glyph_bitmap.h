#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fonts/fal_library.h"

namespace rlx::testing {

/// Dots as text, one string a row: '#' is a dot, '.' is none.
using Bitmap = std::vector<std::string>;

/// A part of a pattern of the stand-in font library.
struct BitmapPart {
  int dots;        ///< width and height of the whole pattern
  int crop;        ///< rows left out at the top and columns left out at the left
  int rows;        ///< rows of the part
  int columns;     ///< columns of the part; those behind the pattern's padding are blank
  int blank_from;  ///< this column of the part and those behind it are blank
};

/// What of a character should be seen.
Bitmap expected_bitmap(std::int32_t font_id, std::uint32_t code, const BitmapPart& part);

/// The whole pattern of a character, as the stand-in delivers it.
GlyphPattern standin_pattern(std::int32_t font_id, std::uint32_t code, int dots);

/// Dots out of characters '0' to '?' with 4 dots each.
Bitmap decode_nibbles(std::string_view characters, std::size_t characters_a_row);

/// Dots out of bytes with 8 dots each.
Bitmap decode_bytes(std::string_view bytes, std::size_t bytes_a_row);

}  // namespace rlx::testing
