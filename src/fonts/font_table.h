#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace rlx {

// The fonts of user-defined characters as plain data: which sizes each font class has, and which
// fonts are open now.

/// Typefaces by number.
inline constexpr int kTypefaceMincho = 0;
inline constexpr int kTypefaceGothic = 1;
inline constexpr int kTypefaces = 2;

/// Code sets by number, the same everywhere in this folder: G1 holds two-byte codes, the codes of
/// G3 follow an SS3 (0x8F) in the text.
inline constexpr int kCodeSetG3 = 0;
inline constexpr int kCodeSetG1 = 1;
inline constexpr int kCodeSets = 2;

/// Size indexes 0 to 5. Characters have the sizes 1 to 4; 0 and 5 serve other sizes and a few
/// special rows.
inline constexpr std::size_t kFontSizes = 6;
/// Which fonts are opened, by the font variant and the resolution of the job (font_class_of).
enum FontClass : int {
  kNoFontClass = -1,
  kFixedClass = 0,  ///< the one size of the fixed form
  kLowClass = 1,    ///< all sizes, for 240 dots per inch
  kHighClass = 2,   ///< all sizes, for 400 dots per inch
  kFineClass = 3,   ///< the sizes of -B, for 400 dots per inch
};
inline constexpr std::size_t kFontClasses = 4;

/// What a font class asks for at one size index. All fonts are square.
struct FontSizeTable {
  std::uint8_t enabled;        ///< 1 when a font of this size is opened
  std::int32_t font_dots;      ///< size of the font
  std::int32_t letter_dots;    ///< size of the letter in the font
  std::int32_t letter_offset;  ///< dots before the letter, in both directions
  std::int32_t pattern_dots;   ///< size at which its patterns are read
};

/// By FontClass, then size index. Rows that are not enabled are never opened, but the font size of
/// kLowClass, index 5 is looked at: it says that the index borrows the font of index 3.
inline constexpr std::array<std::array<FontSizeTable, kFontSizes>, kFontClasses> kFontSizeTables{{
    {{{0, 0, 0, 0, 0},
      {0, 0, 0, 0, 0},
      {1, 24, 22, 1, 0},
      {1, 24, 24, 0, 24},
      {0, 0, 0, 0, 0},
      {0, 0, 0, 0, 0}}},
    {{{1, 16, 16, 0, 16},
      {1, 24, 22, 1, 24},
      {1, 30, 28, 1, 28},
      {1, 32, 32, 0, 32},
      {1, 40, 36, 2, 36},
      {0, 32, 32, 0, 36}}},
    {{{1, 24, 22, 1, 25},
      {1, 40, 36, 2, 40},
      {1, 50, 48, 1, 50},
      {1, 60, 56, 2, 60},
      {1, 66, 62, 2, 66},
      {0, 0, 0, 0, 0}}},
    {{{1, 32, 32, 0, 0},
      {1, 40, 36, 2, 40},
      {1, 50, 48, 1, 50},
      {1, 60, 56, 2, 60},
      {1, 66, 62, 2, 72},
      {0, 0, 0, 0, 0}}},
}};

/// The font that answers for one size index.
struct FontSize {
  std::uint8_t opened = 0;    ///< 1 when a font answers for this size
  std::uint8_t enlarged = 0;  ///< 1 when its pattern is larger than the cell and gets cropped
  std::int32_t font_id = -1;  ///< the library's identifier; -1 when none
  std::int32_t read_h = 0;    ///< pattern height that the read asks for, dots
  std::int32_t read_w = 0;    ///< pattern width that the read asks for, dots
};

/// The fonts of one typeface and code set, by size index.
struct FontSet {
  std::array<FontSize, kFontSizes> sizes{};
};

}  // namespace rlx
