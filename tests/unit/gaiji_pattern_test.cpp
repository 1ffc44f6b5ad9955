#include "fonts/gaiji_pattern.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "job/settings.h"
#include "support/glyph_bitmap.h"

namespace rlx {
namespace {

using testing::Bitmap;
using testing::expected_bitmap;

constexpr int kFontId = 4711;
constexpr std::uint32_t kCode = 0x8FF5A1;
constexpr DownloadCode kDownloadCode{'v', 'x'};

/// A class, size and enlarged flag, and what is sent of a pattern then.
struct Sent {
  int resolution_class;
  int size_index;
  bool enlarged;
  int font_dots;
  int crop;
  int rows;
  int row_characters;  ///< of 4 dots
  int row_bytes;       ///< of 8 dots
  int pattern_length;  ///< characters of a download in nibbles
};

std::ostream& operator<<(std::ostream& stream, const Sent& sent) {
  return stream << "class " << sent.resolution_class << " size " << sent.size_index
                << (sent.enlarged ? " enlarged" : "");
}

const std::vector<Sent> kAllSent{
    {0, 1, false, 24, 1, 22, 6, 3, 132},   {0, 1, true, 24, 1, 22, 6, 3, 132},
    {0, 2, false, 28, 0, 28, 7, 4, 196},   {0, 2, true, 30, 1, 28, 7, 4, 196},
    {0, 3, false, 32, 0, 32, 8, 4, 256},   {0, 3, true, 32, 0, 32, 8, 4, 256},
    {0, 4, false, 36, 0, 36, 9, 5, 324},   {0, 4, true, 40, 2, 36, 9, 5, 324},
    {1, 1, false, 40, 0, 40, 10, 5, 400},  {1, 1, true, 40, 0, 40, 10, 5, 400},
    {1, 2, false, 50, 0, 50, 13, 7, 650},  {1, 2, true, 50, 0, 50, 13, 7, 650},
    {1, 3, false, 60, 0, 60, 15, 8, 900},  {1, 3, true, 60, 0, 60, 15, 8, 900},
    {1, 4, false, 66, 0, 66, 17, 9, 1122}, {1, 4, true, 66, 0, 66, 17, 9, 1122},
    {2, 1, false, 40, 0, 40, 10, 5, 400},  {2, 1, true, 40, 0, 40, 10, 5, 400},
    {2, 2, false, 50, 0, 50, 13, 7, 650},  {2, 2, true, 50, 0, 50, 13, 7, 650},
    {2, 3, false, 60, 0, 60, 15, 8, 900},  {2, 3, true, 60, 0, 60, 15, 8, 900},
    {2, 4, false, 72, 0, 72, 18, 9, 1296}, {2, 4, true, 72, 0, 72, 18, 9, 1296},
};

/// What is sent of each row of the pattern, in dots; `columns` with the dots that only fill up the
/// last character or byte.
Bitmap expected(const Sent& sent, int columns) {
  return expected_bitmap(kFontId, kCode,
                         {sent.font_dots, sent.crop, sent.rows, columns, /*blank_from=*/columns});
}

class GaijiPatternTest : public ::testing::Test {
 protected:
  /// The bytes of one download.
  std::string download(GaijiForm form, const PatternGeometry& geometry) {
    const GlyphPattern pattern =
        testing::standin_pattern(kFontId, kCode, static_cast<int>(geometry.font_dots));
    return download(form, geometry, pattern);
  }

  std::string download(GaijiForm form, const PatternGeometry& geometry,
                       const GlyphPattern& pattern) {
    out_->length = 0;
    append_download(form, geometry, kDownloadCode, pattern, *out_);
    return {out_->bytes.begin(), out_->bytes.begin() + out_->length};
  }

  static const PatternGeometry& geometry_of(const Sent& sent) {
    return pattern_geometry(sent.resolution_class, sent.size_index, sent.enlarged);
  }

