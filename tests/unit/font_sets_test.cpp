#include "fonts/font_sets.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "fonts/fal_library.h"
#include "job/settings.h"
#include "support/font_sets_fixture.h"
#include "support/standin_font_library.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::append_open_calls;
using testing::description_line;
using testing::expect_same;
using testing::expect_unopened;
using testing::FontSetsTest;
using testing::kClasses;
using testing::kLowVariant;
using testing::kVariants;
using testing::library_set_of;
using testing::open_call;
using testing::opened_sizes;
using testing::OpenedSize;
using testing::set_of;
using testing::standin_font_id;
using testing::style_of;
using testing::take_font_calls;
using testing::Variant;

using Calls = std::vector<std::string>;

// Classes

TEST_F(FontSetsTest, ClassesOfVariantsAndResolutions) {
  for (const Variant& variant : kVariants) {
    EXPECT_EQ(font_class_of(variant.font_variant, variant.high_resolution_fonts),
              variant.font_class);
  }
  EXPECT_EQ(font_class_of(kFineFonts, 0), kNoFontClass);
  for (const int unknown : {-1, 3}) {
    EXPECT_EQ(font_class_of(unknown, 0), kNoFontClass);
    EXPECT_EQ(font_class_of(unknown, 1), kNoFontClass);
  }
}

TEST_F(FontSetsTest, FontVariant2WithoutHighResolutionFontsIsInvalid) {
  load("every-font\n");
  EXPECT_EQ(open(kLowVariant), 0);
  const FontSets before = the_filter().fonts;
  take_font_calls();
  EXPECT_EQ(fonts_open(the_filter().fonts, 2, 0, 1, 1), -1);
  EXPECT_EQ(fonts_open(the_filter().fonts, 3, 1, 1, 1), -1);
  EXPECT_EQ(fonts_open(the_filter().fonts, -1, 0, 1, 1), -1);
  EXPECT_EQ(take_font_calls(), Calls{});
  for (std::size_t set = 0; set < before.sets.size(); ++set) {
    for (std::size_t index = 0; index < kFontSizes; ++index) {
      expect_same(the_filter().fonts.sets[set].sizes[index], before.sets[set].sizes[index]);
    }
  }
}

TEST_F(FontSetsTest, WithoutTheLibraryAllFontsAreForgottenAndThatIsNoError) {
  for (FontSet& set : the_filter().fonts.sets) {
    set.sizes.fill({1, 1, 55, 24, 24});
  }
  EXPECT_EQ(open(kLowVariant), 0);
  for (const FontSet& set : the_filter().fonts.sets) {
    for (const FontSize& size : set.sizes) {
      expect_unopened(size);
      EXPECT_EQ(size.enlarged, 0);
    }
  }
}

TEST_F(FontSetsTest, ALibraryThatTheJobDoesNotCountAsLoadedIsNotAsked) {
  load("every-font\n");
  take_font_calls();
  the_filter().job.font_library_loaded = 0;
  EXPECT_EQ(open(kLowVariant), 0);
  fonts_close(the_filter().fonts);
  EXPECT_EQ(take_font_calls(), Calls{});
}

// Queries

TEST_F(FontSetsTest, EachClassAsksForItsSizesOfAllFourSetsInOrder) {
  for (const Variant& variant : kVariants) {
    SCOPED_TRACE(variant.font_class);
    load_and_open("every-font\n", variant);
    EXPECT_EQ(status_, 0);
    Calls expected;
    append_open_calls(expected, variant, 1, 2);
    append_open_calls(expected, variant, 1, 4);
    append_open_calls(expected, variant, 2, 2);
    append_open_calls(expected, variant, 2, 4);
    EXPECT_EQ(take_font_calls(), expected);
  }
}

