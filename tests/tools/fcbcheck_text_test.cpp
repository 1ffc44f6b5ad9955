#include "fcbcheck/text.h"

#include <gtest/gtest.h>

#include <string>

namespace rlx::fcbcheck {
namespace {

TEST(FcbcheckText, InchesHaveTwoDecimalsThatTellSomething) {
  EXPECT_EQ(inches(0), "0");
  EXPECT_EQ(inches(7200), "1");
  EXPECT_EQ(inches(72000), "10");
  EXPECT_EQ(inches(25200), "3.5");
  EXPECT_EQ(inches(1200), "0.17");
  EXPECT_EQ(inches(600), "0.08");
  EXPECT_EQ(inches(720), "0.1");
  EXPECT_EQ(inches(79300), "11.01");
}

TEST(FcbcheckText, InchesOfEighthsAreWhole) {
  EXPECT_EQ(inches(900), "0.125");
  EXPECT_EQ(inches(1800), "0.25");
  EXPECT_EQ(inches(2700), "0.375");
}

TEST(FcbcheckText, InchesNeverReadAsWholeOrHalfWhenTheyAreNot) {
  EXPECT_EQ(inches(79199), "10.9999");
  EXPECT_EQ(inches(79201), "11.0001");
  EXPECT_EQ(inches(25199), "3.4999");
  EXPECT_EQ(inches(25201), "3.5001");
  EXPECT_EQ(inches(1), "0.0001");
}

TEST(FcbcheckText, Counted) {
  EXPECT_EQ(counted(0, "line"), "0 lines");
  EXPECT_EQ(counted(1, "line"), "1 line");
  EXPECT_EQ(counted(2, "line"), "2 lines");
}

TEST(FcbcheckText, WordsAreShownInAscii) {
  EXPECT_EQ(shown_word("lpi"), "lpi");
  EXPECT_EQ(shown_word("!~"), "!~");
  EXPECT_EQ(shown_word("10\r"), "10\\r");
  EXPECT_EQ(shown_word("\x1b[2J\x7f\xef\xbb\xbf"), "\\x1b[2J\\x7f\\xef\\xbb\\xbf");
  EXPECT_EQ(shown_word(std::string(40, 'x')), std::string(40, 'x'));
  EXPECT_EQ(shown_word(std::string(41, 'x')), std::string(40, 'x') + "...");
}

TEST(FcbcheckText, NamesAreShownWithoutControlBytes) {
  EXPECT_EQ(shown_name("a b/\xc3\xa9"), "a b/\xc3\xa9");
  EXPECT_EQ(shown_name("a\n\x1b\x7f"), "a???");
}

TEST(FcbcheckText, XmlHasEntitiesAndNoControlCharacters) {
  EXPECT_EQ(xml_text("a & <b> \"c\" 'd'", 99), "a &amp; &lt;b&gt; &quot;c&quot; 'd'");
  EXPECT_EQ(xml_text("a\tb\x7f", 99), "a?b?");
}

TEST(FcbcheckText, XmlTakesUtf8AndNothingElse) {
  const std::string good = "\xc3\xa9\xe3\x81\x82\xf0\x9f\x98\x80\xef\xbf\xbd";
  EXPECT_EQ(xml_text(good, 99), good);
  EXPECT_EQ(xml_text("\xff\xfe\x80", 99), "???");
  EXPECT_EQ(xml_text("\xc3", 99), "?");
  EXPECT_EQ(xml_text("\xc3z", 99), "?z");
  EXPECT_EQ(xml_text("\xe3\x81", 99), "??");
  EXPECT_EQ(xml_text("\xc0\x80", 99), "??");
  EXPECT_EQ(xml_text("\xe0\x80\x80", 99), "???");
  EXPECT_EQ(xml_text("\xed\xa0\x80", 99), "???");
  EXPECT_EQ(xml_text("\xef\xbf\xbf", 99), "???");
  EXPECT_EQ(xml_text("\xf4\x90\x80\x80", 99), "????");
}

TEST(FcbcheckText, XmlIsCutBetweenCharacters) {
  const std::string three = "\xe3\x81\x82&\xc3\xa9";
  EXPECT_EQ(xml_text(three, 3), "\xe3\x81\x82&amp;\xc3\xa9");
  EXPECT_EQ(xml_text(three, 2), "\xe3\x81\x82&amp;\xe2\x80\xa6");
  EXPECT_EQ(xml_text("", 0), "");
}

}  // namespace
}  // namespace rlx::fcbcheck
