// Which pattern is downloaded in which form, with the fonts that each class opens.

#include "fonts/gaiji.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "fonts/font_sets.h"
#include "job/settings.h"
#include "support/gaiji_fixture.h"
#include "support/glyph_bitmap.h"
#include "support/standin_font_library.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::Bitmap;
using testing::expected_bitmap;
using testing::pattern_in;
using testing::standin_font_id;
using testing::take_font_calls;

using Calls = std::vector<std::string>;

using GaijiDownloadTest = testing::GaijiTest;

constexpr std::string_view kG1 = "\xf5\xa1";
constexpr std::string_view kOtherG1 = "\xf5\xa2";

// Classes, sizes and forms, with the fonts that the classes open

/// A job's settings, a size, and what is sent then.
struct Sent {
  int font_variant;
  int high_resolution_fonts;
  int size_index;
  const char* description;
  const char* call;
  const char* size_code;
  int font_id;
  int font_dots;
  int crop;
  int rows;
  int row_characters;
  int row_bytes;
};

const std::vector<Sent> kAllSent{
    // Resolution class 0
    {1, 0, 1, "every-font\n", "read 122422 f5a1 24x24", "\"r", 122422, 24, 1, 22, 6, 3},
    {1, 0, 2, "every-font\n", "read 123028 f5a1 30x30", "\"x", 123028, 30, 1, 28, 7, 4},
    {1, 0, 2, "every-font\nno-font 1 2 30 28\n", "read 122422 f5a1 28x28", "\"x", 122422, 28, 0, 28,
     7, 4},
    {1, 0, 3, "every-font\n", "read 123232 f5a1 32x32", "#r", 123232, 32, 0, 32, 8, 4},
    {1, 0, 4, "every-font\n", "read 124036 f5a1 40x40", "#v", 124036, 40, 2, 36, 9, 5},
    {1, 0, 4, "every-font\nno-font 1 2 40 36\n", "read 123232 f5a1 36x36", "#v", 123232, 36, 0, 36,
     9, 5},
    // Resolution class 1
    {1, 1, 1, "every-font\n", "read 124036 f5a1 40x40", "$p", 124036, 40, 0, 40, 10, 5},
    {1, 1, 2, "every-font\n", "read 125048 f5a1 50x50", "%p", 125048, 50, 0, 50, 13, 7},
    {1, 1, 3, "every-font\n", "read 126056 f5a1 60x60", "&p", 126056, 60, 0, 60, 15, 8},
    {1, 1, 4, "every-font\n", "read 126662 f5a1 66x66", "&v", 126662, 66, 0, 66, 17, 9},
    // Resolution class 2
    {2, 1, 1, "every-font\n", "read 124036 f5a1 40x40", "$p", 124036, 40, 0, 40, 10, 5},
    {2, 1, 2, "every-font\n", "read 125048 f5a1 50x50", "%p", 125048, 50, 0, 50, 13, 7},
    {2, 1, 3, "every-font\n", "read 126056 f5a1 60x60", "&p", 126056, 60, 0, 60, 15, 8},
    {2, 1, 4, "every-font\n", "read 126662 f5a1 72x72", "'r", 126662, 72, 0, 72, 18, 9},
};

Bitmap expected_dots(const Sent& sent, int columns) {
  return expected_bitmap(sent.font_id, 0xF5A1,
                         {sent.font_dots, sent.crop, sent.rows, columns, columns});
}

TEST_F(GaijiDownloadTest, EveryClassAndSizeInNibblesDotByDot) {
  for (const std::uint32_t printer_class : {kPrinterClassF0, kPrinterClassF1, kPrinterClassF2}) {
    for (const Sent& sent : kAllSent) {
      if (printer_class == kPrinterClassF1 && sent.font_variant == 1) {
        continue;  // the unencoded form
      }
      SCOPED_TRACE(sent.call);
      the_filter().command_line.printer_class = printer_class;
      the_filter().job.gaiji_size_index = sent.size_index;
      start(sent.font_variant, sent.high_resolution_fonts, 0, sent.description);
      const std::string output = put(kG1);
      const std::string pattern = pattern_in(output, {std::string("\x1b$D\x1c"
                                                                  "0") +
                                                          sent.size_code +
                                                          "\x1c"
                                                          "21u!",
                                                      "u!"});
      Bitmap dots = expected_dots(sent, sent.row_characters * 4);
      if (sent.font_dots == 66) {
        for (std::string& row : dots) {
          row.replace(66, 2, "..");
        }
      }
      EXPECT_EQ(testing::decode_nibbles(pattern, static_cast<std::size_t>(sent.row_characters)),
                dots);
      EXPECT_EQ(take_font_calls(), Calls{sent.call});
    }
  }
}

TEST_F(GaijiDownloadTest, EveryClassAndSizeUnencodedDotByDot) {
  the_filter().command_line.printer_class = kPrinterClassF1;
  for (const Sent& sent : kAllSent) {
    if (sent.font_variant != 1) {
      continue;  // always in nibbles
    }
    SCOPED_TRACE(sent.call);
    the_filter().job.gaiji_size_index = sent.size_index;
    start(sent.font_variant, sent.high_resolution_fonts, 0, sent.description);
    const std::string output = put(kG1);
    const std::string pattern = pattern_in(output, {std::string("\x1b$D\x1c"
                                                                "0") +
                                                        sent.size_code + "\x1bQ0 Du!",
                                                    "u!"});
    EXPECT_EQ(testing::decode_bytes(pattern, static_cast<std::size_t>(sent.row_bytes)),
              expected_dots(sent, sent.row_bytes * 8));
    EXPECT_EQ(take_font_calls(), Calls{sent.call});
  }
}

