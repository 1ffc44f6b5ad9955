#include "fonts/gaiji_pattern.h"

#include <algorithm>

#include "job/control_bytes.h"
#include "job/settings.h"

namespace rlx {

namespace {

constexpr std::uint8_t kAllFour = 0xF;
/// Of the 17th character of a row of 66 dots only dots 65 and 66 are sent.
constexpr std::uint8_t kFirstTwo = 0xC;

constexpr std::size_t kGaijiSizes = kLargestGaijiSize;
using GeometryRow = std::array<PatternGeometry, kGaijiSizes>;

/// By resolution class, then size 1 to 4. The pattern of class 0, size 1 is always cropped.
constexpr std::array<GeometryRow, kResolutionClasses> kGeometries{{
    {{{24, 1, 22, 6, kAllFour},
      {28, 0, 28, 7, kAllFour},
      {32, 0, 32, 8, kAllFour},
      {36, 0, 36, 9, kAllFour}}},
    {{{40, 0, 40, 10, kAllFour},
      {50, 0, 50, 13, kAllFour},
      {60, 0, 60, 15, kAllFour},
      {66, 0, 66, 17, kFirstTwo}}},
    {{{40, 0, 40, 10, kAllFour},
      {50, 0, 50, 13, kAllFour},
      {60, 0, 60, 15, kAllFour},
      {72, 0, 72, 18, kAllFour}}},
}};

/// Class 0 when the font's pattern is larger than the cell, by size 1 to 4.
constexpr GeometryRow kEnlargedGeometries{{{24, 1, 22, 6, kAllFour},
                                           {30, 1, 28, 7, kAllFour},
                                           {32, 0, 32, 8, kAllFour},
                                           {40, 2, 36, 9, kAllFour}}};

constexpr PatternGeometry kFixedGeometry{24, 0, 24, 6, kAllFour};

/// By resolution class, then size 1 to 4.
constexpr std::array<std::array<std::string_view, kGaijiSizes>, kResolutionClasses> kSizeCodes{{
    {"\"r", "\"x", "#r", "#v"},
    {"$p", "%p", "&p", "&v"},
    {"$p", "%p", "&p", "'r"},
}};

constexpr std::array<std::uint8_t, 3> kFixedIntroducer{kFs, '2', '0'};
constexpr std::array<std::uint8_t, 3> kNibblesIntroducer{kFs, '2', '1'};
constexpr std::array<std::uint8_t, 5> kUnencodedIntroducer{kEsc, 'Q', '0', ' ', 'D'};

/// A geometry reads its rows inside the pattern and sends no characters that a row does not have.
constexpr bool is_sound(const PatternGeometry& geometry) {
  const std::int32_t rows_read = geometry.crop + geometry.rows;
  return geometry.font_dots <= kMaxPatternDots && rows_read <= geometry.font_dots &&
         geometry.row_characters <= 2 * geometry.row_bytes();
}

constexpr bool all_are_sound(const GeometryRow& row) {
  return std::all_of(row.begin(), row.end(), is_sound);
}

static_assert(std::all_of(kGeometries.begin(), kGeometries.end(), all_are_sound));
static_assert(all_are_sound(kEnlargedGeometries) && is_sound(kFixedGeometry));

std::size_t size_position(int size_index) {
  return static_cast<std::size_t>(size_index - kSmallestGaijiSize);
}

void append_byte(OutputBuffer& out, unsigned byte) {
  const auto one = static_cast<std::uint8_t>(byte);
  out.append_fitting({&one, 1});
}

constexpr std::size_t kMaxRowBytes = kMaxPatternDots / 8;
using Row = std::array<std::uint8_t, kMaxRowBytes>;

/// One row that is sent, its cropped dots shifted out at the left and as many blank ones in at the
/// right.
Row cropped_row(const PatternGeometry& geometry, const GlyphPattern& pattern, std::int32_t number) {
  const auto row_bytes = static_cast<std::size_t>(geometry.row_bytes());
  const auto crop = static_cast<unsigned>(geometry.crop);
  const std::uint8_t* const source =
      pattern.data() + static_cast<std::size_t>(geometry.crop + number) * row_bytes;
  Row row{};
  for (std::size_t position = 0; position < row_bytes; ++position) {
    const unsigned here = source[position];
    const unsigned follower = position + 1 < row_bytes ? source[position + 1] : 0U;
    row[position] = static_cast<std::uint8_t>(here << crop | follower >> (8U - crop));
  }
  return row;
}

/// Appends a row as characters of 4 dots each.
void append_nibbles(const PatternGeometry& geometry, const Row& row, OutputBuffer& out) {
  for (std::int32_t number = 0; number < geometry.row_characters; ++number) {
    const unsigned byte = row[static_cast<std::size_t>(number / 2)];
    const unsigned nibble = number % 2 == 0 ? byte >> 4U : byte & 0xFU;
    const unsigned mask = number + 1 == geometry.row_characters ? geometry.last_mask : kAllFour;
    append_byte(out, '0' + (nibble & mask));
  }
}

void append_unencoded(const PatternGeometry& geometry, const Row& row, OutputBuffer& out) {
  out.append_fitting(Bytes(row).first(static_cast<std::size_t>(geometry.row_bytes())));
}

Bytes introducer(GaijiForm form) {
  switch (form) {
    case GaijiForm::kFixed:
      return kFixedIntroducer;
    case GaijiForm::kUnencoded:
      return kUnencodedIntroducer;
    case GaijiForm::kNibbles:
      break;
  }
  return kNibblesIntroducer;
}

}  // namespace

int resolution_class_of(int font_variant, int high_resolution_fonts) {
  if (font_variant == kFineFonts) {
    return 2;
  }
  return high_resolution_fonts != 0 ? 1 : 0;
}

GaijiForm gaiji_form_of(int font_variant, std::uint32_t printer_class) {
  if (font_variant == kFixedFont) {
    return GaijiForm::kFixed;
  }
  const bool takes_unencoded = font_variant == kAllFonts && printer_class == kPrinterClassF1;
  return takes_unencoded ? GaijiForm::kUnencoded : GaijiForm::kNibbles;
}

const PatternGeometry& pattern_geometry(int resolution_class, int size_index, bool enlarged) {
  const GeometryRow& row = enlarged && resolution_class == 0
                               ? kEnlargedGeometries
                               : kGeometries[static_cast<std::size_t>(resolution_class)];
  return row[size_position(size_index)];
}

const PatternGeometry& fixed_geometry() {
  return kFixedGeometry;
}

std::string_view size_code(int resolution_class, int size_index) {
  return kSizeCodes[static_cast<std::size_t>(resolution_class)][size_position(size_index)];
}

void append_bytes(OutputBuffer& out, std::string_view bytes) {
  out.append_fitting({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

void append_code(OutputBuffer& out, const DownloadCode& code) {
  out.append_fitting(code);
}

void append_download(GaijiForm form, const PatternGeometry& geometry, const DownloadCode& code,
                     const GlyphPattern& pattern, OutputBuffer& out) {
  out.append_fitting(introducer(form));
  append_code(out, code);
  for (std::int32_t number = 0; number < geometry.rows; ++number) {
    const Row row = cropped_row(geometry, pattern, number);
    if (form == GaijiForm::kUnencoded) {
      append_unencoded(geometry, row, out);
    } else {
      append_nibbles(geometry, row, out);
    }
  }
}

}  // namespace rlx
