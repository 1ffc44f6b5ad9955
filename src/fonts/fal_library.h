#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "fonts/fal_api.h"
#include "fonts/font_table.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/messages.h"

namespace rlx {

// The font access library at run time. It is loaded from a fixed path when it is there; without it
// the filter runs all the same and every user-defined character is undefined.

// Results of fal_read_glyph. They share their numbers with others, but never leave fonts/:
// gaiji_put prints what is undefined as such, and asks for typefaces and code sets that there are,
// because JobState::gaiji_typeface is 0 or 1.

/// There is no pattern for this character.
inline constexpr Status kGlyphUndefined{1};
/// Typeface or code set out of range.
inline constexpr Status kGlyphOutOfRange{-1};

/// The largest pattern: 72 dots square, 9 bytes a row.
inline constexpr std::int32_t kMaxPatternDots = 72;
inline constexpr std::size_t kMaxPatternBytes = 648;

/// Room for the largest pattern and the 0 byte behind it.
using GlyphPattern = std::array<std::uint8_t, kMaxPatternBytes + 1>;

/// One glyph as the library delivered it: (width + 7) / 8 bytes a row, `height` rows, a 0 byte
/// behind them; the rest of the pattern is 0 as well.
struct Glyph {
  std::int32_t width = 0;   ///< dots
  std::int32_t height = 0;  ///< dots
  GlyphPattern pattern{};
};

/// Which glyph fal_read_glyph reads.
struct GlyphRequest {
  int typeface = 0;    ///< 0 mincho, 1 gothic
  int code_set = 0;    ///< kCodeSetG1 or kCodeSetG3
  int size_index = 0;  ///< 0 to 5
  int scale_h = 100;   ///< percent of the width of the size's pattern
  int scale_v = 100;   ///< percent of its height
  std::uint32_t library_code = 0;
};

/// What the library brings: its handle and its seven entry points, all null while it is not loaded.
struct FalEntryPoints {
  void* handle = nullptr;
  FalOpenSysFontFunction open_sys_font = nullptr;
  FalReadFontFunction read_font = nullptr;
  FalCloseFontFunction close_font = nullptr;
  FalFreeFontListFunction free_font_list = nullptr;
  const int* error_class = nullptr;    ///< fal_utyerror
  const int* error_detail = nullptr;   ///< fal_utyderror
  const int* missing_glyph = nullptr;  ///< fal_utyexists
};

/// The library.
struct FalLibrary : FalEntryPoints {
  const Messages& messages;
  const JobState& job;

  FalLibrary(const Messages& texts, const JobState& state) : messages(texts), job(state) {}
};

/// All fonts, in the order in which they are opened and closed: mincho G1, mincho G3, gothic G1,
/// gothic G3.
struct FontSets {
  FalLibrary& library;
  std::array<FontSet, kTypefaces * kCodeSets> sets{};

  explicit FontSets(FalLibrary& fal) : library(fal) {}
};

/// The set of a typeface and a code set; null when either number is out of range.
FontSet* find_font_set(FontSets& fonts, int typeface, int code_set);

/// The font of a size index of that set; null when a number is out of range.
const FontSize* find_font(FontSets& fonts, int typeface, int code_set, int size_index);

/// Loads the library from fixed_paths::kFontLibrary with lazy binding and resolves its entry
/// points. Does nothing when it is loaded already. Reports nothing: a system without the library is
/// an ordinary one. The caller sets `JobState::font_library_loaded`.
/// @return ST_OK, or ST_NO_FONT_LIBRARY when the library or any of the seven entry points is
/// missing (the library is then not loaded).
Status fal_load(FalLibrary& library);

/// Releases the library; does nothing when it is not loaded. Close the fonts first.
void fal_unload(FalLibrary& library);

/// True when the job may call the library: it is loaded and `JobState::font_library_loaded` says
/// so.
bool fal_available(const FalLibrary& library);

/// Reads one glyph through the font that is open for its typeface, code set and size. Width and
/// height are the font's read size, scaled, rounded toward zero.
/// @param glyph  filled only after success.
/// @param report_flag  1: a library error is reported on standard error.
/// @return ST_OK; kGlyphUndefined when no font is open for the size, the library is not available,
/// the font does not have the character, or width or height is outside 1 to 72; kGlyphOutOfRange;
/// ST_FONT_ERROR when the read failed.
Status fal_read_glyph(FontSets& fonts, const GlyphRequest& request, Glyph& glyph, int report_flag);

/// Writes the message of an error class to standard error; classes outside 1 to 9 have none.
/// @param file_name  the file of class 1; may be null, and is with every caller today.
/// @param detail  the library's detail code.
void fal_report(const FalLibrary& library, int error_class, const char* file_name, int detail);

/// fal_report of the error that the library's state variables hold.
void fal_report_last_error(const FalLibrary& library);

}  // namespace rlx
