#include "fonts/gaiji.h"

#include <gtest/gtest.h>

#include <climits>
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
using testing::describe_fonts;
using testing::expected_bitmap;
using testing::GaijiTest;
using testing::pattern_in;
using testing::standin_font_id;
using testing::take_font_calls;

using Calls = std::vector<std::string>;

constexpr std::string_view kG1 = "\xf5\xa1";
constexpr std::string_view kOtherG1 = "\xf5\xa2";
constexpr std::string_view kG3 = "\x8f\xf5\xa1";

/// The n-th of many characters of G1.
std::string nth_character(int number) {
  return {static_cast<char>(0xF5 + number / 94), static_cast<char>(0xA1 + number % 94)};
}

// A first character

TEST_F(GaijiTest, AFirstCharacterSelectsSetAndSizeAndIsDownloadedAndPrinted) {
  start(1, 1);
  const std::string output = put(kG1);
  EXPECT_EQ(status_, 0);
  const std::string pattern = pattern_in(output, {"\x1b$D\x1c"
                                                  "0$p\x1c"
                                                  "21u!",
                                                  "u!"});
  EXPECT_EQ(testing::decode_nibbles(pattern, 10),
            expected_bitmap(standin_font_id(1, 2, 40, 36), 0xF5A1, {40, 0, 40, 40, 40}));
  EXPECT_EQ(take_font_calls(), (Calls{"read 124036 f5a1 40x40"}));
  expect_state(CharacterSetState::kDoubleByte, CharacterSetState::kDownloadDesignation);
}

TEST_F(GaijiTest, ACharacterOfG3IsReadByItsLongCode) {
  start(1, 1);
  const std::string pattern = pattern_in(put(kG3), {"\x1b$D\x1c"
                                                    "0$p\x1c"
                                                    "21u!",
                                                    "u!"});
  EXPECT_EQ(testing::decode_nibbles(pattern, 10),
            expected_bitmap(standin_font_id(1, 4, 40, 36), 0x8FF5A1, {40, 0, 40, 40, 40}));
  EXPECT_EQ(take_font_calls(), (Calls{"read 144036 8ff5a1 40x40"}));
}

TEST_F(GaijiTest, TheSameCharacterTwiceDownloadsOnceAndPrintsItsCodeTwice) {
  start(1, 1);
  put(kG1);
  take_font_calls();
  EXPECT_EQ(put(kG1), "u!");
  EXPECT_EQ(status_, 0);
  EXPECT_EQ(take_font_calls(), Calls{});
}

TEST_F(GaijiTest, WhatTheBufferHeldBeforeIsCleared) {
  start(1, 1);
  put(kG1);
  out_.length = kPageBufferBytes;
  EXPECT_EQ(put(kG1), "u!");
}

// The cache

TEST_F(GaijiTest, The95th188thAnd189thNewCharacterOfOneSize) {
  start(1, 0);
  for (int number = 0; number < 188; ++number) {
    const std::string code{number < 94 ? 'u' : 'v', static_cast<char>('!' + number % 94)};
    const std::string output = put(nth_character(number));
    const std::string before = number == 0 ? "\x1b$D\x1c"
                                             "0\"r"
                                           : "";
    EXPECT_EQ(pattern_in(output, {before +
                                      "\x1c"
                                      "21" +
                                      code,
                                  code})
                  .size(),
              132U)
        << number;
    EXPECT_EQ(code == "v!", number == 94);
    EXPECT_EQ(code == "v~", number == 187);
  }
  // The 189th takes the first one's code, with its own pattern.
  EXPECT_EQ(put(nth_character(0)), "u!");
  const std::string pattern = pattern_in(put(nth_character(188)), {"\x1c"
                                                                   "21u!",
                                                                   "u!"});
  EXPECT_EQ(testing::decode_nibbles(pattern, 6),
            expected_bitmap(standin_font_id(1, 2, 24, 22), 0xF7A1, {24, 1, 22, 24, 24}));
  EXPECT_EQ(put(nth_character(188)), "u!");
  // The first one is new again and takes the second one's.
  EXPECT_EQ(put(nth_character(1)), "u\"");
  pattern_in(put(nth_character(0)), {"\x1c"
                                     "21u\"",
                                     "u\""});
  EXPECT_EQ(put(nth_character(187)), "v~");
}