TEST_F(GaijiDownloadTest, TheFixedFormUsesSize3WhateverTheSizeIs) {
  for (int size_index = 0; size_index <= 5; ++size_index) {
    SCOPED_TRACE(size_index);
    the_filter().job.gaiji_size_index = size_index;
    start(0, 0);
    const std::string pattern = pattern_in(put(kG1), {"\x1b$D\x1c"
                                                      "20u!",
                                                      "u!"});
    EXPECT_EQ(testing::decode_nibbles(pattern, 6),
              expected_bitmap(standin_font_id(1, 2, 24, 24), 0xF5A1, {24, 0, 24, 24, 24}));
    EXPECT_EQ(take_font_calls(), (Calls{"read 122424 f5a1 24x24"}));
  }
}

TEST_F(GaijiDownloadTest, TheFixedFormHasOneCacheForAllSizes) {
  start(0, 0);
  put(kG1);
  the_filter().job.gaiji_size_index = 4;
  EXPECT_EQ(put(kG1), "u!");
  EXPECT_EQ(put(kOtherG1).substr(0, 5),
            "\x1c"
            "20u\"");
}

TEST_F(GaijiDownloadTest, TheFixedFormLeavesTheDownloadSizeAlone) {
  start(0, 0);
  put(kG1);
  EXPECT_EQ(the_filter().gaiji.cur_dl_size, kUnknownSize);
}

TEST_F(GaijiDownloadTest, TheFixedFormHasNoSpecialRows) {
  the_filter().job.gaiji_size_index = 4;
  start(0, 0);
  put("\x8f\xd6\xa1");
  EXPECT_EQ(take_font_calls(), (Calls{"read 142424 8fd6a1 24x24"}));
}

// Rows 0xD6 to 0xDC of G3

TEST_F(GaijiDownloadTest, SpecialRowsOfG3AreReadFromTheFontOfIndex5) {
  the_filter().job.gaiji_size_index = 4;
  start(1, 0);
  put(kG1);
  take_font_calls();
  for (int c1 = 0xA1; c1 <= 0xFE; ++c1) {
    const bool special = c1 >= 0xD6 && c1 <= 0xDC;
    const std::string output = put(std::string("\x8f") + static_cast<char>(c1) + "\xa1");
    const std::string code{'u', static_cast<char>('!' + (c1 - 0xA1 + 1) % 94)};
    const std::string expected_code = c1 == 0xFE ? "v!" : code;
    const std::string pattern = pattern_in(output, {"\x1c"
                                                    "21" +
                                                        expected_code,
                                                    expected_code});
    const auto library_code = 0x8F0000U + static_cast<unsigned>(c1) * 256U + 0xA1U;
    const Bitmap expected =
        special ? expected_bitmap(standin_font_id(1, 4, 32, 32), library_code, {36, 0, 36, 36, 36})
                : expected_bitmap(standin_font_id(1, 4, 40, 36), library_code, {40, 2, 36, 36, 36});
    EXPECT_EQ(testing::decode_nibbles(pattern, 9), expected) << c1;
  }
}

TEST_F(GaijiDownloadTest, SpecialRowsAreCachedAndSelectedAsSize4) {
  the_filter().job.gaiji_size_index = 4;
  start(1, 0);
  EXPECT_EQ(put("\x8f\xd6\xa1").substr(0, 12),
            "\x1b$D\x1c"
            "0#v\x1c"
            "21u!");
  EXPECT_EQ(put("\x8f\xd6\xa1"), "u!");
  EXPECT_EQ(the_filter().gaiji.caches[4].count, 1U);
}

TEST_F(GaijiDownloadTest, SpecialRowsUseTheEnlargedFlagOfIndex5) {
  the_filter().job.gaiji_size_index = 4;
  start(1, 0);
  find_font_set(the_filter().fonts, kTypefaceMincho, kCodeSetG3)->sizes[5] = {1, 1, 55, 40, 40};
  const std::string pattern = pattern_in(put("\x8f\xd6\xa1"), {"\x1b$D\x1c"
                                                               "0#v\x1c"
                                                               "21u!",
                                                               "u!"});
  EXPECT_EQ(testing::decode_nibbles(pattern, 9),
            expected_bitmap(55, 0x8FD6A1, {40, 2, 36, 36, 36}));
}

TEST_F(GaijiDownloadTest, SpecialRowsAreThoseOfG3InSize4OfTheLowestClassOnly) {
  start(1, 0);
  the_filter().job.gaiji_size_index = 4;
  put("\xd6\xa1");
  the_filter().job.gaiji_size_index = 3;
  put("\x8f\xd6\xa1");
  EXPECT_EQ(take_font_calls(), (Calls{"read 124036 d6a1 40x40", "read 143232 8fd6a1 32x32"}));
  start(1, 1);
  the_filter().job.gaiji_size_index = 4;
  put("\x8f\xd6\xa1");
  EXPECT_EQ(take_font_calls(), (Calls{"read 146662 8fd6a1 66x66"}));
  start(2, 1);
  put("\x8f\xd6\xa1");
  EXPECT_EQ(take_font_calls(), (Calls{"read 146662 8fd6a1 72x72"}));
}

}  // namespace
}  // namespace rlx
