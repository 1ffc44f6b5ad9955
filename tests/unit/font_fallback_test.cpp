// Which font answers at which size, with all fonts there and with some missing.

#include "fonts/font_sets.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/font_sets_fixture.h"
#include "support/standin_font_library.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::description_line;
using testing::expect_font;
using testing::expect_same;
using testing::expect_unopened;
using testing::kClasses;
using testing::kFineVariant;
using testing::kFixedVariant;
using testing::kHighVariant;
using testing::kLowVariant;
using testing::kVariants;
using testing::library_set_of;
using testing::opened_sizes;
using testing::OpenedSize;
using testing::set_of;
using testing::standin_font_id;
using testing::Variant;

using FontFallbackTest = testing::FontSetsTest;

// Fonts that are there

/// What a size index looks like when every font is there.
struct FontWhenThere {
  int font_id_of_mincho_g1;  ///< 0: not opened
  int enlarged;
  int read;
};

TEST_F(FontFallbackTest, EveryRowOfEveryClassWhenAllFontsAreThere) {
  const FontWhenThere expected[4][6] = {
      {{0, 0, 0}, {0, 0, 0}, {122422, 0, 0}, {122424, 1, 24}, {0, 0, 0}, {0, 0, 0}},
      {{121616, 0, 16},
       {122422, 0, 24},
       {123028, 1, 30},
       {123232, 0, 32},
       {124036, 1, 40},
       {123232, 0, 36}},
      {{122422, 0, 25},
       {124036, 1, 40},
       {125048, 1, 50},
       {126056, 0, 60},
       {126662, 1, 66},
       {0, 0, 0}},
      {{123232, 0, 0},
       {124036, 1, 40},
       {125048, 1, 50},
       {126056, 0, 60},
       {126662, 1, 72},
       {0, 0, 0}},
  };
  for (const Variant& variant : kVariants) {
    load_and_open("every-font\n", variant);
    for (const int typeface : {kTypefaceMincho, kTypefaceGothic}) {
      for (const int code_set : {kCodeSetG1, kCodeSetG3}) {
        for (std::size_t index = 0; index < kFontSizes; ++index) {
          SCOPED_TRACE(::testing::Message() << "class " << variant.font_class << " typeface "
                                            << typeface << " set " << code_set << " " << index);
          const FontWhenThere& row = expected[variant.font_class][index];
          const FontSize& size = set_of(typeface, code_set).sizes[index];
          if (row.font_id_of_mincho_g1 == 0) {
            expect_unopened(size);
          } else {
            const int other_set = typeface * 100000 + (code_set == kCodeSetG3 ? 20000 : 0);
            expect_font(size, row.font_id_of_mincho_g1 + other_set, row.enlarged);
          }
          EXPECT_EQ(size.read_h, row.read);
          EXPECT_EQ(size.read_w, row.read);
        }
      }
    }
  }
}

// Fonts that are not there

TEST_F(FontFallbackTest, WithoutAnyFontNothingIsOpenAndThatIsNoError) {
  for (const Variant& variant : kClasses) {
    SCOPED_TRACE(variant.font_class);
    load_and_open("", variant);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(message_, "");
    for (const FontSet& set : the_filter().fonts.sets) {
      for (std::size_t index = 0; index < kFontSizes; ++index) {
        expect_unopened(set.sizes[index]);
        const bool marked =
            variant.font_class == kHighClass && (index == 1 || index == 2 || index == 4);
        EXPECT_EQ(set.sizes[index].enlarged, marked ? 1 : 0) << index;
      }
    }
  }
}

/// What answers at a size when the library lacks this font of mincho.
struct Fallback {
  Variant variant;
  OpenedSize missing;
  int font_id;  ///< of mincho G1; 0: nothing answers
  int enlarged;
  int read;
};