TEST_F(GaijiTest, EachSizeHasItsOwnCodes) {
  start(1, 0);
  const char* const size_codes[] = {"\"r", "\"x", "#r", "#v"};
  for (int size_index = 1; size_index <= 4; ++size_index) {
    the_filter().job.gaiji_size_index = size_index;
    const std::string before = size_index == 1 ? "\x1b$D" : "";
    pattern_in(put(kG1), {before +
                              "\x1c"
                              "0" +
                              size_codes[size_index - 1] +
                              "\x1c"
                              "21u!",
                          "u!"});
  }
  for (int size_index = 1; size_index <= 4; ++size_index) {
    the_filter().job.gaiji_size_index = size_index;
    EXPECT_EQ(put(kG1), "u!");
  }
}

TEST_F(GaijiTest, TwoTypefacesOfTheSameCodeAreCachedSeparately) {
  start(1, 1, 1);
  put(kG1);
  the_filter().job.gaiji_typeface = kTypefaceGothic;
  const std::string pattern = pattern_in(put(kG1), {"\x1c"
                                                    "21u\"",
                                                    "u\""});
  EXPECT_EQ(testing::decode_nibbles(pattern, 10),
            expected_bitmap(standin_font_id(2, 2, 40, 36), 0xF5A1, {40, 0, 40, 40, 40}));
  EXPECT_EQ(put(kG1), "u\"");
  the_filter().job.gaiji_typeface = kTypefaceMincho;
  EXPECT_EQ(put(kG1), "u!");
}

TEST_F(GaijiTest, WithoutTheSecondTypefaceGothicPrintsMinchoPatternsCachedSeparately) {
  start(1, 1, 0);
  put(kG1);
  take_font_calls();
  the_filter().job.gaiji_typeface = kTypefaceGothic;
  const std::string pattern = pattern_in(put(kG1), {"\x1c"
                                                    "21u\"",
                                                    "u\""});
  EXPECT_EQ(testing::decode_nibbles(pattern, 10),
            expected_bitmap(standin_font_id(1, 2, 40, 36), 0xF5A1, {40, 0, 40, 40, 40}));
  EXPECT_EQ(take_font_calls(), (Calls{"read 124036 f5a1 40x40"}));
}

TEST_F(GaijiTest, TwoCodeSetsOfTheSameCodeAreCachedSeparately) {
  start(1, 1);
  put(kG1);
  pattern_in(put(kG3), {"\x1c"
                        "21u\"",
                        "u\""});
  EXPECT_EQ(put(kG1), "u!");
  EXPECT_EQ(put(kG3), "u\"");
}

TEST_F(GaijiTest, ACacheResetDownloadsEveryCharacterAgain) {
  start(1, 0);
  for (int size_index = 1; size_index <= 4; ++size_index) {
    the_filter().job.gaiji_size_index = size_index;
    put(kG1);
    put(kOtherG1);
  }
  gaiji_reset_cache(the_filter().gaiji);
  for (int size_index = 4; size_index >= 1; --size_index) {
    the_filter().job.gaiji_size_index = size_index;
    EXPECT_TRUE(put(kOtherG1).ends_with("u!"));
    EXPECT_GT(out_.length, 2);
    EXPECT_EQ(put(kOtherG1), "u!");
  }
  for (const GaijiCache& cache : the_filter().gaiji.caches) {
    EXPECT_LE(cache.count, 1U);
  }
}

TEST_F(GaijiTest, ACacheResetPutsAllFiveCodePairsBack) {
  for (GaijiCache& cache : the_filter().gaiji.caches) {
    gaiji_cache_add(cache, {1, 0, 0xF5, 0xA1});
  }
  gaiji_reset_cache(the_filter().gaiji);
  EXPECT_EQ(the_filter().gaiji.caches.size(), 5U);
  for (const GaijiCache& cache : the_filter().gaiji.caches) {
    EXPECT_EQ(cache.count, 0U);
    EXPECT_EQ(cache.next, 0U);
    EXPECT_EQ(cache.next_code, (DownloadCode{'u', '!'}));
  }
}

