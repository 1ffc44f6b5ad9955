#include "fonts/gaiji.h"

#include <array>
#include <cstdint>
#include <optional>

#include "fonts/gaiji_pattern.h"
#include "job/control_bytes.h"

namespace rlx {

namespace {

constexpr std::array<std::uint8_t, 3> kSelectDownloadSet{kEsc, '$', 'D'};
constexpr std::array<std::uint8_t, 2> kUndefinedAsSpace{'!', '!'};
constexpr std::array<std::uint8_t, 7> kUndefinedAsUbar{kEsc, '$', 'B', kEsc, '(', 'H', '_'};
constexpr std::array<std::uint8_t, 2> kSelectSize{kFs, '0'};

/// ESC "$D", FS "0" and a size code, FS "21" and a code (ESC "Q0 D" comes with half the pattern),
/// the code to print.
constexpr std::size_t kLongestSequences = 3 + 4 + 5 + 2;
static_assert(2 * kMaxPatternBytes + kLongestSequences <= kPageBufferBytes,
              "the longest download always fits");

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

std::optional<GaijiCharacter> character_of(const JobState& job, const CommandRecord& record) {
  const auto& bytes = record.bytes;
  if (record.length == 2) {
    return GaijiCharacter{kCodeSetG1, job.gaiji_typeface, bytes[0], bytes[1]};
  }
  if (record.length == 3 && bytes[0] == kSingleShift3) {
    return GaijiCharacter{kCodeSetG3, job.gaiji_typeface, bytes[1], bytes[2]};
  }
  return std::nullopt;
}

Download download_of(const Gaiji& gaiji, const GaijiCharacter& character) {
  const int variant = gaiji.command_line.font_variant;
  const GaijiForm form = gaiji_form_of(variant, gaiji.command_line.printer_class);
  const bool fixed = form == GaijiForm::kFixed;
  return {character, fixed ? kFixedFormSize : gaiji.job.gaiji_size_index,
          resolution_class_of(variant, gaiji.job.high_resolution_fonts), form};
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

Status fetch(FontSets& fonts, const Download& download, Glyph& glyph) {
  GlyphRequest request;
  request.typeface = download.character.typeface;
  request.code_set = download.character.code_set;
  request.size_index = fetch_size(download);
  request.library_code = library_code(download.character);
  return fal_read_glyph(fonts, request, glyph, 1);
}

void select_download_set(CharacterSetState& state, OutputBuffer& out) {
  if (state.set != CharacterSetState::kDoubleByte ||
      state.designation != CharacterSetState::kDownloadDesignation) {
    out.append_fitting(kSelectDownloadSet);
    state.select_download();
  }
}

void put_undefined(UndefinedGaijiRule rule, CharacterSetState& state, OutputBuffer& out) {
  if (rule == UndefinedGaijiRule::space) {
    out.append_fitting(kUndefinedAsSpace);
  } else {
    out.append_fitting(kUndefinedAsUbar);
    state.select_single_byte();
  }
}

void select_size(Gaiji& gaiji, const Download& download, OutputBuffer& out) {
  if (download.size_index != gaiji.cur_dl_size) {
    out.append_fitting(kSelectSize);
    append_bytes(out, size_code(download.resolution_class, download.size_index));
    gaiji.cur_dl_size = download.size_index;
  }
}

bool is_enlarged(FontSets& fonts, const Download& download) {
  const FontSize* const font = find_font(fonts, download.character.typeface,
                                         download.character.code_set, fetch_size(download));
  return font != nullptr && font->enlarged != 0;
}

void put_pattern(Gaiji& gaiji, const Download& download, const DownloadCode& code,
                 const GlyphPattern& pattern, OutputBuffer& out) {
  if (download.form == GaijiForm::kFixed) {
    append_download(download.form, fixed_geometry(), code, pattern, out);
    return;
  }
  // In the unencoded form a sequence of the text output could stand before the size selection, and
  // another behind it. Nothing produces one.
  select_size(gaiji, download, out);
  const PatternGeometry& geometry = pattern_geometry(download.resolution_class, download.size_index,
                                                     is_enlarged(gaiji.fonts, download));
  append_download(download.form, geometry, code, pattern, out);
}

Status put_character(Gaiji& gaiji, const Download& download, UndefinedGaijiRule rule,
                     CharacterSetState& state, OutputBuffer& out) {
  GaijiCache& cache = gaiji.caches[static_cast<std::size_t>(download.size_index)];
  if (const GaijiCacheEntry* const entry = gaiji_cache_find(cache, download.character)) {
    append_code(out, entry->code);
    return ST_OK;
  }
  Glyph glyph;
  const Status status = fetch(gaiji.fonts, download, glyph);
  if (status == kGlyphUndefined) {
    put_undefined(rule, state, out);
    return ST_OK;
  }
  if (status != ST_OK) {
    out.length = 0;
    return status;
  }
  const DownloadCode code = gaiji_cache_add(cache, download.character);
  put_pattern(gaiji, download, code, glyph.pattern, out);
  append_code(out, code);
  return ST_OK;
}

}  // namespace

Status gaiji_put(Gaiji& gaiji, const CommandRecord& record, UndefinedGaijiRule rule,
                 CharacterSetState& state, OutputBuffer& out) {
  out.length = 0;
  select_download_set(state, out);
  const std::optional<GaijiCharacter> character = character_of(gaiji.job, record);
  if (!character) {
    put_undefined(rule, state, out);
    return ST_OK;
  }
  const Download download = download_of(gaiji, *character);
  if (download.size_index < kSmallestGaijiSize || download.size_index > kLargestGaijiSize) {
    put_undefined(rule, state, out);
    return ST_OK;
  }
  return put_character(gaiji, download, rule, state, out);
}

void gaiji_reset_size(Gaiji& gaiji) {
  gaiji.cur_dl_size = kUnknownSize;
}

void gaiji_reset_cache(Gaiji& gaiji) {
  for (GaijiCache& cache : gaiji.caches) {
    gaiji_cache_clear(cache);
  }
}

}  // namespace rlx
