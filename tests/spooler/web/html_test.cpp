#include "rlx-printer-app/web/html.h"

#include <gtest/gtest.h>

namespace rlx::printer_app {
namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

TEST(Html, EscapesWhatHasAMeaning) {
  EXPECT_EQ(escaped(R"(<a href="x" id='y'>&</a>)"),
            "&lt;a href=&quot;x&quot; id=&#39;y&#39;&gt;&amp;&lt;/a&gt;");
  EXPECT_EQ(escaped("請求書 é 😀\t\r\n"), "請求書 é 😀\t\r\n");
}

TEST(Html, ReplacesWhatIsNoText) {
  EXPECT_EQ(escaped(std::string("a\0b", 3)), std::string("a") + kReplacement + "b");
  for (const char* bad : {"\x1B", "\x7F", "\x80", "\xC0", "\xC1", "\xF5", "\xFF", "\xE3"}) {
    EXPECT_EQ(escaped(bad), kReplacement) << bad;
  }
  // Overlong, a surrogate, beyond the last character.
  for (const char* bad : {"\xE0\x80\xBC", "\xED\xA0\x80"}) {
    EXPECT_EQ(escaped(bad), std::string(kReplacement) + kReplacement + kReplacement);
  }
  EXPECT_EQ(escaped("\xF4\x90\x80\x80").size(), 12U);
}

TEST(Html, NeverLetsAMarkThrough) {
  // Whatever stands in front of it, also the beginning of a character.
  for (int lead = 0; lead < 256; ++lead) {
    for (const char mark : {'<', '>', '"', '\''}) {
      const std::string text{static_cast<char>(lead), mark};
      EXPECT_EQ(escaped(text).find(mark), std::string::npos) << lead;
    }
  }
}

TEST(Html, KnowsPlainText) {
  EXPECT_TRUE(is_plain_text("print 4 79200\n# 請求書\r\n"));
  EXPECT_TRUE(is_plain_text(""));
  EXPECT_FALSE(is_plain_text("\x1B[1m"));
  EXPECT_FALSE(is_plain_text("\xC0\xC1"));
}

TEST(Html, EncodesQueries) {
  EXPECT_EQ(url_encoded("A-b_1.~"), "A-b_1.~");
  EXPECT_EQ(url_encoded("a b&c=\"é"), "a%20b%26c%3D%22%C3%A9");
}

TEST(Html, FillsPlacesOnce) {
  EXPECT_EQ(filled("{1} of {0}", {"a", "{1}"}), "{1} of a");
  EXPECT_EQ(filled("{2} {x} {", {"a", "b"}), "{2} {x} {");
}

TEST(Html, EndsLinesAsFormsDo) {
  EXPECT_EQ(with_line_feeds("a\r\nb\rc\nd\r"), "a\nb\rc\nd\r");
}

}  // namespace
}  // namespace rlx::printer_app