// The download size

TEST_F(GaijiTest, ASizeIsSelectedOnceForNewCharactersOfTheSameSize) {
  start(1, 1);
  put(kG1);
  EXPECT_EQ(put(kOtherG1).substr(0, 5),
            "\x1c"
            "21u\"");
}

TEST_F(GaijiTest, ASizeChangeBetweenTwoNewCharactersSelectsTheSizeAgain) {
  start(1, 1);
  put(kG1);
  the_filter().job.gaiji_size_index = 2;
  EXPECT_EQ(put(kG1).substr(0, 9),
            "\x1c"
            "0%p\x1c"
            "21u!");
  the_filter().job.gaiji_size_index = 1;
  EXPECT_EQ(put(kOtherG1).substr(0, 9),
            "\x1c"
            "0$p\x1c"
            "21u\"");
}

TEST_F(GaijiTest, AKnownCharacterOfAnotherSizeSelectsNoSize) {
  start(1, 1);
  put(kG1);
  the_filter().job.gaiji_size_index = 2;
  put(kG1);
  the_filter().job.gaiji_size_index = 1;
  EXPECT_EQ(put(kG1), "u!");
  the_filter().job.gaiji_size_index = 2;
  EXPECT_EQ(put(kOtherG1).substr(0, 5),
            "\x1c"
            "21u\"");
}

TEST_F(GaijiTest, ASizeResetSelectsTheSizeAgainAtTheNextDownload) {
  start(1, 1);
  put(kG1);
  gaiji_reset_size(the_filter().gaiji);
  EXPECT_EQ(put(kG1), "u!");
  EXPECT_EQ(put(kOtherG1).substr(0, 9),
            "\x1c"
            "0$p\x1c"
            "21u\"");
}

TEST_F(GaijiTest, ACacheResetKeepsTheSelectedSize) {
  start(1, 1);
  put(kG1);
  gaiji_reset_cache(the_filter().gaiji);
  EXPECT_EQ(put(kG1).substr(0, 5),
            "\x1c"
            "21u!");
}

TEST_F(GaijiTest, TheUnencodedFormSelectsTheSizeOnceToo) {
  the_filter().command_line.printer_class = kPrinterClassF1;
  start(1, 1);
  put(kG1);
  EXPECT_EQ(put(kOtherG1).substr(0, 7), "\x1bQ0 Du\"");
}

// Undefined characters

TEST_F(GaijiTest, AnUndefinedCharacterWithTheRuleSpaceIsTwoMarksOfTheDownloadSet) {
  start(1, 1, 0, "every-font\nundefined f5a1\n");
  EXPECT_EQ(put(kG1, UndefinedGaijiRule::space), "\x1b$D!!");
  EXPECT_EQ(status_, 0);
  EXPECT_EQ(message_, "");
  expect_state(CharacterSetState::kDoubleByte, CharacterSetState::kDownloadDesignation);
  EXPECT_EQ(put(kG1, UndefinedGaijiRule::space), "!!");
}

TEST_F(GaijiTest, AnUndefinedCharacterWithTheRuleUbarLeavesTheSingleByteSet) {
  start(1, 1, 0, "every-font\nundefined f5a1\n");
  EXPECT_EQ(put(kG1, UndefinedGaijiRule::ubar), "\x1b$D\x1b$B\x1b(H_");
  EXPECT_EQ(status_, 0);
  expect_state(CharacterSetState::kSingleByte, 0);
  EXPECT_EQ(put(kG1, UndefinedGaijiRule::ubar), "\x1b$D\x1b$B\x1b(H_");
  EXPECT_EQ(put(kOtherG1, UndefinedGaijiRule::ubar).substr(0, 12),
            "\x1b$D\x1c"
            "0$p\x1c"
            "21u!");
}