TEST_F(FontSetsTest, WithoutTheSecondTypefaceOnlyMinchoIsAskedFor) {
  for (const Variant& variant : kClasses) {
    SCOPED_TRACE(variant.font_class);
    load_and_open("every-font\n", variant, 0);
    Calls expected;
    append_open_calls(expected, variant, 1, 2);
    append_open_calls(expected, variant, 1, 4);
    EXPECT_EQ(take_font_calls(), expected);
  }
}

TEST_F(FontSetsTest, WithoutTheSecondTypefaceGothicIsACopyOfMincho) {
  for (const Variant& variant : kClasses) {
    SCOPED_TRACE(variant.font_class);
    load_and_open("every-font\nno-font 1 2 24 22\n", variant, 0);
    for (const int code_set : {kCodeSetG1, kCodeSetG3}) {
      for (std::size_t index = 0; index < kFontSizes; ++index) {
        expect_same(set_of(kTypefaceGothic, code_set).sizes[index],
                    set_of(kTypefaceMincho, code_set).sizes[index]);
      }
    }
  }
}

TEST_F(FontSetsTest, TheEnvironmentIsSetBeforeEachSetIsOpened) {
  load("every-font\n");
  for (int round = 0; round < 2; ++round) {
    for (const int typeface : {kTypefaceMincho, kTypefaceGothic}) {
      for (const int code_set : {kCodeSetG1, kCodeSetG3}) {
        setenv("LANG", "C", 1);
        unsetenv("FAL_LANG");
        take_font_calls();
        EXPECT_EQ(font_set_open(the_filter().fonts, set_of(typeface, code_set), typeface, code_set,
                                kLowClass, 1),
                  0);
        Calls expected;
        append_open_calls(expected, kLowVariant, style_of(typeface), library_set_of(code_set));
        EXPECT_EQ(take_font_calls(), expected);
      }
    }
  }
}

// Lists of missed fonts

TEST_F(FontSetsTest, EveryListOfMissedFontsIsFreedAfterItsAttempt) {
  for (const char* const description : {"missing-list\n", "every-font\nmissing-list\n"}) {
    SCOPED_TRACE(description);
    load_and_open(description, kLowVariant);
    const Calls calls = take_font_calls();
    ASSERT_EQ(calls.size(), 40U);
    for (std::size_t call = 0; call < calls.size(); call += 2) {
      const std::string number = calls[call].substr(calls[call].rfind(' ') + 1);
      EXPECT_TRUE(calls[call].starts_with("open ")) << calls[call];
      EXPECT_EQ(calls[call + 1], "free-list " + number);
    }
  }
}

TEST_F(FontSetsTest, AttemptsWithoutAListFreeNothing) {
  load_and_open("", kLowVariant);
  for (const std::string& call : take_font_calls()) {
    EXPECT_TRUE(call.starts_with("open ")) << call;
  }
}

// Errors

TEST_F(FontSetsTest, AnErrorAtAnySizeClosesWhatWasOpenedAndEndsTheOpening) {
  for (const Variant& variant : kClasses) {
    Calls opened;
    Calls closed;
    for (const int typeface : {kTypefaceMincho, kTypefaceGothic}) {
      for (const int code_set : {kCodeSetG1, kCodeSetG3}) {
        const int style = style_of(typeface);
        const int library_set = library_set_of(code_set);
        for (const OpenedSize& size : opened_sizes(variant)) {
          SCOPED_TRACE(::testing::Message() << "class " << variant.font_class << " typeface "
                                            << typeface << " set " << code_set << size.index);
          load_and_open(
              "every-font\n" + description_line("open-error", style, library_set, size, " 8 13"),
              variant);
          EXPECT_EQ(status_, -129);
          EXPECT_EQ(message_, "filter: can't open fontlist(13)\n");
          Calls expected = opened;
          expected.push_back(open_call(style, library_set, size) + "-1");
          expected.insert(expected.end(), closed.begin(), closed.end());
          EXPECT_EQ(take_font_calls(), expected);

          const int font_id = standin_font_id(style, library_set, size.dots, size.letter);
          opened.push_back(open_call(style, library_set, size) + std::to_string(font_id));
          closed.push_back("close " + std::to_string(font_id));
        }
      }
    }
  }
}

