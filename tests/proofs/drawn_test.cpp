// Whole proofs, as poppler's programs read them: pages, paper, and where words stand, to half a
// point. All positions are computed by hand. The origin is 14.4 points from the left and the upper
// edge; 10 characters per inch are 7.2 points each; the baseline of a line is 80 % of its height
// below its top. Lines of 6 per inch are 12 points high, of 8 per inch 9, of 4 per inch 18.
#include <cairo.h>
#include <gtest/gtest.h>

#include <string>

#include "proofs/proof_files.h"
#include "proofs/proof_job.h"
#include "rlxproof/fonts.h"
#include "support/record_builder.h"

namespace rlx::proof {
namespace {

using testing::condition_sequence;
using testing::ConditionColumns;

constexpr double kHalfPoint = 0.5;

/// The pages of a proof of a job.
std::vector<FoundPage> prove(const std::string& job, const std::string& filter_options = "") {
  const ProofFolder folder;
  folder.write("job", job);
  const Ending ending = folder.run("-o job.pdf --filter-options '" + filter_options + "' job");
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(ending.messages, "");
  return folder.pages("job.pdf");
}

/// What the font that text is drawn in has above its baseline, of all its height.
double ascent_share() {
  Fonts fonts;
  cairo_matrix_t identity;
  cairo_matrix_init_identity(&identity);
  const FontOptionsPtr options = Fonts::options();
  const ScaledFontPtr font(
      cairo_scaled_font_create(fonts.single('A').face, &identity, &identity, options.get()));
  cairo_font_extents_t extents;
  cairo_scaled_font_extents(font.get(), &extents);
  return extents.ascent / (extents.ascent + extents.descent);
}

void expect_at(const FoundPage& page, const std::string& text, double left, double baseline) {
  static const double share = ascent_share();
  ASSERT_TRUE(page.has(text)) << text;
  const FoundWord& word = page.word(text);
  EXPECT_NEAR(word.left, left, kHalfPoint) << text;
  EXPECT_NEAR(word.top + share * (word.bottom - word.top), baseline, kHalfPoint) << text;
}

void expect_paper(const FoundPage& page, double width, double height) {
  EXPECT_NEAR(page.width, width, kHalfPoint);
  EXPECT_NEAR(page.height, height, kHalfPoint);
  EXPECT_TRUE(page.has("PROOF"));
}

void expect_a4(const FoundPage& page) {
  expect_paper(page, 595.28, 841.89);
}

TEST(Drawn, PlainText) {
  const auto pages = prove("FIRST SECOND\n\n  THIRD\fNEXT\n");
  ASSERT_EQ(pages.size(), 2U);
  expect_a4(pages[0]);
  expect_at(pages[0], "FIRST", 14.4, 24);
  expect_at(pages[0], "SECOND", 14.4 + 6 * 7.2, 24);
  expect_at(pages[0], "THIRD", 14.4 + 2 * 7.2, 48);
  EXPECT_NEAR(pages[0].word("SECOND").right, 14.4 + 12 * 7.2, kHalfPoint);
  expect_at(pages[1], "NEXT", 14.4, 24);
}

TEST(Drawn, FormWithChangingPitches) {
  const ProofFolder folder;
  const std::string examples = RLX_EXAMPLES_DIRECTORY;
  const Ending ending = folder.run("-o invoice.pdf --filter-options \"-n INVOICE -p '" + examples +
                                   "/forms'\" '" + examples + "/invoice.txt'");
  ASSERT_EQ(ending.status, 0) << ending.messages;
  const auto pages = folder.pages("invoice.pdf");
  ASSERT_EQ(pages.size(), 2U);
  expect_a4(pages[0]);
  // Line 4; line 12; line 13, the first of 8 per inch; line 49, the first of 4 per inch, behind
  // 12 x 12 and 36 x 9 points; line 55, behind 6 x 18 more.
  expect_at(pages[0], "INVOICE", 14.4, 14.4 + 3 * 12 + 9.6);
  expect_at(pages[0], "2024-03-29", 14.4 + 56 * 7.2, 14.4 + 3 * 12 + 9.6);
  expect_at(pages[0], "ARTICLE", 14.4, 14.4 + 10 * 12 + 9.6);
  expect_at(pages[0], "1004-210", 14.4, 14.4 + 144 + 7.2);
  expect_at(pages[0], "3105-120", 14.4, 14.4 + 144 + 18 + 7.2);
  expect_at(pages[0], "NET", 14.4, 14.4 + 144 + 324 + 14.4);
  expect_at(pages[0], "200.56", 14.4 + 68 * 7.2, 14.4 + 144 + 324 + 36 + 14.4);
  expect_at(pages[0], "Payable", 14.4, 14.4 + 144 + 324 + 108 + 9.6);
  expect_at(pages[1], "1002", 14.4 + 8 * 7.2, 14.4 + 3 * 12 + 9.6);
}

TEST(Drawn, EightLinesPerInch) {
  const auto pages = prove("ONE\nTWO\n\nFOUR WORDS\f", "-l 8");
  ASSERT_EQ(pages.size(), 1U);
  expect_at(pages[0], "ONE", 14.4, 14.4 + 7.2);
  expect_at(pages[0], "TWO", 14.4, 23.4 + 7.2);
  expect_at(pages[0], "FOUR", 14.4, 41.4 + 7.2);
  expect_at(pages[0], "WORDS", 14.4 + 5 * 7.2, 41.4 + 7.2);
}

TEST(Drawn, TwelveCharactersPerInch) {
  const auto pages = prove("ONE\n0123456789 TWO\f", "-c 12");
  ASSERT_EQ(pages.size(), 1U);
  expect_at(pages[0], "ONE", 14.4, 24);
  expect_at(pages[0], "TWO", 14.4 + 11 * 6, 36);
  EXPECT_NEAR(pages[0].word("TWO").right, 14.4 + 14 * 6, kHalfPoint);
}

TEST(Drawn, Landscape) {
  ConditionColumns columns;
  columns.orientation = "L";
  columns.paper_size = "A4";
  const auto pages = prove(condition_sequence(columns) + "ONE\n" + std::string(100, ' ') + "FAR\f");
  ASSERT_EQ(pages.size(), 1U);
  expect_paper(pages[0], 841.89, 595.28);
  expect_at(pages[0], "ONE", 14.4, 24);
  expect_at(pages[0], "FAR", 14.4 + 720, 36);
}

TEST(Drawn, PaperOfOtherSizes) {
  struct Row {
    const char* name;
    double width;
    double height;
  };
  for (const Row& row :
       {Row{"A3", 841.89, 1190.55}, Row{"A5", 419.53, 595.28}, Row{"B4", 728.50, 1031.81},
        Row{"B5", 515.91, 728.50}, Row{"LTR", 612, 792}}) {
    ConditionColumns columns;
    columns.orientation = "P";
    columns.paper_size = row.name;
    columns.tray = "P2";
    const auto pages = prove(condition_sequence(columns) + "ONE\n\n\nTWO\f");
    ASSERT_EQ(pages.size(), 1U) << row.name;
    expect_paper(pages[0], row.width, row.height);
    expect_at(pages[0], "TWO", 14.4, 60);
    EXPECT_TRUE(pages[0].has("tray")) << row.name;
  }
}

TEST(Drawn, Duplex) {
  ConditionColumns columns;
  columns.orientation = "P";
  columns.paper_size = "B5";
  columns.duplex = "B";
  columns.binding_edge = "U";
  columns.binding_margin = "  500";
  const auto pages = prove(condition_sequence(columns) + "ONE\fTWO\fTHREE\f");
  ASSERT_EQ(pages.size(), 3U);
  expect_paper(pages[1], 515.91, 728.50);
  EXPECT_TRUE(pages[0].has("front"));
  EXPECT_TRUE(pages[1].has("back"));
  EXPECT_TRUE(pages[2].has("front"));
  expect_at(pages[1], "TWO", 14.4, 24);
}

TEST(Drawn, Offsets) {
  ConditionColumns columns;
  columns.orientation = "P";
  columns.first_offset = " 3600";
  columns.second_offset = " 7200";
  const auto pages = prove(condition_sequence(columns) + "ONE\n TWO\f");
  ASSERT_EQ(pages.size(), 1U);
  expect_at(pages[0], "ONE", 36, 72 + 9.6);
  expect_at(pages[0], "TWO", 36 + 7.2, 84 + 9.6);
}

TEST(Drawn, Reduction) {
  ConditionColumns columns;
  columns.orientation = "LZ";
  const auto pages = prove(condition_sequence(columns) + "ONE\n" + std::string(130, ' ') + "XY\f");
  ASSERT_EQ(pages.size(), 1U);
  expect_at(pages[0], "ONE", 14.4, 14.4 + 0.66 * 9.6);
  expect_at(pages[0], "XY", 14.4 + 0.66 * 936, 14.4 + 0.66 * 21.6);
}

TEST(Drawn, JapaneseText) {
  const auto pages =
      prove("A4\xe7\x94\xa8\xe7\xb4\x99 B\n\xe6\xb3\xa8\xe6\x96\x87\xe6\x9b\xb8 No.\f");
  ASSERT_EQ(pages.size(), 1U);
  // Each is two cells wide; a blank and a word follow.
  expect_at(pages[0], "B", 14.4 + 7 * 7.2, 24);
  expect_at(pages[0], "No.", 14.4 + 7 * 7.2, 36);
  ASSERT_TRUE(pages[0].has("\xe6\xb3\xa8\xe6\x96\x87\xe6\x9b\xb8"));
  EXPECT_NEAR(pages[0].word("\xe6\xb3\xa8\xe6\x96\x87\xe6\x9b\xb8").left, 14.4, kHalfPoint);
  EXPECT_NEAR(pages[0].word("\xe6\xb3\xa8\xe6\x96\x87\xe6\x9b\xb8").right, 14.4 + 43.2, kHalfPoint);
}

TEST(Drawn, AbsolutePositions) {
  const auto pages =
      prove("\x1b[7200`ONE\x1b[14400dTWO\x1b[3600aFOUR\x1b[7200eFIVE\n\x1b[3600`SIX\f");
  ASSERT_EQ(pages.size(), 1U);
  expect_at(pages[0], "ONE", 14.4 + 72, 24);
  expect_at(pages[0], "TWO", 14.4 + 72 + 21.6, 14.4 + 144 + 9.6);
  expect_at(pages[0], "FOUR", 14.4 + 72 + 43.2 + 36, 14.4 + 144 + 9.6);
  expect_at(pages[0], "FIVE", 14.4 + 72 + 43.2 + 36 + 28.8, 14.4 + 216 + 9.6);
  expect_at(pages[0], "SIX", 14.4 + 36, 14.4 + 228 + 9.6);
}

TEST(Drawn, AFullSheetStillTellsTrayAndCopies) {
  // Text stands up to both edges, so that the note stands in the heading, too.
  ConditionColumns columns;
  columns.orientation = "P";
  columns.paper_size = "A5";
  columns.tray = "P2";
  columns.duplex = "B";
  columns.binding_edge = "L";
  columns.binding_margin = "  500";
  columns.copies = "003";
  columns.form_overlay = "OVERLAY1";
  columns.form_code = "F001";
  std::string job = condition_sequence(columns) + "\x1bQ5!z\x1bQ6!y\x1bQ7!x\x07";
  for (int i = 0; i < 60; ++i) {
    job += std::string(60, 'x') + "\n";
  }
  const auto pages = prove(job + "\f");
  ASSERT_EQ(pages.size(), 1U);
  for (const char* word : {"PROOF", "front", "A5", "tray", "copies", "beyond"}) {
    EXPECT_TRUE(pages[0].has(word)) << word;
  }
}

TEST(Drawn, GlyphDownload) {
  // A glyph has no text; what stands behind it tells its width.
  const std::string glyph =
      "\x1c"
      "20u!" +
      std::string(144, '?');
  const auto pages = prove(one_page("AB\x1b$D" + glyph + "u!u!\x1b(HBEHIND\nu!\f"));
  ASSERT_EQ(pages.size(), 1U);
  expect_at(pages[0], "BEHIND", 14.4 + 2 * 7.2 + 2 * 14.4, 24);
  expect_at(pages[0], "u!", 14.4, 36);
}

TEST(Drawn, PageLengthOfAnOption) {
  const auto pages = prove("ONE\nTWO\nTHREE\nFOUR\nFIVE\n", "-L 2");
  ASSERT_EQ(pages.size(), 3U);
  expect_at(pages[0], "TWO", 14.4, 36);
  expect_at(pages[1], "THREE", 14.4, 24);
  expect_at(pages[2], "FIVE", 14.4, 24);
}

TEST(Drawn, TwoSheetsOfOnePage) {
  // The form has two lines of 3 per inch, and begins on the second of them: the third text is on
  // another sheet of the same page.
  const ProofFolder folder;
  folder.write("forms/fcbe/SHORT", "print 2 14400\nlpi 2400 3\n");
  folder.write("job", "ONE\nTWO\nTHREE\nFOUR\f");
  const Ending ending = folder.run("-o job.pdf --filter-options '-n SHORT -p forms' job");
  ASSERT_EQ(ending.status, 0) << ending.messages;
  const auto pages = folder.pages("job.pdf");
  ASSERT_EQ(pages.size(), 2U);
  expect_at(pages[0], "ONE", 14.4, 14.4 + 24 + 19.2);
  expect_at(pages[0], "TWO", 14.4, 14.4 + 48 + 19.2);
  expect_at(pages[1], "THREE", 14.4, 14.4 + 24 + 19.2);
  expect_at(pages[1], "FOUR", 14.4, 14.4 + 48 + 19.2);
  // "page 1, sheet 2"
  EXPECT_TRUE(pages[1].has("2"));
}

TEST(Drawn, WhatIsBeyondThePaperStaysThere) {
  std::string job;
  for (int i = 0; i < 100; ++i) {
    job += "LINE" + std::to_string(i) + "\n";
  }
  const auto pages = prove(job + "\f");
  ASSERT_EQ(pages.size(), 1U);
  expect_at(pages[0], "LINE67", 14.4, 14.4 + 67 * 12 + 9.6);
  EXPECT_FALSE(pages[0].has("LINE70"));
  EXPECT_TRUE(pages[0].has("beyond"));
}

}  // namespace
}  // namespace rlx::proof
