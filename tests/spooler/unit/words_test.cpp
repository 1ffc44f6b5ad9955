#include "mapping/words.h"

#include <gtest/gtest.h>

namespace rlx::spooler {
namespace {

using Pieces = std::vector<std::string>;

TEST(Words, AreTheSameWhateverTheirCase) {
  EXPECT_TRUE(same_word("", ""));
  EXPECT_TRUE(same_word("Tray-1", "tRAY-1"));
  EXPECT_TRUE(same_word("azAZ", "AZaz"));
}

TEST(Words, DifferInAnythingElse) {
  EXPECT_FALSE(same_word("tray-1", "tray-2"));
  EXPECT_FALSE(same_word("tray", "tray-1"));
  EXPECT_FALSE(same_word("tray-1", "tray"));
  EXPECT_FALSE(same_word("", "a"));
  // The bytes beside the letters, which differ from one another by 0x20, too.
  EXPECT_FALSE(same_word("@", "`"));
  EXPECT_FALSE(same_word("[", "{"));
  EXPECT_FALSE(same_word("\xc3\x84", "\xc3\xa4"));
}

TEST(Divide, LeavesOutEmptyPieces) {
  EXPECT_EQ(divide("", ':'), Pieces());
  EXPECT_EQ(divide(":::", ':'), Pieces());
  EXPECT_EQ(divide("a", ':'), Pieces({"a"}));
  EXPECT_EQ(divide("a:b", ':'), Pieces({"a", "b"}));
  EXPECT_EQ(divide(":a::bc:", ':'), Pieces({"a", "bc"}));
  EXPECT_EQ(divide("a b,c", ','), Pieces({"a b", "c"}));
}

TEST(WholeNumber, IsDigitsAlone) {
  EXPECT_EQ(whole_number("0", 9), 0U);
  EXPECT_EQ(whole_number("0007", 9), 7U);
  EXPECT_EQ(whole_number("4294967295", 4294967295U), 4294967295U);
  for (const char* text :
       {"", " 1", "1 ", "+1", "-1", "-0", "0x1", "1.0", "1e1", "a", "1a", "\n"}) {
    EXPECT_EQ(whole_number(text, 4294967295U), std::nullopt) << text;
  }
}

TEST(WholeNumber, IsAtMostWhatItMayBe) {
  EXPECT_EQ(whole_number("99", 99), 99U);
  EXPECT_EQ(whole_number("100", 99), std::nullopt);
  EXPECT_EQ(whole_number("0", 0), 0U);
  EXPECT_EQ(whole_number("1", 0), std::nullopt);
  // What a wrapped number would be small for.
  EXPECT_EQ(whole_number("4294967296", 4294967295U), std::nullopt);
  EXPECT_EQ(whole_number("18446744073709551617", 4294967295U), std::nullopt);
  EXPECT_EQ(whole_number(std::string(1000, '9'), 4294967295U), std::nullopt);
}

TEST(InOneLine, KeepsTextAsItIs) {
  for (const char* text : {"", "form A-b_1: ~", "\302\240\337\277", "\340\240\200\355\237\277",
                           "\346\227\245\346\234\254", "\360\220\200\200\364\217\277\277"}) {
    EXPECT_EQ(in_one_line(text), text);
  }
}

TEST(InOneLine, HasNothingThatATerminalObeys) {
  EXPECT_EQ(in_one_line("a\nb\n"), "a b ");
  EXPECT_EQ(in_one_line("\033[31m\r\t\177x"), "?[31m???x");
  EXPECT_EQ(in_one_line(std::string("\0A", 2)), "?A");
  EXPECT_EQ(in_one_line("\302\233A"), "??A");
}

TEST(InOneLine, HasNothingThatIsNoUtf8) {
  for (const char* text : {"\200", "\301\277", "\303", "\340\237\277", "\343\201", "\355\240\200",
                           "\360\217\277\277", "\364\220\200\200", "\365\200\200\200", "\377"}) {
    EXPECT_EQ(in_one_line(text), std::string(std::string_view(text).size(), '?'));
    EXPECT_EQ(in_one_line(text + std::string("A")).back(), 'A');
  }
}

}  // namespace
}  // namespace rlx::spooler
