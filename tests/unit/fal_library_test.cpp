#include "fonts/fal_library.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <string>
#include <vector>

#include "fonts/font_table.h"
#include "job/fixed_paths.h"
#include "job/settings.h"
#include "support/glyph_bitmap.h"
#include "support/odd_files.h"
#include "support/standin_font_library.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::take_font_calls;

using Calls = std::vector<std::string>;

void expect_not_loaded() {
  EXPECT_EQ(the_filter().library.handle, nullptr);
  EXPECT_EQ(the_filter().library.open_sys_font, nullptr);
  EXPECT_EQ(the_filter().library.read_font, nullptr);
  EXPECT_EQ(the_filter().library.close_font, nullptr);
  EXPECT_EQ(the_filter().library.free_font_list, nullptr);
  EXPECT_EQ(the_filter().library.error_class, nullptr);
  EXPECT_EQ(the_filter().library.error_detail, nullptr);
  EXPECT_EQ(the_filter().library.missing_glyph, nullptr);
}

/// The font of mincho G1, size 1.
FontSize& some_font() {
  return find_font_set(the_filter().fonts, kTypefaceMincho, kCodeSetG1)->sizes[1];
}

constexpr int kSomeFontId = 77;
constexpr std::uint32_t kSomeCode = 0xF5A1;

void open_some_font(int width, int height) {
  some_font() = {1, 0, kSomeFontId, height, width};
}

GlyphRequest some_request() {
  GlyphRequest request;
  request.code_set = kCodeSetG1;
  request.size_index = 1;
  request.library_code = kSomeCode;
  return request;
}

class FalLibraryTest : public testing::FontLibraryTest {
 protected:
  /// fal_read_glyph; what it writes to standard error goes to `message_`.
  Status read(const GlyphRequest& request, int report_flag = 1) {
    const testing::CaptureDescriptor standard_error(STDERR_FILENO);
    const Status status = fal_read_glyph(the_filter().fonts, request, glyph_, report_flag);
    message_ = standard_error.text();
    return status;
  }

  Glyph glyph_{-5, -6, {}};
  std::string message_;
};

// Loading

TEST_F(FalLibraryTest, WithoutTheLibraryNothingIsLoadedAndNothingReported) {
  const testing::CaptureDescriptor standard_error(STDERR_FILENO);
  EXPECT_EQ(fal_load(the_filter().library), -128);
  expect_not_loaded();
  EXPECT_EQ(standard_error.text(), "");
}

TEST_F(FalLibraryTest, AFileThatIsNoLibraryCountsAsMissing) {
  testing::write_file(fixed_paths::kFontLibrary, "no shared object");
  EXPECT_EQ(fal_load(the_filter().library), -128);
  expect_not_loaded();
}

TEST_F(FalLibraryTest, WhatIsNoRegularFileCountsAsMissing) {
  testing::for_each_odd_file(fixed_paths::kFontLibrary, [] {
    EXPECT_EQ(fal_load(the_filter().library), ST_NO_FONT_LIBRARY);
    expect_not_loaded();
  });
}

TEST_F(FalLibraryTest, ALibraryThatLacksOneEntryPointCountsAsMissing) {
  for (const char* const entry_point :
       {"FalOpenSysFont", "FalReadFont", "FalCloseFont", "FalFreeFontList", "fal_utyerror",
        "fal_utyderror", "fal_utyexists"}) {
    SCOPED_TRACE(entry_point);
    testing::install_font_library_without(entry_point);
    const testing::CaptureDescriptor standard_error(STDERR_FILENO);
    EXPECT_EQ(fal_load(the_filter().library), -128);
    expect_not_loaded();
    EXPECT_EQ(standard_error.text(), "");
    EXPECT_EQ(take_font_calls(), (Calls{"load", "unload"}));
  }
}

TEST_F(FalLibraryTest, TheCompleteLibraryIsLoadedWithAllEntryPoints) {
  testing::install_font_library();
  EXPECT_EQ(fal_load(the_filter().library), 0);
  EXPECT_NE(the_filter().library.handle, nullptr);
  EXPECT_NE(the_filter().library.open_sys_font, nullptr);
  EXPECT_NE(the_filter().library.read_font, nullptr);
  EXPECT_NE(the_filter().library.close_font, nullptr);
  EXPECT_NE(the_filter().library.free_font_list, nullptr);
  EXPECT_NE(the_filter().library.error_class, nullptr);
  EXPECT_NE(the_filter().library.error_detail, nullptr);
  EXPECT_NE(the_filter().library.missing_glyph, nullptr);
}

TEST_F(FalLibraryTest, LoadingTwiceLoadsOnceAndOneUnloadReleasesIt) {
  testing::install_font_library();
  EXPECT_EQ(fal_load(the_filter().library), 0);
  EXPECT_EQ(fal_load(the_filter().library), 0);
  fal_unload(the_filter().library);
  EXPECT_EQ(take_font_calls(), (Calls{"load", "unload"}));
  expect_not_loaded();
}

