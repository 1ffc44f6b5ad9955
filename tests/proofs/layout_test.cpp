#include "rlxproof/layout.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

#include "proofs/proof_job.h"

namespace rlx::proof {
namespace {

using testing::block;
using testing::bytes;
using testing::kFinalFormFeed;
using testing::kFirstHeader;
using testing::kJobEnd;
using testing::kNextHeader;

const std::string kPitch6 = "\x1c%!\" p";
const std::string kPitch8 = "\x1c%) p";
const std::string kPitch4 = "\x1c%!( p";
const std::string kPitch12 = "\x1c%& p";

/// The origin, in points.
constexpr double kEdge = 14.4;
constexpr double kHair = 1e-6;

/// Compares x and baseline of each character with what was computed by hand.
void expect_places(const Sheet& sheet,
                   std::initializer_list<std::pair<double, double>> x_and_baseline) {
  ASSERT_EQ(sheet.cells.size(), x_and_baseline.size());
  std::size_t at = 0;
  for (const auto& [x, baseline] : x_and_baseline) {
    EXPECT_NEAR(sheet.cells[at].x, x, kHair) << "character " << at;
    EXPECT_NEAR(sheet.cells[at].baseline(), baseline, kHair) << "character " << at;
    ++at;
  }
}

std::string note(const Sheet& sheet) {
  return text_of(sheet.note);
}

// ---- Lines --------------------------------------------------------------------------------------

TEST(LayoutLines, TextStandsAt80PercentOfItsLine) {
  const Sheet sheet = first_sheet("AB\f");
  expect_places(sheet, {{14.4, 14.4 + 9.6}, {14.4 + 7.2, 14.4 + 9.6}});
  EXPECT_EQ(characters(sheet), "AB");
  EXPECT_DOUBLE_EQ(sheet.cells[0].width, 7.2);
  EXPECT_DOUBLE_EQ(sheet.cells[0].height, 12);
}

TEST(LayoutLines, LineFeedLeadsToTheLeftEdgeOfTheNextLine) {
  expect_places(first_sheet("A B\nC\n\nD\f"), {{14.4, 24}, {28.8, 24}, {14.4, 36}, {14.4, 60}});
}

TEST(LayoutLines, VerticalTabIsALineFeedAndReturnStaysOnTheLine) {
  expect_places(first_sheet("A\vB\rC\f"), {{14.4, 24}, {14.4, 36}, {14.4, 36}});
}

TEST(LayoutLines, APitchIsTheHeightOfTheLineAtWhoseBeginningItStands) {
  const Sheet sheet =
      first_sheet(kPitch6 + "A\n" + kPitch8 + "B\n" + kPitch4 + "C\n" + kPitch12 + "D\f");
  // Tops: 14.4, 26.4, 35.4, 53.4.
  expect_places(
      sheet, {{kEdge, 14.4 + 9.6}, {kEdge, 26.4 + 7.2}, {kEdge, 35.4 + 14.4}, {kEdge, 53.4 + 4.8}});
  ASSERT_EQ(sheet.lines.size(), 4U);
  EXPECT_NEAR(sheet.lines[3].top, 53.4, kHair);
  EXPECT_NEAR(sheet.lines[3].height, 6, kHair);
  EXPECT_EQ(sheet.lines[3].number, 4U);
}

TEST(LayoutLines, TheTopOfAFormSkipsLinesOfTheirOwnHeights) {
  // The lines above the first printed one are 12, 9 and 18 points high.
  expect_places(first_sheet(kPitch6 + "\n" + kPitch8 + "\n" + kPitch4 + "\n" + kPitch6 + "A\f"),
                {{kEdge, 14.4 + 39 + 9.6}});
}

TEST(LayoutLines, APitchInMidLineIsThatOfTheNextLine) {
  expect_places(first_sheet("A" + kPitch8 + "B\nC\nD\f"),
                {{kEdge, 24}, {21.6, 24}, {kEdge, 26.4 + 7.2}, {kEdge, 35.4 + 7.2}});
}

TEST(LayoutLines, PitchesThatAreNoneAreNotedAndChangeNothing) {
  const Sheet sheet = first_sheet(std::string("\x1c%p\x1c%!$$ !q") + "A\nB\f");
  expect_places(sheet, {{kEdge, 24}, {kEdge, 36}});
  EXPECT_EQ(note(sheet), "2 x FS %");
}

TEST(LayoutLines, ALineKeepsItsHeightFromOneBlockToTheNext) {
  // The pitch of a form is not carried; the one that is carried counts behind the line.
  const std::string job = kFirstHeader + block('2', kPitch8 + "A") + block('6', kPitch6) +
                          block('0', "B\nC\f") + kJobEnd;
  const KeptSheets kept = lay_out(job);
  ASSERT_EQ(kept.sheets.size(), 1U);
  expect_places(kept.sheets[0], {{kEdge, 14.4 + 7.2}, {21.6, 14.4 + 7.2}, {kEdge, 23.4 + 9.6}});
}

TEST(LayoutLines, APitchAtTheEndOfABlockHoldsForTheLineBehindIt) {
  const std::string job = kFirstHeader + block('2', "A\n" + kPitch8) + block('6', kPitch6) +
                          block('0', "B\f") + kJobEnd;
  expect_places(lay_out(job).sheets.at(0), {{kEdge, 24}, {kEdge, 26.4 + 7.2}});
}

TEST(LayoutLines, WhatABlockSetIsForgottenUnlessItIsCarried) {
  const std::string page = kFirstHeader + block('2', kPitch8 + "A\f");
  const std::string next = kNextHeader + block('2', "B\f") + kJobEnd;
  expect_places(lay_out(page + next).sheets.at(1), {{kEdge, 24}});
  expect_places(lay_out(page + block('6', kPitch8) + next).sheets.at(1), {{kEdge, 14.4 + 7.2}});
}

// ---- Columns ------------------------------------------------------------------------------------

TEST(LayoutColumns, CharacterPitchIsTheWidthOfACell) {
  expect_places(first_sheet("\x1bQ0;0600/GABC\f"), {{14.4, 24}, {20.4, 24}, {26.4, 24}});
}

TEST(LayoutColumns, DoubleByteCharactersAreTwiceAsWideUnlessTheirPitchIsSet) {
  expect_places(first_sheet("\xe3\x81\x82\xc3\xa4"
                            "A\f"),
                {{14.4, 24}, {28.8, 24}, {43.2, 24}});
  expect_places(first_sheet("\x1bQ0;0600/G\xe3\x81\x82"
                            "A\f"),
                {{14.4, 24}, {26.4, 24}});
  expect_places(first_sheet("\x1bQ0;0600/G\x1c$!  p\xe3\x81\x82"
                            "A\f"),
                {{14.4, 24}, {24.4, 24}});
}

TEST(LayoutColumns, BackspaceAndTab) {
  expect_places(first_sheet("AB\b_\tC\tD\f"),
                {{14.4, 24}, {21.6, 24}, {21.6, 24}, {72, 24}, {129.6, 24}});
  // Not over the left edge; and a tab at a stop leads to the next one.
  expect_places(first_sheet("\b\bA\f"), {{14.4, 24}});
  EXPECT_NEAR(first_sheet("12345678\tB\f").cells.back().x, 14.4 + 16 * 7.2, kHair);
}

TEST(LayoutColumns, WhatIsNoCharacterIsABox) {
  const Sheet sheet = first_sheet(
      "\x80\xfe"
      "A\xe3\x41\x42\xc0\x80"
      "B\f");
  EXPECT_EQ(characters(sheet), "??A??B");
  expect_places(sheet, {{14.4, 24}, {21.6, 24}, {28.8, 24}, {36, 24}, {50.4, 24}, {64.8, 24}});
  EXPECT_EQ(note(sheet), "2 x byte that is no character, 2 x character that is not UTF-8");
}

TEST(LayoutColumns, BlanksTakeRoomAndAreNotDrawn) {
  expect_places(first_sheet("  A\xe3\x80\x80"
                            "B\f"),
                {{28.8, 24}, {50.4, 24}});
}

// ---- Positions ----------------------------------------------------------------------------------

TEST(LayoutPositions, LeadToColumnsAndLines) {
  // 1 inch from the left edge, half an inch further, 2 inches down, and a quarter inch below that.
  const Sheet sheet = first_sheet("\x1b[7200`A\x1b[3600aB\x1b[14400dC\x1b[1800eD\nE\f");
  expect_places(sheet, {{86.4, 24},
                        {86.4 + 7.2 + 36, 24},
                        {86.4 + 7.2 + 36 + 7.2, 14.4 + 144 + 9.6},
                        {86.4 + 7.2 + 36 + 14.4, 14.4 + 162 + 9.6},
                        {14.4, 14.4 + 174 + 9.6}});
  EXPECT_EQ(sheet.lines[1].number, 0U);
  EXPECT_EQ(sheet.lines[3].number, 2U);
}

TEST(LayoutPositions, NoNumberIsNone) {
  expect_places(first_sheet("AB\x1b[`C\x1b[dD\f"),
                {{14.4, 24}, {21.6, 24}, {14.4, 24}, {21.6, 24}});
  EXPECT_EQ(note(first_sheet("\x1b[-1a\x1b[1;2`A\f")), "1 x ESC [..a, 1 x ESC [..`");
}

TEST(LayoutPositions, CountInTheUnitOfTheJob) {
  expect_places(first_sheet("\x1bQ1;300!C\x1b[300`A\f"), {{86.4, 24}});
}

TEST(LayoutPositions, ALineThatIsLedToHasThePitchInForce) {
  expect_places(first_sheet("A" + kPitch8 + "\x1b[7200dB\nC\f"),
                {{14.4, 24}, {21.6, 86.4 + 7.2}, {14.4, 95.4 + 7.2}});
}

// ---- The sheet ----------------------------------------------------------------------------------

TEST(LayoutSheet, PaperAndOrientationComeFromThePageFormat) {
  const Sheet plain = first_sheet("A\f");
  EXPECT_NEAR(plain.settings.width(), 595.2756, 0.001);
  EXPECT_NEAR(plain.settings.height(), 841.8898, 0.001);
  const Sheet a3 = first_sheet("A\f", "\x1bQ100;100!I\x1bQ0;3;1;0!@");
  EXPECT_EQ(a3.settings.paper->name, "A3");
  EXPECT_EQ(a3.settings.tray, "2");
  const Sheet b5 = first_sheet("A\f", "\x1bQ1;5;1!F");
  EXPECT_EQ(b5.settings.paper->name, "JIS B5");
  EXPECT_NEAR(b5.settings.width(), 257 / 25.4 * 72, kHair);
  EXPECT_NEAR(b5.settings.height(), 182 / 25.4 * 72, kHair);
}

TEST(LayoutSheet, AnotherPaperIsA4AndNoted) {
  const Sheet sheet = first_sheet("A\f", "\x1bQ7;9;0!F");
  EXPECT_EQ(sheet.settings.paper->name, "A4");
  EXPECT_EQ(note(sheet), "1 x paper size that is not known");
}

TEST(LayoutSheet, OffsetsAreTheOrigin) {
  expect_places(first_sheet("A\f", {}, "\x1bQ3600;7200;;!H"), {{36, 72 + 9.6}});
  // Below 1440 there is none.
  expect_places(first_sheet("A\f", {}, "\x1bQ1439;1440;;!H"), {{14.4, 24}});
  expect_places(first_sheet("A\f", {}, "\x1bQ;2000;;!H"), {{14.4, 29.6}});
}

TEST(LayoutSheet, AReductionMakesCellsAndMovesSmaller) {
  const Sheet sheet = first_sheet("AB\n\x1b[7200`C\f", "\x1bQ66;80!I");
  expect_places(
      sheet, {{14.4, 14.4 + 7.68}, {14.4 + 4.752, 14.4 + 7.68}, {14.4 + 47.52, 14.4 + 9.6 + 7.68}});
  EXPECT_NEAR(sheet.column_width, 4.752, kHair);
  EXPECT_EQ(note(first_sheet("A\x1bQ9;100!I\f")), "1 x ESC Q..!I");
}

TEST(LayoutSheet, ParametersAreKept) {
  const std::string job =
      testing::parameter_block("DCH=240\nFOV=OVER\nOVS=2\nCPS=3\nFRM=F001\nFFL=110\nBIN=A\n") +
      testing::kJobStart + kNextHeader + block('2', "A\f") + kJobEnd;
  const PageSettings page = lay_out(job).sheets.at(0).settings;
  EXPECT_EQ(page.overlay, "OVER");
  EXPECT_EQ(page.overlay_count, "2");
  EXPECT_EQ(page.copies, "3");
  EXPECT_EQ(page.form_code, "F001");
  EXPECT_EQ(page.tray, "any");
  EXPECT_NEAR(page.form_length, 792, kHair);
  EXPECT_NEAR(first_sheet("A\f", "\x1bQ10;;00110;!\\").settings.form_length, 792, kHair);
}

TEST(LayoutSheet, DuplexSidesTakeTurns) {
  const std::string duplex = "\x1bQ2;0;00500;00000!W";
  const std::string job = testing::kFirstParameters + testing::kJobStart +
                          block('9', testing::kUnit + duplex) + block('2', "A\f") + kNextHeader +
                          block('2',
                                "B\f\x1c%!\" p"
                                "C\f") +
                          kNextHeader + block('2', "D\f") +
                          block('9', testing::kUnit + "\x1bQ0;;;!W") + block('2', "E\f") + kJobEnd;
  std::string sides;
  for (const Sheet& sheet : lay_out(job).sheets) {
    sides += sheet.side == Side::front ? 'f' : sheet.side == Side::back ? 'b' : '-';
  }
  EXPECT_EQ(sides, "fbfb-");
  EXPECT_NEAR(lay_out(job).sheets.at(0).settings.binding_margin, 5, kHair);
}

TEST(LayoutSheet, WhatIsNoSheetIsNoSide) {
  // Behind the form feed nothing is put on another sheet.
  const std::string duplex = "\x1bQ2;0;00500;00000!W";
  const std::string job = testing::kFirstParameters + testing::kJobStart +
                          block('9', testing::kUnit + duplex) + block('2', "A\f" + kPitch6) +
                          kNextHeader + block('2', "B\f") + kJobEnd;
  const KeptSheets kept = lay_out(job);
  ASSERT_EQ(kept.sheets.size(), 2U);
  EXPECT_EQ(kept.sheets[0].side, Side::front);
  EXPECT_EQ(kept.sheets[1].side, Side::back);
}

// ---- Pages and sheets ---------------------------------------------------------------------------

/// Page and sheet of each sheet, with its text.
std::string sheets_of(const KeptSheets& kept) {
  std::string text;
  for (const Sheet& sheet : kept.sheets) {
    text += std::to_string(sheet.page) + "." + std::to_string(sheet.number) + ":" +
            characters(sheet) + " ";
  }
  return text;
}

TEST(LayoutPages, AFormFeedInsideAPageFeedsASheetOfIt) {
  const std::string job = kFirstHeader + block('2', "A\f" + kPitch6 + "B\f") + kNextHeader +
                          block('2', "C\f") + kJobEnd;
  EXPECT_EQ(sheets_of(lay_out(job)), "1.1:A 1.2:B 2.1:C ");
}

TEST(LayoutPages, AnEmptyPageIsASheet) {
  EXPECT_EQ(sheets_of(lay_out(one_page("\f"))), "1.1: ");
}

TEST(LayoutPages, TheFinalFormFeedFeeds) {
  const std::string job = kFirstHeader + block('2', "A\n") + kFinalFormFeed + kJobEnd;
  EXPECT_EQ(sheets_of(lay_out(job)), "1.1:A ");
}

TEST(LayoutPages, NoTwoSheetsHaveTheSameNumbers) {
  // Pictures are named by them. The data in front of the page and behind the job end is none of it.
  const std::string stray = block('0', "A\f");
  const std::string job = stray + kFirstHeader + block('2', "B\f") + kJobEnd + stray + stray +
                          kFirstHeader + block('2', "C\f") + kJobEnd;
  EXPECT_EQ(sheets_of(lay_out(job)), "1.1:A 1.2:B 1.3:A 1.4:A 2.1:C ");
  // What is on no sheet has no number.
  EXPECT_EQ(sheets_of(lay_out(block('0', "\x07") + kFirstHeader + block('2', "B\f") + kJobEnd)),
            "1.1:B ");
}

TEST(LayoutPages, WhatWasNotFedIsDrawnAsFarAsItGoes) {
  EXPECT_EQ(sheets_of(lay_out(kFirstHeader + block('2', "A\n"))), "1.1:A ");
  const std::string cut = kFirstHeader + block('2', "A\fB\n\x1b[12");
  EXPECT_EQ(sheets_of(lay_out(cut.substr(0, cut.size() - 2))), "1.1:A 1.2:B ");
  // Settings alone are nothing.
  EXPECT_EQ(sheets_of(lay_out(kFirstHeader + block('2', "A\f") + kNextHeader +
                              block('2', kPitch8 + "\n\n"))),
            "1.1:A ");
}

TEST(LayoutPages, AFormFeedInDataFeedsNothing) {
  // The page ends with it; the next one begins on another sheet.
  const std::string job =
      kFirstHeader + block('2', "A\x1bQ1;3!aXY\f") + kNextHeader + block('2', "B\f") + kJobEnd;
  EXPECT_EQ(sheets_of(lay_out(job)), "1.1:A 2.1:B ");
}

TEST(LayoutPages, FramesHoldPagesOfOneSheet) {
  const std::string job = bytes("0003CNT_PRN_DAT\0A\fB") + bytes("0002END_PRN_DAT\0C\f");
  EXPECT_EQ(sheets_of(lay_out(job)), "1.1:A 2.1:BC ");
}

TEST(LayoutPages, TwoJobsInOneStream) {
  const std::string wide = testing::kFirstParameters + testing::kJobStart +
                           block('7', "\x1bQ0;3;1!F") + kNextHeader + block('2', "A\f") + kJobEnd;
  const KeptSheets kept = lay_out(wide + one_page("B\f"));
  EXPECT_EQ(sheets_of(kept), "1.1:A 2.1:B ");
  EXPECT_TRUE(kept.sheets.at(0).settings.landscape);
  EXPECT_FALSE(kept.sheets.at(1).settings.landscape);
}

TEST(LayoutPages, FaultsAreHandedOn) {
  std::string job = one_page("A\f");
  job.resize(job.size() - 20);
  const KeptSheets kept = lay_out(job);
  EXPECT_EQ(sheets_of(kept), "1.1:A ");
  EXPECT_FALSE(kept.faults.empty());
}

// ---- Glyphs and notes ---------------------------------------------------------------------------

/// A glyph of 24 rows with its first dot set.
std::string download(const std::string& code) {
  return "\x1c"
         "20" +
         code + "8" + std::string(143, '0');
}

TEST(LayoutGlyphs, ACodePrintsItsGlyphInADoubleByteCell) {
  const Sheet sheet = first_sheet("A\x1b$D" + download("u!") + "u!u\"\x1b(HuB\f");
  EXPECT_EQ(characters(sheet), "A#?uB");
  expect_places(sheet, {{14.4, 24}, {21.6, 24}, {36, 24}, {50.4, 24}, {57.6, 24}});
  EXPECT_EQ(sheet.cells[1].glyph->rows, 24U);
  EXPECT_EQ(note(sheet), "1 x code without a glyph");
}

TEST(LayoutGlyphs, AGlyphLastsOverPagesAndACodeOverBlocks) {
  const std::string job = kFirstHeader + block('2', "\x1b$D" + download("u!") + "u!\f") +
                          kNextHeader + block('2', "u") + block('0', "!\f") + kJobEnd;
  EXPECT_EQ(sheets_of(lay_out(job)), "1.1:# 2.1:# ");
}

TEST(LayoutNotes, TheStandardStateIsNotNoted) {
  const Sheet sheet =
      first_sheet("\x1c(`q\x1c(ap\x1c%!\" p\x1bQ1 y\x1bQ1;!f\x1b$@\x1b(H\x1c&! u\x1c%!\" pA\f");
  EXPECT_EQ(note(sheet), "");
  EXPECT_EQ(sheet.spacing, 105U);
}

TEST(LayoutNotes, OtherSequencesAndControlBytesAreCounted) {
  const Sheet sheet =
      first_sheet("\x1bQ1;2!z\x1bQ3;4!z\x1cJ\x07\x7f\x1b%A\x1c(bp\x1bQ1;3!a\f\n\x1b(A\x1bQ1;2 p\f");
  EXPECT_EQ(note(sheet),
            "2 x ESC Q..!z, 1 x FS J, 2 x control byte, 1 x unknown ESC %, 1 x FS (, "
            "1 x ESC Q..!a, 1 x ESC Q.. SP p");
}

TEST(LayoutNotes, WhatIsBeyondThePaperIsCutAndCounted) {
  // 80 columns fit on upright A4, the 81st is cut, the others are beyond it.
  const Sheet wide = first_sheet(std::string(90, 'x') + "\f");
  EXPECT_EQ(wide.cells.size(), 81U);
  EXPECT_EQ(note(wide), "10 x character beyond the paper");
  // 68 lines fit, the 69th is cut; nothing goes to another sheet.
  std::string lines;
  for (int i = 0; i < 100; ++i) {
    lines += "x\n";
  }
  const KeptSheets tall = lay_out(one_page(lines + "\f"));
  ASSERT_EQ(tall.sheets.size(), 1U);
  EXPECT_EQ(tall.sheets[0].cells.size(), 69U);
  EXPECT_EQ(note(tall.sheets[0]), "32 x character beyond the paper");
  EXPECT_EQ(note(first_sheet(std::string(90, ' ') + "\f")), "");
}

}  // namespace
}  // namespace rlx::proof
