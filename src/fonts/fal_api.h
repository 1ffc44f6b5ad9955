#pragma once

#include <cstdint>

namespace rlx {

// The C interface of the font access library (libfal.so.1), as far as the filter uses it. The
// library is never linked: its entry points are looked up by name at run time (fal_library.h).
// Widths, heights and offsets are dots; patterns are square bitmaps, rows top to bottom, each row
// padded to whole bytes, the most significant bit leftmost.

/// Which font is asked for. Each property is given as the library's number and its name.
struct FalFontQuery {
  std::int32_t style;            ///< typeface: 1 mincho, 2 gothic
  const char* style_name;        ///< "mincho" or "gothic"
  std::int32_t shape;            ///< 1: full width
  const char* shape_name;        ///< "zenkaku"
  std::int32_t code_set;         ///< 2 for G1, 4 for G3
  const char* code_set_name;     ///< "u90_01" or "u90_03"
  std::int32_t code_set_again;   ///< the number of `code_set` once more
  std::int32_t final_number;     ///< always 2
  std::int32_t size_width;       ///< width of the font, dots
  std::int32_t size_height;      ///< height of the font, dots
  std::int32_t letter_width;     ///< width of the letter inside the font, dots
  std::int32_t letter_height;    ///< height of the letter inside the font, dots
  std::int32_t letter_offset_h;  ///< dots left of the letter
  std::int32_t letter_offset_v;  ///< dots above the letter
};

/// The properties of a query that count: one bit each.
inline constexpr std::uint32_t kFalQueryMask = 0xFFFC;
/// FalOpenSysFont: an error; its class and detail stand in the state variables.
inline constexpr std::int32_t kFalOpenError = -1;
/// FalOpenSysFont: no font matches the query.
inline constexpr std::int32_t kFalNoFont = 0;
/// `fal_utyexists` after a read of a character that the font does not have.
inline constexpr int kFalGlyphMissing = 1;

/// The fonts that a query missed. Opaque; whoever receives one gives it back to FalFreeFontList.
struct FalFontList;

/// FalOpenSysFont: opens the font that the query describes. Reads the locale from the environment
/// (LANG and FAL_LANG). Stores a list of missed fonts, or leaves the pointer alone.
/// @return the font's identifier, kFalNoFont or kFalOpenError.
using FalOpenSysFontFunction = std::int32_t (*)(const FalFontQuery* query, std::uint32_t mask,
                                                FalFontList** missing);

/// FalReadFont: the pattern of one character, scaled to width x height dots. The pattern belongs to
/// the library and lasts until its next call. The library sets `fal_utyexists` on every read.
/// @param code  c1 x 256 + c2 for G1, 0x8F0000 + c1 x 256 + c2 for G3.
/// @return the pattern; an address of all ones, or null, after a failure.
using FalReadFontFunction = const std::uint8_t* (*)(std::int32_t font_id, std::uint32_t code,
                                                    std::int32_t width, std::int32_t height);

/// FalCloseFont: closes a font. The result tells nothing that the filter could act on.
using FalCloseFontFunction = int (*)(std::int32_t font_id);

/// FalFreeFontList: frees a list that FalOpenSysFont returned.
using FalFreeFontListFunction = void (*)(FalFontList* list);

/// True for the address that FalReadFont returns after an error.
inline bool is_fal_read_error(const std::uint8_t* pattern) {
  return reinterpret_cast<std::uintptr_t>(pattern) == UINTPTR_MAX;
}

}  // namespace rlx