TEST_F(GaijiTest, UndefinedCharactersNeverEnterTheCache) {
  start(1, 1, 0, "every-font\nundefined f5a1\n");
  put(kG1);
  EXPECT_EQ(the_filter().gaiji.caches[1].count, 0U);
  EXPECT_EQ(the_filter().gaiji.cur_dl_size, kUnknownSize);
  describe_fonts("every-font\n");
  EXPECT_EQ(put(kG1).substr(0, 9),
            "\x1c"
            "0$p\x1c"
            "21u!");
}

TEST_F(GaijiTest, WithoutTheLibraryCharactersAreUndefined) {
  the_filter().command_line.font_variant = kAllFonts;
  EXPECT_EQ(fonts_open(the_filter().fonts, 1, 0, 1, 0), 0);
  EXPECT_EQ(put(kG1, UndefinedGaijiRule::space), "\x1b$D!!");
  EXPECT_EQ(put(kG3, UndefinedGaijiRule::ubar), "\x1b$B\x1b(H_");
  EXPECT_EQ(status_, 0);
  EXPECT_EQ(message_, "");
}

TEST_F(GaijiTest, ASizeWithoutAFontIsUndefined) {
  start(1, 1, 0, "every-font\nno-font 1 2 60 56\n");
  the_filter().job.gaiji_size_index = 3;
  EXPECT_EQ(put(kG1), "\x1b$D!!");
}

TEST_F(GaijiTest, RecordsOfAnotherShapeAreUndefined) {
  start(1, 1);
  put(kG1);
  for (const std::string_view bytes :
       {std::string_view(""), std::string_view("\xf5"), std::string_view("\xf5\xa1\xa1"),
        std::string_view("\x8e\xf5\xa1"), std::string_view("\x8f\xf5\xa1\xa1")}) {
    EXPECT_EQ(put(bytes), "!!");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(put(bytes, UndefinedGaijiRule::ubar), "\x1b$B\x1b(H_");
    put(kG1);
  }
}

TEST_F(GaijiTest, SizesWithoutAnIndexAreUndefined) {
  start(1, 0);
  for (const int size_index : {INT_MIN, -1, 0, 5, 6, INT_MAX}) {
    the_filter().job.gaiji_size_index = size_index;
    state_.select_single_byte();
    EXPECT_EQ(put(kG1), "\x1b$D!!") << size_index;
    EXPECT_EQ(status_, 0);
  }
}

// Failures

TEST_F(GaijiTest, AFailedReadIsHandedUpAndNothingIsWritten) {
  start(1, 1, 0, "every-font\nread-error f5a1 7 3\n");
  EXPECT_EQ(put(kG1), "");
  EXPECT_EQ(out_.length, 0);
  EXPECT_EQ(status_, -129);
  EXPECT_EQ(message_, "filter: broken fontfile\n");
  expect_state(CharacterSetState::kDoubleByte, CharacterSetState::kDownloadDesignation);
  EXPECT_EQ(the_filter().gaiji.caches[1].count, 0U);
  EXPECT_EQ(the_filter().gaiji.cur_dl_size, kUnknownSize);
}

TEST_F(GaijiTest, ATypefaceOutOfRangeIsHandedUp) {
  start(1, 1);
  for (const int typeface : {-1, 2}) {
    the_filter().job.gaiji_typeface = typeface;
    EXPECT_EQ(put(kG1), "");
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(message_, "");
  }
}

// The character-set state

TEST_F(GaijiTest, TheDownloadSetIsSelectedUnlessItIs) {
  start(1, 1);
  put(kG1);
  EXPECT_EQ(put(kG1), "u!");
  state_.select_single_byte();
  EXPECT_EQ(put(kG1), "\x1b$Du!");
  state_.select_double_byte();
  EXPECT_EQ(put(kG1), "\x1b$Du!");
  expect_state(CharacterSetState::kDoubleByte, CharacterSetState::kDownloadDesignation);
  // The designation counts in the double-byte set only.
  state_ = {CharacterSetState::kSingleByte, CharacterSetState::kDownloadDesignation};
  EXPECT_EQ(put(kG1), "\x1b$Du!");
  expect_state(CharacterSetState::kDoubleByte, CharacterSetState::kDownloadDesignation);
}

}  // namespace
}  // namespace rlx
