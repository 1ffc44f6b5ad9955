#include "fonts/fal_library.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>

#include "job/fixed_paths.h"
#include "support/text_file.h"

namespace rlx {

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

bool resolve_all(FalEntryPoints& library) {
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

Status read_failed(const FalLibrary& library, int report_flag) {
  if (report_flag == 1) {
    fal_report_last_error(library);
  }
  return ST_FONT_ERROR;
}

void copy_pattern(const std::uint8_t* pattern, Glyph& glyph) {
  const std::int32_t row_bytes = (glyph.width + 7) / 8;
  glyph.pattern.fill(0);
  std::copy_n(pattern, row_bytes * glyph.height, glyph.pattern.begin());
}

}  // namespace

FontSet* find_font_set(FontSets& fonts, int typeface, int code_set) {
  if (typeface < 0 || typeface >= kTypefaces || code_set < 0 || code_set >= kCodeSets) {
    return nullptr;
  }
  const int second_of_typeface = code_set == kCodeSetG1 ? 0 : 1;
  return &fonts.sets[static_cast<std::size_t>(typeface * kCodeSets + second_of_typeface)];
}

const FontSize* find_font(FontSets& fonts, int typeface, int code_set, int size_index) {
  const FontSet* const set = find_font_set(fonts, typeface, code_set);
  if (set == nullptr || size_index < 0 || size_index >= static_cast<int>(kFontSizes)) {
    return nullptr;
  }
  return &set->sizes[static_cast<std::size_t>(size_index)];
}

Status fal_load(FalLibrary& library) {
  if (library.handle != nullptr) {
    return ST_OK;
  }
  // The loader would wait for ever at a FIFO.
  if (!is_regular_file(fixed_paths::kFontLibrary)) {
    return ST_NO_FONT_LIBRARY;
  }
  library.handle = dlopen(fixed_paths::kFontLibrary, RTLD_LAZY);
  if (library.handle == nullptr) {
    return ST_NO_FONT_LIBRARY;
  }
  if (!resolve_all(library)) {
    fal_unload(library);
    return ST_NO_FONT_LIBRARY;
  }
  return ST_OK;
}

void fal_unload(FalLibrary& library) {
  if (library.handle != nullptr) {
    dlclose(library.handle);
  }
  static_cast<FalEntryPoints&>(library) = FalEntryPoints{};
}

bool fal_available(const FalLibrary& library) {
  return library.job.font_library_loaded != 0 && library.handle != nullptr;
}

Status fal_read_glyph(FontSets& fonts, const GlyphRequest& request, Glyph& glyph, int report_flag) {
  const FalLibrary& library = fonts.library;
  if (find_font_set(fonts, request.typeface, request.code_set) == nullptr) {
    return kGlyphOutOfRange;
  }
  const FontSize* const font =
      find_font(fonts, request.typeface, request.code_set, request.size_index);
  if (font == nullptr || font->opened == 0) {
    return kGlyphUndefined;
  }
  const std::int32_t width = scaled_dots(font->read_w, request.scale_h);
  const std::int32_t height = scaled_dots(font->read_h, request.scale_v);
  if (!fal_available(library) || width == 0 || height == 0) {
    return kGlyphUndefined;
  }
  const std::uint8_t* const pattern =
      library.read_font(font->font_id, request.library_code, width, height);
  if (is_fal_read_error(pattern)) {
    return read_failed(library, report_flag);
  }
  if (*library.missing_glyph == kFalGlyphMissing) {
    return kGlyphUndefined;
  }
  if (pattern == nullptr) {
    return read_failed(library, report_flag);
  }
  glyph.width = width;
  glyph.height = height;
  copy_pattern(pattern, glyph);
  return ST_OK;
}

void fal_report(const FalLibrary& library, int error_class, const char* file_name, int detail) {
  if (error_class < 1 || error_class > static_cast<int>(kErrorMessages.size())) {
    return;
  }
  const char* const program = library.messages.program_name;
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

void fal_report_last_error(const FalLibrary& library) {
  fal_report(library, *library.error_class, nullptr, *library.error_detail);
}

}  // namespace rlx