const std::vector<Fallback> kFallbacks{
    {kFixedVariant, {2, 24, 22, 1}, 0, 0, 0},      {kFixedVariant, {3, 24, 24, 0}, 122422, 0, 24},
    {kLowVariant, {0, 16, 16, 0}, 0, 0, 16},       {kLowVariant, {1, 24, 22, 1}, 0, 0, 24},
    {kLowVariant, {2, 30, 28, 1}, 122422, 0, 28},  {kLowVariant, {3, 32, 32, 0}, 0, 0, 32},
    {kLowVariant, {4, 40, 36, 2}, 123232, 0, 36},  {kHighVariant, {0, 24, 22, 1}, 0, 0, 25},
    {kHighVariant, {1, 40, 36, 2}, 0, 1, 40},      {kHighVariant, {2, 50, 48, 1}, 0, 1, 50},
    {kHighVariant, {3, 60, 56, 2}, 0, 0, 60},      {kHighVariant, {4, 66, 62, 2}, 0, 1, 66},
    {kFineVariant, {0, 32, 32, 0}, 0, 0, 0},       {kFineVariant, {1, 40, 36, 2}, 123232, 0, 40},
    {kFineVariant, {2, 50, 48, 1}, 123232, 0, 50}, {kFineVariant, {3, 60, 56, 2}, 0, 0, 60},
    {kFineVariant, {4, 66, 62, 2}, 126056, 0, 72},
};

TEST_F(FontFallbackTest, EveryFallbackOfMincho) {
  for (const Fallback& fallback : kFallbacks) {
    for (const int code_set : {kCodeSetG1, kCodeSetG3}) {
      SCOPED_TRACE(::testing::Message() << "class " << fallback.variant.font_class << " index "
                                        << fallback.missing.index << " set " << code_set);
      load_and_open("every-font\n" +
                        description_line("no-font", 1, library_set_of(code_set), fallback.missing),
                    fallback.variant);
      EXPECT_EQ(status_, 0);
      const FontSize& size = set_of(kTypefaceMincho, code_set).sizes[fallback.missing.index];
      if (fallback.font_id == 0) {
        expect_unopened(size);
        EXPECT_EQ(size.enlarged, fallback.enlarged);
      } else {
        const int other_set = code_set == kCodeSetG3 ? 20000 : 0;
        expect_font(size, fallback.font_id + other_set, fallback.enlarged);
      }
      EXPECT_EQ(size.read_h, fallback.read);
      EXPECT_EQ(size.read_w, fallback.read);
    }
  }
}

TEST_F(FontFallbackTest, Class1WithoutA30DotFontReadsThe24DotFontAt28DotsUnenlarged) {
  load_and_open("every-font\nno-font 1 2 30 28\n", kLowVariant);
  const FontSize& size = set_of(kTypefaceMincho, kCodeSetG1).sizes[2];
  expect_font(size, standin_font_id(1, 2, 24, 22), 0);
  EXPECT_EQ(size.read_h, 28);
  EXPECT_EQ(size.read_w, 28);
}

TEST_F(FontFallbackTest, AFallbackNeedsAFontThatIsThere) {
  struct Pair {
    Variant variant;
    OpenedSize missing;
    OpenedSize neighbour;
  };
  const std::vector<Pair> pairs{
      {kFixedVariant, {3, 24, 24, 0}, {2, 24, 22, 1}},
      {kLowVariant, {2, 30, 28, 1}, {1, 24, 22, 1}},
      {kLowVariant, {4, 40, 36, 2}, {3, 32, 32, 0}},
      {kFineVariant, {1, 40, 36, 2}, {0, 32, 32, 0}},
      {kFineVariant, {2, 50, 48, 1}, {0, 32, 32, 0}},
      {kFineVariant, {4, 66, 62, 2}, {3, 60, 56, 2}},
  };
  for (const Pair& pair : pairs) {
    SCOPED_TRACE(::testing::Message()
                 << "class " << pair.variant.font_class << " index " << pair.missing.index);
    load_and_open("every-font\n" + description_line("no-font", 1, 2, pair.missing) +
                      description_line("no-font", 1, 2, pair.neighbour),
                  pair.variant);
    const FontSize& size = set_of(kTypefaceMincho, kCodeSetG1).sizes[pair.missing.index];
    expect_unopened(size);
    EXPECT_EQ(size.enlarged, 0);
  }
}