TEST_F(FalLibraryTest, UnloadingWithoutALoadedLibraryDoesNothing) {
  fal_unload(the_filter().library);
  testing::install_font_library();
  EXPECT_EQ(fal_load(the_filter().library), 0);
  fal_unload(the_filter().library);
  fal_unload(the_filter().library);
  EXPECT_EQ(take_font_calls(), (Calls{"load", "unload"}));
}

TEST_F(FalLibraryTest, AnUnloadedLibraryCanBeLoadedAgain) {
  testing::install_font_library();
  EXPECT_EQ(fal_load(the_filter().library), 0);
  fal_unload(the_filter().library);
  EXPECT_EQ(fal_load(the_filter().library), 0);
  EXPECT_EQ(take_font_calls(), (Calls{"load", "unload", "load"}));
}

TEST_F(FalLibraryTest, TheLibraryIsAvailableWhenLoadedAndTheJobSaysSo) {
  testing::install_font_library();
  EXPECT_EQ(fal_load(the_filter().library), 0);
  EXPECT_FALSE(fal_available(the_filter().library));
  the_filter().job.font_library_loaded = 1;
  EXPECT_TRUE(fal_available(the_filter().library));
  fal_unload(the_filter().library);
  EXPECT_FALSE(fal_available(the_filter().library));
}

// Messages

std::string reported(int error_class, const char* file_name, int detail) {
  const testing::CaptureDescriptor standard_error(STDERR_FILENO);
  fal_report(the_filter().library, error_class, file_name, detail);
  return standard_error.text();
}

TEST_F(FalLibraryTest, EachErrorClassHasItsMessage) {
  EXPECT_EQ(reported(1, "a.fnt", 12), "filter: can't open a.fnt (12)\n");
  EXPECT_EQ(reported(1, nullptr, 12), "filter: can't open fontfile\n");
  EXPECT_EQ(reported(2, nullptr, 12), "filter: can't read fontfile (12)\n");
  EXPECT_EQ(reported(3, nullptr, 12), "filter: can't get area\n");
  EXPECT_EQ(reported(4, nullptr, 12), "filter: invalid PKEY\n");
  EXPECT_EQ(reported(5, nullptr, -12), "filter: parameter error (-12)\n");
  EXPECT_EQ(reported(6, nullptr, 12), "filter: stat error (12)\n");
  EXPECT_EQ(reported(7, nullptr, 12), "filter: broken fontfile\n");
  EXPECT_EQ(reported(8, nullptr, 12), "filter: can't open fontlist(12)\n");
  EXPECT_EQ(reported(9, nullptr, 12), "filter: can't read fontlist(12)\n");
}

TEST_F(FalLibraryTest, AFileNameCountsForTheFirstClassOnly) {
  EXPECT_EQ(reported(2, "a.fnt", 12), "filter: can't read fontfile (12)\n");
  EXPECT_EQ(reported(3, "a.fnt", 12), "filter: can't get area\n");
}

TEST_F(FalLibraryTest, OtherErrorClassesPrintNothing) {
  for (const int error_class : {INT_MIN, -1, 0, 10, INT_MAX}) {
    EXPECT_EQ(reported(error_class, "a.fnt", 12), "") << error_class;
  }
}

// Reading a glyph

TEST_F(FalLibraryTest, AGlyphIsReadAtTheSizeOfItsFont) {
  load("");
  take_font_calls();
  open_some_font(30, 28);
  EXPECT_EQ(read(some_request()), 0);
  EXPECT_EQ(take_font_calls(), (Calls{"read 77 f5a1 30x28"}));
  EXPECT_EQ(glyph_.width, 30);
  EXPECT_EQ(glyph_.height, 28);
  EXPECT_EQ(message_, "");
}

TEST_F(FalLibraryTest, ThePatternIsCopiedWithZeroesBehindIt) {
  load("");
  for (int dots = 1; dots <= 72; ++dots) {
    open_some_font(dots, dots);
    glyph_.pattern.fill(0xAA);
    ASSERT_EQ(read(some_request()), 0);
    EXPECT_EQ(glyph_.pattern, testing::standin_pattern(kSomeFontId, kSomeCode, dots)) << dots;
  }
}

TEST_F(FalLibraryTest, TypefaceCodeSetAndSizeSelectTheFont) {
  load("");
  for (int typeface = 0; typeface < kTypefaces; ++typeface) {
    for (int code_set = 0; code_set < kCodeSets; ++code_set) {
      for (int size_index = 0; size_index < static_cast<int>(kFontSizes); ++size_index) {
        const int font_id = 1000 + typeface * 100 + code_set * 10 + size_index;
        find_font_set(the_filter().fonts, typeface, code_set)
            ->sizes[static_cast<std::size_t>(size_index)] = {1, 0, font_id, 24, 24};
        take_font_calls();
        EXPECT_EQ(read({typeface, code_set, size_index, 100, 100, 0x8FF5A1}), 0);
        EXPECT_EQ(take_font_calls(), (Calls{"read " + std::to_string(font_id) + " 8ff5a1 24x24"}));
      }
    }
  }
}