  std::unique_ptr<OutputBuffer> out_ = std::make_unique<OutputBuffer>();
};

// Which class, form and codes

TEST_F(GaijiPatternTest, ResolutionClasses) {
  EXPECT_EQ(resolution_class_of(kFixedFont, 0), 0);
  EXPECT_EQ(resolution_class_of(kFixedFont, 1), 1);
  EXPECT_EQ(resolution_class_of(kAllFonts, 0), 0);
  EXPECT_EQ(resolution_class_of(kAllFonts, 1), 1);
  EXPECT_EQ(resolution_class_of(kFineFonts, 0), 2);
  EXPECT_EQ(resolution_class_of(kFineFonts, 1), 2);
}

TEST_F(GaijiPatternTest, FormsOfVariantsAndPrinterClasses) {
  for (const std::uint32_t printer_class : {kPrinterClassF0, kPrinterClassF1, kPrinterClassF2}) {
    EXPECT_EQ(gaiji_form_of(kFixedFont, printer_class), GaijiForm::kFixed);
    EXPECT_EQ(gaiji_form_of(kFineFonts, printer_class), GaijiForm::kNibbles);
  }
  EXPECT_EQ(gaiji_form_of(kAllFonts, kPrinterClassF0), GaijiForm::kNibbles);
  EXPECT_EQ(gaiji_form_of(kAllFonts, kPrinterClassF1), GaijiForm::kUnencoded);
  EXPECT_EQ(gaiji_form_of(kAllFonts, kPrinterClassF2), GaijiForm::kNibbles);
}

TEST_F(GaijiPatternTest, SizeCodesOfEveryClassAndSize) {
  const char* const expected_codes[3][4] = {
      {"\"r", "\"x", "#r", "#v"}, {"$p", "%p", "&p", "&v"}, {"$p", "%p", "&p", "'r"}};
  for (int resolution_class = 0; resolution_class < 3; ++resolution_class) {
    for (int size_index = 1; size_index <= 4; ++size_index) {
      EXPECT_EQ(size_code(resolution_class, size_index),
                expected_codes[resolution_class][size_index - 1]);
    }
  }
}

// The fixed form

TEST_F(GaijiPatternTest, TheFixedFormSendsAllDotsOfA24DotPattern) {
  const std::string bytes = download(GaijiForm::kFixed, fixed_geometry());
  EXPECT_EQ(bytes.substr(0, 5),
            "\x1c"
            "20vx");
  ASSERT_EQ(bytes.size(), 5U + 144U);
  EXPECT_EQ(testing::decode_nibbles(bytes.substr(5), 6),
            expected_bitmap(kFontId, kCode, {24, 0, 24, 24, 24}));
}

TEST_F(GaijiPatternTest, TheFixedFormSendsTheHighNibbleFirst) {
  GlyphPattern pattern{};
  pattern[0] = 0x0F;
  pattern[1] = 0xA5;
  pattern[71] = 0x1E;
  const std::string bytes = download(GaijiForm::kFixed, fixed_geometry(), pattern);
  EXPECT_EQ(bytes.substr(5, 4), "0?:5");
  EXPECT_EQ(bytes.substr(147), "1>");
}

// Nibbles

TEST_F(GaijiPatternTest, NibblesOfEveryClassAndSizeDotByDot) {
  for (const Sent& sent : kAllSent) {
    SCOPED_TRACE(::testing::PrintToString(sent));
    const std::string bytes = download(GaijiForm::kNibbles, geometry_of(sent));
    EXPECT_EQ(bytes.substr(0, 5),
              "\x1c"
              "21vx");
    const std::string characters = bytes.substr(5);
    ASSERT_EQ(characters.size(), static_cast<std::size_t>(sent.pattern_length));
    Bitmap dots = expected(sent, sent.row_characters * 4);
    if (sent.font_dots == 66) {
      // Of the last character only dots 65 and 66 are sent.
      for (std::string& row : dots) {
        row.replace(66, 2, "..");
      }
    }
    EXPECT_EQ(testing::decode_nibbles(characters, static_cast<std::size_t>(sent.row_characters)),
              dots);
  }
}

TEST_F(GaijiPatternTest, TheLastColumnOfACroppedSize1IsBlank) {
  GlyphPattern black{};
  black.fill(0xFF);
  const std::string bytes =
      download(GaijiForm::kNibbles, pattern_geometry(0, 1, false), black).substr(5);
  for (std::size_t row = 0; row < 22; ++row) {
    EXPECT_EQ(bytes.substr(row * 6, 6), std::string(5, '?') + ">");
  }
}

TEST_F(GaijiPatternTest, The66DotRowsKeepTheirLastTwoDotsOnly) {
  GlyphPattern black{};
  black.fill(0xFF);
  const std::string bytes =
      download(GaijiForm::kNibbles, pattern_geometry(1, 4, false), black).substr(5);
  for (std::size_t row = 0; row < 66; ++row) {
    EXPECT_EQ(bytes.substr(row * 17, 17), std::string(16, '?') + "<");
  }
}

// Unencoded

TEST_F(GaijiPatternTest, UnencodedPatternsOfEveryClassAndSizeDotByDot) {
  for (const Sent& sent : kAllSent) {
    SCOPED_TRACE(::testing::PrintToString(sent));
    const std::string bytes = download(GaijiForm::kUnencoded, geometry_of(sent));
    EXPECT_EQ(bytes.substr(0, 7), "\x1bQ0 Dvx");
    const std::string pattern = bytes.substr(7);
    ASSERT_EQ(pattern.size(), static_cast<std::size_t>(sent.rows * sent.row_bytes));
    EXPECT_EQ(testing::decode_bytes(pattern, static_cast<std::size_t>(sent.row_bytes)),
              expected(sent, sent.row_bytes * 8));
  }
}

TEST_F(GaijiPatternTest, UncroppedPatternsAreCopiedAsTheyAre) {
  for (const Sent& sent : kAllSent) {
    if (sent.crop == 0) {
      SCOPED_TRACE(::testing::PrintToString(sent));
      const GlyphPattern pattern = testing::standin_pattern(kFontId, kCode, sent.font_dots);
      const std::string bytes = download(GaijiForm::kUnencoded, geometry_of(sent), pattern);
      const auto length = static_cast<std::size_t>(sent.font_dots * sent.row_bytes);
      EXPECT_EQ(bytes.substr(7), std::string(pattern.begin(), pattern.begin() + length));
    }
  }
}

TEST_F(GaijiPatternTest, CroppedRowsShiftTheNextByteInAndBlanksAtTheEnd) {
  GlyphPattern pattern{};
  pattern[3] = 0x80;  // second row, first byte: its first dot is cropped
  pattern[4] = 0x81;
  pattern[5] = 0xFF;
  const std::string bytes =
      download(GaijiForm::kUnencoded, pattern_geometry(0, 1, false), pattern).substr(7);
  EXPECT_EQ(bytes.substr(0, 3), "\x01\x03\xfe");
}

TEST_F(GaijiPatternTest, ADownloadIsAppendedBehindWhatIsThere) {
  append_bytes(*out_, "before");
  append_download(GaijiForm::kFixed, fixed_geometry(), kDownloadCode, GlyphPattern{}, *out_);
  append_code(*out_, {'u', '!'});
  const std::string bytes(out_->bytes.begin(), out_->bytes.begin() + out_->length);
  EXPECT_EQ(bytes,
            "before\x1c"
            "20vx" +
                std::string(144, '0') + "u!");
}

}  // namespace
}  // namespace rlx