TEST_F(FontSetsTest, AfterAnErrorNoFontIsOpenAnyMore) {
  load_and_open("every-font\nopen-error 2 4 40 36 3 0\n", kLowVariant);
  EXPECT_EQ(message_, "filter: can't get area\n");
  for (const FontSet& set : the_filter().fonts.sets) {
    for (const FontSize& size : set.sizes) {
      expect_unopened(size);
    }
  }
  take_font_calls();
  fonts_close(the_filter().fonts);
  EXPECT_EQ(take_font_calls(), Calls{});
}

TEST_F(FontSetsTest, WithoutTheReportFlagAnErrorIsSilent) {
  load("every-font\nopen-error 1 2 16 16 8 13\n");
  const testing::CaptureDescriptor standard_error(STDERR_FILENO);
  EXPECT_EQ(fonts_open(the_filter().fonts, 1, 0, 0, 1), -129);
  EXPECT_EQ(standard_error.text(), "");
}

TEST_F(FontSetsTest, AnErrorIsReportedBeforeItsListIsFreed) {
  // The stand-in forgets its error when a list is freed.
  load_and_open("missing-list\nopen-error 1 2 16 16 6 13\n", kLowVariant);
  EXPECT_EQ(status_, -129);
  EXPECT_EQ(message_, "filter: stat error (13)\n");
  const Calls calls = take_font_calls();
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_TRUE(calls[1].starts_with("free-list ")) << calls[1];
}

TEST_F(FontSetsTest, OneSetKeepsWhatWasOpenedBeforeAnError) {
  load("every-font\nopen-error 1 2 30 28 8 13\n");
  FontSet& set = set_of(kTypefaceMincho, kCodeSetG1);
  EXPECT_EQ(font_set_open(the_filter().fonts, set, kTypefaceMincho, kCodeSetG1, kLowClass, 0),
            -129);
  EXPECT_EQ(set.sizes[0].font_id, standin_font_id(1, 2, 16, 16));
  EXPECT_EQ(set.sizes[1].font_id, standin_font_id(1, 2, 24, 22));
  expect_unopened(set.sizes[2]);
  expect_unopened(set.sizes[3]);
}

// Lookup

TEST_F(FontSetsTest, SetsStandInTheOrderOfOpening) {
  EXPECT_EQ(find_font_set(the_filter().fonts, 0, kCodeSetG1), the_filter().fonts.sets.data());
  EXPECT_EQ(find_font_set(the_filter().fonts, 0, kCodeSetG3), &the_filter().fonts.sets[1]);
  EXPECT_EQ(find_font_set(the_filter().fonts, 1, kCodeSetG1), &the_filter().fonts.sets[2]);
  EXPECT_EQ(find_font_set(the_filter().fonts, 1, kCodeSetG3), &the_filter().fonts.sets[3]);
  EXPECT_EQ(find_font(the_filter().fonts, 1, kCodeSetG3, 5), &the_filter().fonts.sets[3].sizes[5]);
}

TEST_F(FontSetsTest, NumbersOutOfRangeHaveNoFont) {
  for (const int outside : {-1, 2}) {
    EXPECT_EQ(find_font_set(the_filter().fonts, outside, 0), nullptr);
    EXPECT_EQ(find_font_set(the_filter().fonts, 0, outside), nullptr);
    EXPECT_EQ(find_font(the_filter().fonts, outside, 0, 0), nullptr);
    EXPECT_EQ(find_font(the_filter().fonts, 0, outside, 0), nullptr);
  }
  EXPECT_EQ(find_font(the_filter().fonts, 0, 0, -1), nullptr);
  EXPECT_EQ(find_font(the_filter().fonts, 0, 0, 6), nullptr);
}

}  // namespace
}  // namespace rlx