TEST_F(FontFallbackTest, Index5BorrowsTheFontOfIndex3InClass1Only) {
  for (const Variant& variant : kClasses) {
    SCOPED_TRACE(variant.font_class);
    load_and_open("every-font\n", variant);
    for (const FontSet& set : the_filter().fonts.sets) {
      if (variant.font_class == kLowClass) {
        expect_font(set.sizes[5], set.sizes[3].font_id, 0);
        EXPECT_EQ(set.sizes[5].read_h, 36);
      } else {
        expect_unopened(set.sizes[5]);
      }
    }
  }
}

TEST_F(FontFallbackTest, WithoutAFontOfIndex3MinchoHasNoneAtIndex5) {
  load_and_open("every-font\nno-font 1 2 32 32\nno-font 1 4 32 32\n", kLowVariant);
  expect_unopened(set_of(kTypefaceMincho, kCodeSetG1).sizes[5]);
  expect_unopened(set_of(kTypefaceMincho, kCodeSetG3).sizes[5]);
  expect_font(set_of(kTypefaceGothic, kCodeSetG1).sizes[5], standin_font_id(2, 2, 32, 32), 0);
  expect_font(set_of(kTypefaceGothic, kCodeSetG3).sizes[5], standin_font_id(2, 4, 32, 32), 0);
}

TEST_F(FontFallbackTest, EveryMissingGothicFontIsTakenFromMincho) {
  for (const Variant& variant : kClasses) {
    for (const OpenedSize& missing : opened_sizes(variant)) {
      for (const int code_set : {kCodeSetG1, kCodeSetG3}) {
        SCOPED_TRACE(::testing::Message() << "class " << variant.font_class << " index "
                                          << missing.index << " set " << code_set);
        load_and_open(
            "every-font\n" + description_line("no-font", 2, library_set_of(code_set), missing),
            variant);
        const FontSet& gothic = set_of(kTypefaceGothic, code_set);
        const FontSet& mincho = set_of(kTypefaceMincho, code_set);
        expect_same(gothic.sizes[missing.index], mincho.sizes[missing.index]);
        EXPECT_EQ(gothic.sizes[missing.index].opened, 1);
      }
    }
  }
}

TEST_F(FontFallbackTest, AMissingGothicFontIsTakenFromWhateverMinchoFellBackTo) {
  load_and_open("every-font\nno-font 1 2 30 28\nno-font 2 2 30 28\n", kLowVariant);
  const FontSize& size = set_of(kTypefaceGothic, kCodeSetG1).sizes[2];
  expect_font(size, standin_font_id(1, 2, 24, 22), 0);
  EXPECT_EQ(size.read_h, 28);
}

TEST_F(FontFallbackTest, OnlyGothicG3TakesIndex5FromMinchoToo) {
  load_and_open("every-font\nno-font 2 2 32 32\nno-font 2 4 32 32\n", kLowVariant);
  expect_unopened(set_of(kTypefaceGothic, kCodeSetG1).sizes[5]);
  const FontSize& borrowed = set_of(kTypefaceGothic, kCodeSetG3).sizes[5];
  expect_font(borrowed, standin_font_id(1, 4, 32, 32), 0);
  EXPECT_EQ(borrowed.read_h, 36);
}

TEST_F(FontFallbackTest, OutsideClass1AMissingGothicFontLeavesIndex5Alone) {
  load_and_open("every-font\nno-font 2 4 60 56\n", kHighVariant);
  expect_unopened(set_of(kTypefaceGothic, kCodeSetG3).sizes[5]);
}

}  // namespace
}  // namespace rlx
