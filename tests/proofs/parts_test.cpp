// The small parts of the program: words, page ranges, notes, sizes of characters, options.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rlxproof/cell_painter.h"
#include "rlxproof/margins.h"
#include "rlxproof/note.h"
#include "rlxproof/options.h"
#include "rlxproof/page_range.h"
#include "rlxproof/words.h"

namespace rlx::proof {
namespace {

using Words = std::vector<std::string>;

TEST(Words, AreDividedAsAShellDoes) {
  EXPECT_EQ(split_words(""), Words());
  EXPECT_EQ(split_words(" \t\n"), Words());
  EXPECT_EQ(split_words("-n INVOICE  -p\tforms\n"), (Words{"-n", "INVOICE", "-p", "forms"}));
  EXPECT_EQ(split_words("-p 'my forms' -J \"a b\"c"), (Words{"-p", "my forms", "-J", "a bc"}));
  EXPECT_EQ(split_words("'' \"\""), (Words{"", ""}));
  EXPECT_EQ(split_words(R"(a\ b 'c\d' "e\"f\g" \')"), (Words{"a b", R"(c\d)", R"(e"f\g)", "'"}));
}

TEST(Words, AnOpenQuoteIsAFault) {
  EXPECT_EQ(split_words("a 'b"), std::nullopt);
  EXPECT_EQ(split_words("a \"b"), std::nullopt);
  EXPECT_EQ(split_words("a \"b\\\""), std::nullopt);
  EXPECT_EQ(split_words("a\\"), std::nullopt);
}

TEST(PageRange, TakesOneOrTwoNumbers) {
  const auto both = parse_page_range("3-7");
  ASSERT_TRUE(both);
  EXPECT_FALSE(both->contains(2));
  EXPECT_TRUE(both->contains(3));
  EXPECT_TRUE(both->contains(7));
  EXPECT_FALSE(both->contains(8));
  EXPECT_TRUE(parse_page_range("5")->contains(5));
  EXPECT_FALSE(parse_page_range("5")->contains(6));
  EXPECT_TRUE(parse_page_range("3-")->contains(1000000));
  EXPECT_FALSE(parse_page_range("3-")->contains(2));
  EXPECT_TRUE(parse_page_range("-4")->contains(1));
  EXPECT_FALSE(parse_page_range("-4")->contains(5));
}

TEST(PageRange, RefusesOthers) {
  for (const char* text : {"", "-", "0", "0-3", "7-3", "a", "3-b", "3-7-9", " 3", "1-2 ", "--4"}) {
    EXPECT_FALSE(parse_page_range(text)) << text;
  }
}

TEST(Note, CountsByKindAndKeepsSoMany) {
  Note note;
  for (std::size_t i = 0; i < 2 * Note::kMostKinds; ++i) {
    note.add("kind " + std::to_string(i));
  }
  note.add("kind 0", 2);
  ASSERT_EQ(note.entries().size(), Note::kMostKinds + 1);
  EXPECT_EQ(note.entries().front().count, 3U);
  EXPECT_EQ(note.entries().back().what, "something else");
  EXPECT_EQ(note.entries().back().count, Note::kMostKinds);
}

TEST(Note, CharactersStandInFrontAndAreAlwaysCounted) {
  Note note;
  for (std::size_t i = 0; i < 2 * Note::kMostKinds; ++i) {
    note.add("kind " + std::to_string(i));
  }
  note.add_character("cut");
  note.add_character("boxed", 2);
  note.add_character("cut");
  note.add("kind 0");
  note.add("one more");
  ASSERT_EQ(note.entries().size(), Note::kMostKinds + 3);
  EXPECT_TRUE(text_of(note).starts_with("2 x cut, 2 x boxed, 2 x kind 0, 1 x kind 1, "));
  EXPECT_EQ(note.entries().back().what, "something else");
  EXPECT_EQ(note.entries().back().count, Note::kMostKinds + 1);
}

TEST(GlyphSize, FillsItsCell) {
  // 10 per inch at 6 lines per inch: as wide as the cell.
  Cell cell{0, 0, 7.2, 12, 'A', false, nullptr};
  EXPECT_DOUBLE_EQ(glyph_size(cell, 0.6).across, 12);
  EXPECT_DOUBLE_EQ(glyph_size(cell, 0.6).down, 12);
  // 8 lines per inch: as high as the line, and no gap between characters that reads as a blank.
  cell.height = 9;
  EXPECT_DOUBLE_EQ(glyph_size(cell, 0.6).down, 9);
  EXPECT_DOUBLE_EQ(glyph_size(cell, 0.6).across, 10.8);
  // A narrow pitch makes it small, never wider than its cell.
  cell = {0, 0, 3.6, 12, 'A', false, nullptr};
  EXPECT_DOUBLE_EQ(glyph_size(cell, 0.6).across, 6);
  EXPECT_DOUBLE_EQ(glyph_size(cell, 0.6).down, 6);
  // A wide one does not make it wider than twice its height.
  cell = {0, 0, 72, 12, 'A', false, nullptr};
  EXPECT_DOUBLE_EQ(glyph_size(cell, 0.6).across, 24);
}

TEST(GlyphSize, DoesNotStretchNarrowCharactersOfDoubleByteCells) {
  // Accented letters and kana of half the width have the size of the square ones beside them.
  const Cell cell{0, 0, 14.4, 12, 0xfc, true, nullptr};
  const GlyphSize square = glyph_size(cell, 1);
  EXPECT_DOUBLE_EQ(square.down, 12);
  EXPECT_DOUBLE_EQ(square.across, 14.4 - 0.08 * 12);
  EXPECT_DOUBLE_EQ(glyph_size(cell, 0.5).across, square.across);
  EXPECT_DOUBLE_EQ(glyph_size(cell, 0.5).down, square.down);
}

TEST(Heading, SaysWhatSheetItIs) {
  Sheet sheet;
  sheet.page = 3;
  sheet.number = 2;
  EXPECT_EQ(heading_of(sheet, "job"), "job   \xc2\xb7   page 3, sheet 2   \xc2\xb7   A4 upright");
  sheet.side = Side::back;
  sheet.settings.landscape = true;
  sheet.settings.tray = "2";
  sheet.settings.copies = "3";
  sheet.settings.overlay = "OVER";
  sheet.settings.overlay_count = "4";
  sheet.settings.form_code = "F1";
  sheet.settings.form_length = 792;
  sheet.settings.binding_margin = 5;
  sheet.spacing = 105;
  const std::string heading = heading_of(sheet, "job");
  for (const char* part :
       {"back", "A4 landscape", "tray 2", "copies 3", "overlay OVER x 4", "form code F1",
        "form length 11 in", "bound at the left, 0.07 in", "character spacing 105, not drawn"}) {
    EXPECT_NE(heading.find(part), std::string::npos) << part;
  }
}

TEST(Heading, ALongNameLosesItsMiddle) {
  const std::string most(40, 'n');
  EXPECT_TRUE(heading_of(Sheet(), most).starts_with(most + "   "));
  const std::string front(18, 'a');
  const std::string back = std::string(11, 'c') + "end.rlx";
  EXPECT_TRUE(heading_of(Sheet(), front + "middle" + back).starts_with(front + " .. " + back));
  // Characters are not cut.
  std::string japanese;
  for (int i = 0; i < 41; ++i) {
    japanese += "\xe8\xa1\xa8";
  }
  EXPECT_TRUE(heading_of(Sheet(), japanese)
                  .starts_with(japanese.substr(0, 54) + " .. " + japanese.substr(0, 54) + "   "));
}

std::variant<Options, int> options_of(std::vector<std::string> words) {
  words.insert(words.begin(), "rlxproof");
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  return read_options(static_cast<int>(words.size()), arguments.data());
}

TEST(Options, ThePdfGoesBesideItsJob) {
  EXPECT_EQ(std::get<Options>(options_of({"a/b.rlx"})).pdf, "a/b.pdf");
  EXPECT_EQ(std::get<Options>(options_of({"a.d/b"})).pdf, "a.d/b.pdf");
  EXPECT_EQ(std::get<Options>(options_of({"b.pdf"})).pdf, "b.pdf.pdf");
  EXPECT_EQ(std::get<Options>(options_of({"b", "-o", "-"})).pdf, "-");
  EXPECT_EQ(std::get<Options>(options_of({"b", "--png", "x"})).pdf, std::nullopt);
  const auto both = std::get<Options>(options_of({"--png", "x", "b", "-o", "c"}));
  EXPECT_EQ(both.pdf, "c");
  EXPECT_EQ(both.pictures, "x");
  EXPECT_EQ(both.job, "b");
}

TEST(Options, WrongUseIsStatus2) {
  EXPECT_EQ(std::get<int>(options_of({"-x"})), 2);
  EXPECT_EQ(std::get<int>(options_of({"a", "b"})), 2);
  EXPECT_EQ(std::get<int>(options_of({"--pages", "7-3", "a"})), 2);
  EXPECT_EQ(std::get<int>(options_of({"--filter-options", "'", "a"})), 2);
  EXPECT_EQ(std::get<int>(options_of({"-o"})), 2);
}

}  // namespace
}  // namespace rlx::proof
