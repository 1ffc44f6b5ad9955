// Closing fonts, each identifier once, and opening others.

#include "fonts/font_sets.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fonts/fal_library.h"
#include "support/font_sets_fixture.h"
#include "support/standin_font_library.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::append_open_calls;
using testing::expect_font;
using testing::expect_unopened;
using testing::kClasses;
using testing::kFixedVariant;
using testing::kHighVariant;
using testing::kLowVariant;
using testing::opened_sizes;
using testing::OpenedSize;
using testing::set_of;
using testing::standin_font_id;
using testing::take_font_calls;
using testing::Variant;

using FontsCloseTest = testing::FontSetsTest;

using Calls = std::vector<std::string>;

// Closing

TEST_F(FontsCloseTest, EveryFontIsClosedOnceInTheOrderOfTheSets) {
  for (const Variant& variant : kClasses) {
    SCOPED_TRACE(variant.font_class);
    load_and_open("every-font\n", variant);
    take_font_calls();
    fonts_close(the_filter().fonts);
    Calls expected;
    for (const int style : {1, 2}) {
      for (const int code_set : {2, 4}) {
        for (const OpenedSize& size : opened_sizes(variant)) {
          expected.push_back(
              "close " + std::to_string(standin_font_id(style, code_set, size.dots, size.letter)));
        }
      }
    }
    EXPECT_EQ(take_font_calls(), expected);
  }
}

TEST_F(FontsCloseTest, CopiesOfTheSecondTypefaceAreNotClosedAgain) {
  load_and_open("every-font\n", kFixedVariant, 0);
  take_font_calls();
  fonts_close(the_filter().fonts);
  EXPECT_EQ(take_font_calls(),
            (Calls{"close 122422", "close 122424", "close 142422", "close 142424"}));
}

TEST_F(FontsCloseTest, AFontSharedByTwoIndexesIsClosedOnce) {
  load_and_open("every-font\nno-font 1 2 24 24\nno-font 2 4 24 22\n", kFixedVariant);
  take_font_calls();
  fonts_close(the_filter().fonts);
  EXPECT_EQ(take_font_calls(), (Calls{"close 122422", "close 142422", "close 142424",
                                      "close 222422", "close 222424", "close 242424"}));
}

TEST_F(FontsCloseTest, OneIdentifierForSeveralQueriesIsClosedOnce) {
  load_and_open("font 1 2 24 22 9\nfont 1 4 24 22 9\nfont 2 2 24 24 8\nfont 2 4 24 24 9\n",
                kFixedVariant);
  take_font_calls();
  fonts_close(the_filter().fonts);
  EXPECT_EQ(take_font_calls(), (Calls{"close 9", "close 8"}));
}

TEST_F(FontsCloseTest, IdentifiersThatAreNotPositiveAreUsedButNotClosed) {
  load_and_open("font 1 2 24 24 -5\nfont 1 4 24 24 1\n", kFixedVariant, 0);
  expect_font(set_of(kTypefaceMincho, kCodeSetG1).sizes[3], -5, 1);
  take_font_calls();
  fonts_close(the_filter().fonts);
  EXPECT_EQ(take_font_calls(), (Calls{"close 1"}));
}

TEST_F(FontsCloseTest, ClosingTwiceClosesOnce) {
  load_and_open("every-font\n", kFixedVariant, 0);
  fonts_close(the_filter().fonts);
  take_font_calls();
  fonts_close(the_filter().fonts);
  EXPECT_EQ(take_font_calls(), Calls{});
  EXPECT_EQ(the_filter().fonts.sets[0].sizes[3].opened, 0);
}

TEST_F(FontsCloseTest, ReopeningForAnotherResolutionClosesTheOldFontsAndOpensTheNew) {
  load_and_open("every-font\n", kLowVariant, 0);
  take_font_calls();
  fonts_close(the_filter().fonts);
  EXPECT_EQ(open(kHighVariant, 0), 0);
  fonts_close(the_filter().fonts);
  fal_unload(the_filter().library);
  Calls expected;
  const auto append_close_calls = [&](const Variant& variant) {
    for (const int code_set : {2, 4}) {
      for (const OpenedSize& size : opened_sizes(variant)) {
        expected.push_back("close " +
                           std::to_string(standin_font_id(1, code_set, size.dots, size.letter)));
      }
    }
  };
  append_close_calls(kLowVariant);
  append_open_calls(expected, kHighVariant, 1, 2);
  append_open_calls(expected, kHighVariant, 1, 4);
  append_close_calls(kHighVariant);
  expected.emplace_back("unload");
  EXPECT_EQ(take_font_calls(), expected);
}

TEST_F(FontsCloseTest, ReopeningLeavesNothingOfTheOldClass) {
  load_and_open("every-font\n", kLowVariant);
  fonts_close(the_filter().fonts);
  EXPECT_EQ(open(kFixedVariant), 0);
  for (const FontSet& set : the_filter().fonts.sets) {
    for (const std::size_t index : {0U, 1U, 4U, 5U}) {
      expect_unopened(set.sizes[index]);
      EXPECT_EQ(set.sizes[index].enlarged, 0);
      EXPECT_EQ(set.sizes[index].read_h, 0);
    }
  }
}

}  // namespace
}  // namespace rlx