TEST_F(FalLibraryTest, ScalesArePercentagesRoundedTowardZero) {
  load("");
  take_font_calls();
  open_some_font(24, 30);
  GlyphRequest request = some_request();
  request.scale_h = 77;   // 18.48
  request.scale_v = 133;  // 39.9
  EXPECT_EQ(read(request), 0);
  EXPECT_EQ(glyph_.width, 18);
  EXPECT_EQ(glyph_.height, 39);
  EXPECT_EQ(take_font_calls(), (Calls{"read 77 f5a1 18x39"}));
}

TEST_F(FalLibraryTest, PatternsOutsideOneTo72DotsAreUndefinedAndNotRead) {
  load("");
  take_font_calls();
  GlyphRequest request = some_request();
  for (const int outside : {INT_MIN, -1, 0, 73, 74, INT_MAX}) {
    open_some_font(outside, 24);
    EXPECT_EQ(read(request), 1) << outside;
    open_some_font(24, outside);
    EXPECT_EQ(read(request), 1) << outside;
  }
  open_some_font(24, 24);
  for (const int outside : {INT_MIN, -100, 0, 4, 305, INT_MAX}) {
    request.scale_h = outside;
    request.scale_v = 100;
    EXPECT_EQ(read(request), 1) << outside;
    request.scale_h = 100;
    request.scale_v = outside;
    EXPECT_EQ(read(request), 1) << outside;
  }
  EXPECT_EQ(take_font_calls(), Calls{});
}

TEST_F(FalLibraryTest, AFontThatIsNotOpenMakesTheCharacterUndefined) {
  load("");
  take_font_calls();
  EXPECT_EQ(read(some_request()), 1);
  open_some_font(24, 24);
  some_font().opened = 0;
  EXPECT_EQ(read(some_request()), 1);
  EXPECT_EQ(take_font_calls(), Calls{});
}

TEST_F(FalLibraryTest, SizesWithoutAnIndexAreNotOpen) {
  load("");
  GlyphRequest request = some_request();
  for (const int size_index : {INT_MIN, -1, 6, INT_MAX}) {
    request.size_index = size_index;
    EXPECT_EQ(read(request), 1) << size_index;
  }
}

TEST_F(FalLibraryTest, TypefaceAndCodeSetOutOfRangeAreRefused) {
  load("");
  open_some_font(24, 24);
  for (const int outside : {INT_MIN, -1, 2, INT_MAX}) {
    GlyphRequest request = some_request();
    request.typeface = outside;
    EXPECT_EQ(read(request), -1) << outside;
    request = some_request();
    request.code_set = outside;
    EXPECT_EQ(read(request), -1) << outside;
  }
}

TEST_F(FalLibraryTest, WithoutTheLibraryEveryCharacterIsUndefined) {
  open_some_font(24, 24);
  EXPECT_EQ(read(some_request()), 1);
  the_filter().job.font_library_loaded = 1;
  EXPECT_EQ(read(some_request()), 1);
}

TEST_F(FalLibraryTest, ALibraryThatTheJobDoesNotCountAsLoadedIsNotAsked) {
  load("");
  take_font_calls();
  open_some_font(24, 24);
  the_filter().job.font_library_loaded = 0;
  EXPECT_EQ(read(some_request()), 1);
  EXPECT_EQ(take_font_calls(), Calls{});
}

TEST_F(FalLibraryTest, ACharacterThatTheFontLacksIsUndefined) {
  open_some_font(24, 24);
  for (const char* const description : {"undefined f5a1\n", "undefined-with-pattern f5a1\n"}) {
    SCOPED_TRACE(description);
    load(description);
    EXPECT_EQ(read(some_request()), 1);
    EXPECT_EQ(message_, "");
    EXPECT_EQ(glyph_.width, -5);
    EXPECT_EQ(glyph_.height, -6);
    EXPECT_EQ(glyph_.pattern, GlyphPattern{});
  }
}

TEST_F(FalLibraryTest, AnUndefinedCharacterDoesNotSpoilTheNextOne) {
  load("undefined f5a2\n");
  open_some_font(24, 24);
  GlyphRequest request = some_request();
  request.library_code = 0xF5A2;
  EXPECT_EQ(read(request), 1);
  EXPECT_EQ(read(some_request()), 0);
}

TEST_F(FalLibraryTest, AFailedReadIsReportedAndHandedUp) {
  open_some_font(24, 24);
  for (const char* const description : {"read-error f5a1 5 42\n", "read-null f5a1 5 42\n"}) {
    SCOPED_TRACE(description);
    load(description);
    EXPECT_EQ(read(some_request(), 1), -129);
    EXPECT_EQ(message_, "filter: parameter error (42)\n");
    EXPECT_EQ(read(some_request(), 0), -129);
    EXPECT_EQ(message_, "");
    EXPECT_EQ(glyph_.width, -5);
    EXPECT_EQ(glyph_.pattern, GlyphPattern{});
  }
}

TEST_F(FalLibraryTest, AFailedReadReportsTheLibrarysErrorWithoutAFileName) {
  open_some_font(24, 24);
  load("read-error f5a1 1 42\n");
  EXPECT_EQ(read(some_request()), -129);
  EXPECT_EQ(message_, "filter: can't open fontfile\n");
}

}  // namespace
}  // namespace rlx
