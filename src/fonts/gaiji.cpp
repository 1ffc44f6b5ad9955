#include "fonts/gaiji.h"

#include <optional>

#include "fonts/fal_library.h"
#include "fonts/font_table.h"
#include "fonts/gaiji_pattern.h"
#include "job/settings.h"

namespace rlx {

GaijiState gaiji_state;

namespace {

constexpr std::string_view kSelectDownloadSet = "\x1b$D";
constexpr std::string_view kUndefinedAsSpace = "!!";
constexpr std::string_view kUndefinedAsUbar = "\x1b$B\x1b(H_";
constexpr std::string_view kSelectSize =
    "\x1c"
    "0";

/// ESC "$D", FS "0" and a size code, FS "21" and a code (ESC "Q0 D" comes with half the pattern),
/// the code to print.
constexpr std::size_t kLongestSequences = 3 + 4 + 5 + 2;
static_assert(2 * kMaxPatternBytes + kLongestSequences <= kPageBufferBytes);

constexpr std::uint8_t kSingleShift3 = 0x8F;
/// In front of c1 and c2 in the library's codes of G3.
constexpr std::uint32_t kLibraryCodeG3 = 0x8F0000;

/// The size of everything in the fixed form.
constexpr int kFixedFormSize = 3;

/// Rows 0xD6 to 0xDC of G3 have a font of their own at size 4 of resolution class 0.
constexpr int kSpecialRowsSize = 4;
constexpr int kSpecialRowsFetchSize = 5;
constexpr std::uint8_t kFirstSpecialRow = 0xD6;
constexpr std::uint8_t kLastSpecialRow = 0xDC;

/// One download: which character in which size, class and form.
struct Download {
  GaijiCharacter character;
  int size_index;
  int resolution_class;
  GaijiForm form;
};

std::optional<GaijiCharacter> character_of(const CommandRecord& record) {
  const auto& bytes = record.bytes;
  if (record.length == 2) {
    return GaijiCharacter{kCodeSetG1, job_settings.gaiji_typeface, bytes[0], bytes[1]};
  }
  if (record.length == 3 && bytes[0] == kSingleShift3) {
    return GaijiCharacter{kCodeSetG3, job_settings.gaiji_typeface, bytes[1], bytes[2]};
  }
  return std::nullopt;
}

Download download_of(const GaijiCharacter& character) {
  const int variant = job_settings.font_variant;
  const GaijiForm form = gaiji_form_of(variant, job_settings.printer_class);
  const bool fixed = form == GaijiForm::kFixed;
  return {character, fixed ? kFixedFormSize : job_settings.gaiji_size_index,
          resolution_class_of(variant, job_settings.high_resolution_fonts), form};
}

/// The size index of the font that delivers the pattern.
int fetch_size(const Download& download) {
  const GaijiCharacter& character = download.character;
  const bool special = download.resolution_class == 0 && download.size_index == kSpecialRowsSize &&
                       character.code_set == kCodeSetG3 && character.c1 >= kFirstSpecialRow &&
                       character.c1 <= kLastSpecialRow;
  return special ? kSpecialRowsFetchSize : download.size_index;
}

std::uint32_t library_code(const GaijiCharacter& character) {
  const std::uint32_t code = character.c1 * 256U + character.c2;
  return character.code_set == kCodeSetG3 ? kLibraryCodeG3 + code : code;
}

int fetch(const Download& download, Glyph& glyph) {
  GlyphRequest request;
  request.typeface = download.character.typeface;
  request.code_set = download.character.code_set;
  request.size_index = fetch_size(download);
  request.library_code = library_code(download.character);
  return fal_read_glyph(request, glyph, 1);
}

void select_download_set(CharacterSetState& state, OutputBuffer& out) {
  if (state.set != CharacterSetState::kDoubleByte ||
      state.designation != CharacterSetState::kDownloadDesignation) {
    append_bytes(out, kSelectDownloadSet);
    state.select_download();
  }
}

void put_undefined(UndefinedGaijiRule rule, CharacterSetState& state, OutputBuffer& out) {
  if (rule == UndefinedGaijiRule::space) {
    append_bytes(out, kUndefinedAsSpace);
  } else {
    append_bytes(out, kUndefinedAsUbar);
    state.select_single_byte();
  }
}

void select_size(const Download& download, OutputBuffer& out) {
  if (download.size_index != gaiji_state.cur_dl_size) {
    append_bytes(out, kSelectSize);
    append_bytes(out, size_code(download.resolution_class, download.size_index));
    gaiji_state.cur_dl_size = download.size_index;
  }
}

bool is_enlarged(const Download& download) {
  const FontSize* const font =
      find_font(download.character.typeface, download.character.code_set, fetch_size(download));
  return font != nullptr && font->enlarged != 0;
}

void put_pattern(const Download& download, const DownloadCode& code, const GlyphPattern& pattern,
                 OutputBuffer& out) {
  if (download.form == GaijiForm::kFixed) {
    append_download(download.form, fixed_geometry(), code, pattern, out);
    return;
  }
  // The unencoded form has a place for a byte sequence of the text output before the size selection
  // and one behind it. Nothing produces such a sequence.
  select_size(download, out);
  const PatternGeometry& geometry =
      pattern_geometry(download.resolution_class, download.size_index, is_enlarged(download));
  append_download(download.form, geometry, code, pattern, out);
}

int put_character(const Download& download, UndefinedGaijiRule rule, CharacterSetState& state,
                  OutputBuffer& out) {
  GaijiCache& cache = gaiji_state.caches[static_cast<std::size_t>(download.size_index)];
  if (const GaijiCacheEntry* const entry = gaiji_cache_find(cache, download.character)) {
    append_code(out, entry->code);
    return 0;
  }
  Glyph glyph;
  const int status = fetch(download, glyph);
  if (status == kGlyphUndefined) {
    put_undefined(rule, state, out);
    return 0;
  }
  if (status != 0) {
    out.length = 0;
    return status;
  }
  const DownloadCode code = gaiji_cache_add(cache, download.character);
  put_pattern(download, code, glyph.pattern, out);
  append_code(out, code);
  return 0;
}

}  // namespace

int gaiji_put(const CommandRecord& record, UndefinedGaijiRule rule, CharacterSetState& state,
              OutputBuffer& out) {
  out.length = 0;
  select_download_set(state, out);
  const std::optional<GaijiCharacter> character = character_of(record);
  if (!character) {
    put_undefined(rule, state, out);
    return 0;
  }
  const Download download = download_of(*character);
  if (download.size_index < kSmallestGaijiSize || download.size_index > kLargestGaijiSize) {
    put_undefined(rule, state, out);
    return 0;
  }
  return put_character(download, rule, state, out);
}

void gaiji_reset_size() {
  gaiji_state.cur_dl_size = kUnknownSize;
}

void gaiji_reset_cache() {
  for (GaijiCache& cache : gaiji_state.caches) {
    gaiji_cache_clear(cache);
  }
}

void reset_gaiji() {
  gaiji_reset_cache();
  gaiji_reset_size();
}

}  // namespace rlx
