#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "fonts/fal_api.h"

namespace rlx {

// The font access library at run time. It is loaded from a fixed path when it is there; without it
// the filter runs all the same and every user-defined character is undefined.

/// fal_load: the library or one of its entry points is missing.
inline constexpr int kFalUnavailable = -128;
/// The library reported an error; it ends the job.
inline constexpr int kFalError = -129;
/// fal_read_glyph: there is no pattern for this character.
inline constexpr int kGlyphUndefined = 1;
/// fal_read_glyph: typeface or code set out of range.
inline constexpr int kGlyphOutOfRange = -1;

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

/// The loaded library: its handle and its seven entry points, all null while it is not loaded.
struct FalLibrary {
  void* handle = nullptr;
  FalOpenSysFontFunction open_sys_font = nullptr;
  FalReadFontFunction read_font = nullptr;
  FalCloseFontFunction close_font = nullptr;
  FalFreeFontListFunction free_font_list = nullptr;
  const int* error_class = nullptr;    ///< fal_utyerror
  const int* error_detail = nullptr;   ///< fal_utyderror
  const int* missing_glyph = nullptr;  ///< fal_utyexists
};

/// The library of this process.
extern FalLibrary fal_library;

/// Loads the library from fixed_paths::kFontLibrary with lazy binding and resolves its entry
/// points. Does nothing when it is loaded already. Reports nothing: a system without the library is
/// an ordinary one. The caller keeps `job_settings.font_library_loaded`.
/// @return 0, or kFalUnavailable when the library or any of the seven entry points is missing (the
/// library is then not loaded).
int fal_load();

/// Releases the library; does nothing when it is not loaded. Close the fonts first.
/// @return 0
int fal_unload();

/// True when the job may call the library: it is loaded and the job-wide flag says so.
bool fal_available();

/// Reads one glyph through the font that is open for its typeface, code set and size. Width and
/// height are the font's read size, scaled, rounded toward zero.
/// @param glyph  filled only after success.
/// @param report_flag  1: a library error is reported on standard error.
/// @return 0; kGlyphUndefined when no font is open for the size, the library is not available, the
/// font does not have the character, or width or height is outside 1 to 72; kGlyphOutOfRange;
/// kFalError when the read failed.
int fal_read_glyph(const GlyphRequest& request, Glyph& glyph, int report_flag);

/// Writes the message of an error class to standard error; classes outside 1 to 9 have none.
/// @param file_name  the file of class 1; may be null, and is with every caller today.
/// @param detail  the library's detail code.
void fal_report(int error_class, const char* file_name, int detail);

/// fal_report of the error that the library's state variables hold.
void fal_report_last_error();

/// Unloads the library and starts clean.
void reset_fal_library();

}  // namespace rlx
