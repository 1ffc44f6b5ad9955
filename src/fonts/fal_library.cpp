#include "fonts/fal_library.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>

#include "fonts/font_table.h"
#include "job/fixed_paths.h"
#include "job/settings.h"
#include "support/text_file.h"

namespace rlx {

FalLibrary fal_library;

namespace {

/// How a message shows the detail code.
enum class Detail { kNone, kSpaced, kJoined };

struct ErrorMessage {
  const char* text;
  Detail detail;
};

/// By error class, from 1 on. The missing blank of classes 8 and 9 is deliberate.
constexpr std::array<ErrorMessage, 9> kErrorMessages{{
    {"can't open fontfile", Detail::kNone},
    {"can't read fontfile", Detail::kSpaced},
    {"can't get area", Detail::kNone},
    {"invalid PKEY", Detail::kNone},
    {"parameter error", Detail::kSpaced},
    {"stat error", Detail::kSpaced},
    {"broken fontfile", Detail::kNone},
    {"can't open fontlist", Detail::kJoined},
    {"can't read fontlist", Detail::kJoined},
}};

/// Error class 1 names the file when there is one.
constexpr int kCannotOpenFontFile = 1;

/// Looks up one entry point. @return whether the library has it
template <typename Pointer>
bool resolve(void* handle, const char* name, Pointer& entry_point) {
  entry_point = reinterpret_cast<Pointer>(dlsym(handle, name));
  return entry_point != nullptr;
}

bool resolve_all(FalLibrary& library) {
  return resolve(library.handle, "FalOpenSysFont", library.open_sys_font) &&
         resolve(library.handle, "FalReadFont", library.read_font) &&
         resolve(library.handle, "FalCloseFont", library.close_font) &&
         resolve(library.handle, "FalFreeFontList", library.free_font_list) &&
         resolve(library.handle, "fal_utyerror", library.error_class) &&
         resolve(library.handle, "fal_utyderror", library.error_detail) &&
         resolve(library.handle, "fal_utyexists", library.missing_glyph);
}

/// A length in dots, scaled by a percentage; 0 when a pattern of that length cannot be read.
std::int32_t scaled_dots(std::int32_t dots, int percent) {
  const std::int64_t scaled = std::int64_t{percent} * dots / 100;
  return scaled >= 1 && scaled <= kMaxPatternDots ? static_cast<std::int32_t>(scaled) : 0;
}

int read_failed(int report_flag) {
  if (report_flag == 1) {
    fal_report_last_error();
  }
  return kFalError;
}

void copy_pattern(const std::uint8_t* pattern, Glyph& glyph) {
  const std::int32_t row_bytes = (glyph.width + 7) / 8;
  glyph.pattern.fill(0);
  std::copy_n(pattern, row_bytes * glyph.height, glyph.pattern.begin());
}

}  // namespace

int fal_load() {
  if (fal_library.handle != nullptr) {
    return 0;
  }
  // The loader would wait for ever at a FIFO.
  if (!is_regular_file(fixed_paths::kFontLibrary)) {
    return kFalUnavailable;
  }
  fal_library.handle = dlopen(fixed_paths::kFontLibrary, RTLD_LAZY);
  if (fal_library.handle == nullptr) {
    return kFalUnavailable;
  }
  if (!resolve_all(fal_library)) {
    fal_unload();
    return kFalUnavailable;
  }
  return 0;
}

int fal_unload() {
  if (fal_library.handle != nullptr) {
    dlclose(fal_library.handle);
  }
  fal_library = FalLibrary{};
  return 0;
}

bool fal_available() {
  return job_settings.font_library_loaded != 0 && fal_library.handle != nullptr;
}

int fal_read_glyph(const GlyphRequest& request, Glyph& glyph, int report_flag) {
  if (find_font_set(request.typeface, request.code_set) == nullptr) {
    return kGlyphOutOfRange;
  }
  const FontSize* const font = find_font(request.typeface, request.code_set, request.size_index);
  if (font == nullptr || font->opened == 0) {
    return kGlyphUndefined;
  }
  const std::int32_t width = scaled_dots(font->read_w, request.scale_h);
  const std::int32_t height = scaled_dots(font->read_h, request.scale_v);
  if (!fal_available() || width == 0 || height == 0) {
    return kGlyphUndefined;
  }
  const std::uint8_t* const pattern =
      fal_library.read_font(font->font_id, request.library_code, width, height);
  if (is_fal_read_error(pattern)) {
    return read_failed(report_flag);
  }
  if (*fal_library.missing_glyph == kFalGlyphMissing) {
    return kGlyphUndefined;
  }
  if (pattern == nullptr) {
    return read_failed(report_flag);
  }
  glyph.width = width;
  glyph.height = height;
  copy_pattern(pattern, glyph);
  return 0;
}

void fal_report(int error_class, const char* file_name, int detail) {
  if (error_class < 1 || error_class > static_cast<int>(kErrorMessages.size())) {
    return;
  }
  const char* const program = job_settings.program_name;
  if (error_class == kCannotOpenFontFile && file_name != nullptr) {
    std::fprintf(stderr, "%s: can't open %s (%d)\n", program, file_name, detail);
    return;
  }
  const ErrorMessage& message = kErrorMessages[static_cast<std::size_t>(error_class - 1)];
  switch (message.detail) {
    case Detail::kNone:
      std::fprintf(stderr, "%s: %s\n", program, message.text);
      break;
    case Detail::kSpaced:
      std::fprintf(stderr, "%s: %s (%d)\n", program, message.text, detail);
      break;
    case Detail::kJoined:
      std::fprintf(stderr, "%s: %s(%d)\n", program, message.text, detail);
      break;
  }
}

void fal_report_last_error() {
  fal_report(*fal_library.error_class, nullptr, *fal_library.error_detail);
}

void reset_fal_library() {
  fal_unload();
}

}  // namespace rlx
