#include "fonts/font_sets.h"

#include <algorithm>
#include <cstdlib>

namespace rlx {

namespace {

/// `fallback` of a size that has none, and of one that is only marked as enlarged.
constexpr int kNoFallback = -1;
constexpr int kMarkOnly = -2;

/// What becomes of one size index of a class.
struct SizeRule {
  bool enlarged = false;       ///< a font of this size is larger than its cell
  int fallback = kNoFallback;  ///< without a mincho font: the size index whose font is used
};

constexpr SizeRule kPlain{};

/// By FontClass, then size index.
constexpr std::array<std::array<SizeRule, kFontSizes>, kFontClasses> kSizeRules{{
    {{kPlain, kPlain, kPlain, {true, 2}, kPlain, kPlain}},
    {{kPlain, kPlain, {true, 1}, kPlain, {true, 3}, kPlain}},
    {{kPlain, {true, kMarkOnly}, {true, kMarkOnly}, kPlain, {true, kMarkOnly}, kPlain}},
    {{kPlain, {true, 0}, {true, 0}, kPlain, {true, 3}, kPlain}},
}};

/// The class whose enlarged fonts are read at their own size; the others read at pattern size.
constexpr FontClass kClassWithEnlargedReads = kLowClass;
/// The size index that has no font of its own, and the one that lends it one.
constexpr std::size_t kBorrowingSize = 5;
constexpr std::size_t kLendingSize = 3;

/// Everything that the opening of one set needs to know.
struct SetOpening {
  FontSets& fonts;
  FontSet& set;
  int typeface;
  int code_set;
  FontClass font_class;
  int report_flag;
};

const FontSizeTable& size_table(FontClass font_class, std::size_t index) {
  return kFontSizeTables[static_cast<std::size_t>(font_class)][index];
}

const SizeRule& size_rule(FontClass font_class, std::size_t index) {
  return kSizeRules[static_cast<std::size_t>(font_class)][index];
}

/// The library takes its locale from the environment. putenv keeps the texts themselves, so they
/// live as long as the process.
void set_library_locale() {
  static constexpr const char* kLanguage = "LANG=ja";
  static constexpr const char* kLibraryLanguage = "FAL_LANG=ja_JP.U90";
  // putenv's parameter is not const for history's sake; nothing writes to the texts.
  putenv(const_cast<char*>(kLanguage));
  putenv(const_cast<char*>(kLibraryLanguage));
}

FalFontQuery font_query(int typeface, int code_set, const FontSizeTable& size) {
  const bool mincho = typeface == kTypefaceMincho;
  const bool g1 = code_set == kCodeSetG1;
  FalFontQuery query{};
  query.style = mincho ? 1 : 2;
  query.style_name = mincho ? "mincho" : "gothic";
  query.shape = 1;
  query.shape_name = "zenkaku";
  query.code_set = g1 ? 2 : 4;
  query.code_set_name = g1 ? "u90_01" : "u90_03";
  query.code_set_again = query.code_set;
  query.final_number = 2;
  query.size_width = query.size_height = size.font_dots;
  query.letter_width = query.letter_height = size.letter_dots;
  query.letter_offset_h = query.letter_offset_v = size.letter_offset;
  return query;
}

/// True for the size whose font also answers for kBorrowingSize.
bool lends_font(FontClass font_class, std::size_t index) {
  return index == kLendingSize && size_table(font_class, kBorrowingSize).font_dots != 0;
}

void use_font(FontSize& size, std::int32_t font_id) {
  size.opened = 1;
  size.font_id = font_id;
}

/// Takes which font answers, but not the read size, which belongs to the size index.
void copy_font(FontSize& size, const FontSize& source) {
  size.opened = source.opened;
  size.enlarged = source.enlarged;
  size.font_id = source.font_id;
}

void take_font(const SetOpening& opening, std::size_t index, std::int32_t font_id) {
  FontSize& size = opening.set.sizes[index];
  use_font(size, font_id);
  if (size_rule(opening.font_class, index).enlarged) {
    size.enlarged = 1;
  }
  if (lends_font(opening.font_class, index)) {
    use_font(opening.set.sizes[kBorrowingSize], font_id);
  }
}

void fall_back_to_mincho(const SetOpening& opening, std::size_t index) {
  const FontSet& mincho = *find_font_set(opening.fonts, kTypefaceMincho, opening.code_set);
  copy_font(opening.set.sizes[index], mincho.sizes[index]);
  // Only G3 has characters that use the borrowing size.
  if (opening.code_set == kCodeSetG3 && lends_font(opening.font_class, index)) {
    copy_font(opening.set.sizes[kBorrowingSize], mincho.sizes[index]);
  }
}

/// A neighbour's font is never marked as enlarged: it is read at the size of the cell.
void fall_back_to_neighbour(const SetOpening& opening, std::size_t index) {
  const int fallback = size_rule(opening.font_class, index).fallback;
  FontSize& size = opening.set.sizes[index];
  if (fallback == kMarkOnly) {
    size.enlarged = 1;
  } else if (fallback != kNoFallback) {
    const FontSize& neighbour = opening.set.sizes[static_cast<std::size_t>(fallback)];
    if (neighbour.opened != 0) {
      use_font(size, neighbour.font_id);
    }
  }
}

/// Asks the library for one font. The error is reported before the list is freed, which might
/// change the library's error state.
std::int32_t open_font(const SetOpening& opening, std::size_t index) {
  const FalFontQuery query =
      font_query(opening.typeface, opening.code_set, size_table(opening.font_class, index));
  FalFontList* missing = nullptr;
  const std::int32_t font_id = opening.fonts.library.open_sys_font(&query, kFalQueryMask, &missing);
  if (font_id == kFalOpenError && opening.report_flag == 1) {
    fal_report_last_error(opening.fonts.library);
  }
  if (missing != nullptr) {
    opening.fonts.library.free_font_list(missing);
  }
  return font_id;
}

Status open_size(const SetOpening& opening, std::size_t index) {
  const std::int32_t font_id = open_font(opening, index);
  if (font_id == kFalOpenError) {
    return ST_FONT_ERROR;
  }
  if (font_id != kFalNoFont) {
    take_font(opening, index, font_id);
  } else if (opening.typeface == kTypefaceGothic) {
    fall_back_to_mincho(opening, index);
  } else {
    fall_back_to_neighbour(opening, index);
  }
  return ST_OK;
}

/// Opens the sets of one typeface, G1 before G3.
Status open_typeface(FontSets& fonts, int typeface, FontClass font_class, int report_flag) {
  for (const int code_set : {kCodeSetG1, kCodeSetG3}) {
    FontSet& set = *find_font_set(fonts, typeface, code_set);
    const Status status = font_set_open(fonts, set, typeface, code_set, font_class, report_flag);
    if (status != ST_OK) {
      return status;
    }
  }
  return ST_OK;
}

void set_read_sizes(FontSet& set, FontClass font_class) {
  for (std::size_t index = 0; index < kFontSizes; ++index) {
    const FontSizeTable& table = size_table(font_class, index);
    FontSize& size = set.sizes[index];
    const bool at_font_size = font_class == kClassWithEnlargedReads && size.enlarged == 1;
    size.read_h = size.read_w = at_font_size ? table.font_dots : table.pattern_dots;
  }
}

}  // namespace

FontClass font_class_of(int font_variant, int high_resolution_fonts) {
  const bool high = high_resolution_fonts != 0;
  switch (font_variant) {
    case kFixedFont:
      return kFixedClass;
    case kAllFonts:
      return high ? kHighClass : kLowClass;
    case kFineFonts:
      return high ? kFineClass : kNoFontClass;
    default:
      return kNoFontClass;
  }
}

Status fonts_open(FontSets& fonts, int font_variant, int high_resolution_fonts, int report_flag,
                  int second_typeface) {
  const FontClass font_class = font_class_of(font_variant, high_resolution_fonts);
  if (font_class == kNoFontClass) {
    return ST_NO_FONT_CLASS;
  }
  fonts.sets = {};
  if (!fal_available(fonts.library)) {
    return ST_OK;
  }
  Status status = open_typeface(fonts, kTypefaceMincho, font_class, report_flag);
  if (status == ST_OK && second_typeface != 0) {
    status = open_typeface(fonts, kTypefaceGothic, font_class, report_flag);
  }
  if (status != ST_OK) {
    fonts_close(fonts);
    return status;
  }
  for (FontSet& set : fonts.sets) {
    set_read_sizes(set, font_class);
  }
  if (second_typeface == 0) {
    for (const int code_set : {kCodeSetG1, kCodeSetG3}) {
      *find_font_set(fonts, kTypefaceGothic, code_set) =
          *find_font_set(fonts, kTypefaceMincho, code_set);
    }
  }
  return ST_OK;
}

void fonts_close(FontSets& fonts) {
  if (!fal_available(fonts.library)) {
    return;
  }
  std::array<std::int32_t, kTypefaces * kCodeSets * kFontSizes> closed{};
  auto closed_end = closed.begin();
  for (const FontSet& set : fonts.sets) {
    for (const FontSize& size : set.sizes) {
      if (size.font_id > 0 && std::find(closed.begin(), closed_end, size.font_id) == closed_end) {
        *closed_end++ = size.font_id;
        fonts.library.close_font(size.font_id);
      }
    }
  }
  fonts.sets = {};
}

Status font_set_open(FontSets& fonts, FontSet& set, int typeface, int code_set,
                     FontClass font_class, int report_flag) {
  set_library_locale();
  const SetOpening opening{fonts, set, typeface, code_set, font_class, report_flag};
  for (std::size_t index = 0; index < kFontSizes; ++index) {
    if (size_table(font_class, index).enabled == 0) {
      continue;
    }
    const Status status = open_size(opening, index);
    if (status != ST_OK) {
      return status;
    }
  }
  return ST_OK;
}

}  // namespace rlx
