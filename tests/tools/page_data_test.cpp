#include "rlx_reader/page_data.h"

#include <gtest/gtest.h>

#include "support/descriptors.h"
#include "support/escaped_bytes.h"
#include "tools/read_job.h"

namespace rlx::testing {
namespace {

/// Tokens of an escaped text.
std::string tokens_of(std::string_view escaped, std::size_t portion = 0) {
  return shown_tokens(decode_escaped(escaped).value(), portion);
}

/// One of everything, and what it is.
const std::string& everything() {
  static const std::string all =
      decode_escaped(
          R"(AB cd\n\r\f\x7f\x00\s(`q\s%!" p\sJ\sK\ec\e$@\e(H\e\x7f\n\f\e\s\e[12`\e[1;2 EX)"
          R"(\eQ1;3!a\n\eQ\eQ1;2 y\eQ1;!f\eQ2;5!\x7f12345T\xc3\xa4\xe3\x81\x82\xf8\n\f\e\s\xff\x80Z)"
          R"(\eQ!p01234567890123456789012345678901U\eQ1;2;3;4;03/~abcV\ex\s9\eQ9;2 nxyW)")
          .value();
  return all;
}

constexpr const char* kEverythingAsTokens =
    "0 text AB cd\n"
    "5 control \\n\n"
    "6 control \\r\n"
    "7 control \\f\n"
    "8 control \\x7f\n"
    "9 control \\x00\n"
    "10 sequence \\s(`q\n"
    "14 sequence \\s%!\" p\n"
    "20 sequence \\sJ\n"
    "22 sequence \\sK\n"
    "24 sequence \\ec\n"
    "26 sequence \\e$@\n"
    "29 sequence \\e(H\n"
    "32 sequence \\e\\x7f\\n\\f\\e\\s\n"
    "38 sequence \\e[12`\n"
    "43 sequence \\e[1;2 E\n"
    "50 text X\n"
    "51 sequence \\eQ1;3!a\n"
    "58 data \\n\\eQ\n"
    "61 sequence \\eQ1;2 y\n"
    "68 sequence \\eQ1;!f\n"
    "74 sequence \\eQ2;5!\\x7f\n"
    "81 data 12345\n"
    "86 text T\n"
    "87 double \\xc3\\xa4\\xe3\\x81\\x82\\xf8\\n\\f\\e\\s\n"
    "97 invalid \\xff\\x80\n"
    "99 text Z\n"
    "100 sequence \\eQ!p\n"
    "104 data 01234567890123456789012345678901\n"
    "136 text U\n"
    "137 sequence \\eQ1;2;3;4;03/~\n"
    "151 data abc\n"
    "154 text V\n"
    "155 unknown \\ex\n"
    "157 unknown \\s9\n"
    "159 sequence \\eQ9;2 n\n"
    "166 data xy\n"
    "168 text W\n";

TEST(PageData, IsCutIntoTokens) {
  EXPECT_EQ(shown_tokens(everything()), kEverythingAsTokens);
}

TEST(PageData, IsTheSameInPortionsOfAnySize) {
  for (std::size_t portion = 1; portion <= 70; ++portion) {
    ASSERT_EQ(shown_tokens(everything(), portion), kEverythingAsTokens) << portion;
  }
}

TEST(PageData, OfNothingIsNothing) {
  EXPECT_EQ(shown_tokens(""), "");
}

TEST(PageData, TellsWhatTheEndCuts) {
  EXPECT_EQ(tokens_of(R"(A\xe3\x81)"), "0 text A\n1 invalid \\xe3\\x81\n");
  EXPECT_EQ(tokens_of(R"(A\e)"), "0 text A\n1 unknown \\e\n");
  EXPECT_EQ(tokens_of(R"(A\s%12)"), "0 text A\n1 unknown \\s%12\n");
  EXPECT_EQ(tokens_of(R"(\eQ1;9!aAB)"), "0 sequence \\eQ1;9!a\n7 data AB\n");
}

TEST(PageData, HasDelAsFinalByteBehindAnExclamationMarkOnly) {
  EXPECT_EQ(tokens_of(R"(\eQ1\x7f2!\x7fA)"), "0 sequence \\eQ1\\x7f2!\\x7fA\n");
  EXPECT_EQ(tokens_of(R"(\eQ1!\x7fA)"), "0 sequence \\eQ1!\\x7f\n5 text A\n");
}

/// A sequence of `length` bytes that ends with a final byte.
std::string long_sequence(std::size_t length) {
  return "\x1b[" + std::string(length - 3, '1') + "a";
}

TEST(PageData, HasSequencesOfUpTo4096Bytes) {
  for (const std::size_t portion : {0U, 1U, 7U, 4095U, 4096U, 4097U}) {
    SCOPED_TRACE(portion);
    EXPECT_EQ(shown_tokens(long_sequence(4096) + "Z", portion).substr(0, 12), "0 sequence \\");
    const std::string ones(4094, '1');
    EXPECT_EQ(shown_tokens(long_sequence(4097) + "\nZ", portion),
              "0 unknown \\e[\n2 text " + ones + "a\n4097 control \\n\n4098 text Z\n");
  }
}

TEST(PageData, ReadsWhatStandsInASequenceThatIsNone) {
  // All that waited for its final byte is read again, each token at its place.
  std::string data = "\x1b[";
  std::string expected = "0 unknown \\e[\n";
  for (std::size_t at = 2; at < 6000; at += 2) {
    data += "1\n";
    expected += std::to_string(at) + " text 1\n" + std::to_string(at + 1) + " control \\n\n";
  }
  for (const std::size_t portion : {0U, 1U, 13U, 5000U}) {
    EXPECT_EQ(shown_tokens(data, portion), expected) << portion;
  }
}

TEST(PageData, KeepsOffsetsWherePortionsLeap) {
  struct Offsets : reader::TokenVisitor {
    std::vector<std::uint64_t> all;
    void token(const reader::Token& token) override { all.push_back(token.offset); }
  } offsets;
  reader::PageDataReader reader(offsets);
  reader.feed(reader_bytes("A\x1bQ1"), 100);
  EXPECT_FALSE(reader.is_whole());
  reader.feed(reader_bytes(" y\nB"), 200);
  EXPECT_TRUE(reader.is_whole());
  EXPECT_EQ(offsets.all, (std::vector<std::uint64_t>{100, 101, 202, 203}));
}

TEST(PageData, HasDataOverPortions) {
  for (std::size_t portion = 1; portion < 9; ++portion) {
    EXPECT_EQ(shown_tokens("\x1bQ1;0000006!a123456\f", portion),
              "0 sequence \\eQ1;0000006!a\n13 data 123456\n19 control \\f\n");
  }
}

// ---- Glyphs -------------------------------------------------------------------------------------

/// What was downloaded last.
struct LastGlyph : reader::TokenVisitor {
  reader::Glyph glyph;
  std::size_t count = 0;
  std::uint64_t offset = 0;
  void token(const reader::Token& token) override {
    if (token.kind == reader::TokenKind::glyph) {
      glyph = *token.glyph;
      ++count;
      offset = token.offset;
    }
  }
};

LastGlyph read_glyph(std::string_view data, std::size_t portion) {
  LastGlyph last;
  reader::PageDataReader reader(last);
  for (std::size_t at = 0; at < data.size(); at += portion) {
    reader.feed(reader_bytes(data.substr(at, portion)), at);
  }
  EXPECT_TRUE(reader.is_whole());
  return last;
}

TEST(Glyphs, ComeInTheFixedForm) {
  // 24 rows of 6 characters; the first row is dots 1 and 24.
  std::string pattern(144, '0');
  pattern[0] = '8';
  pattern[5] = '1';
  const std::string data =
      "\x1b$D\x1c"
      "20u!" +
      pattern + "u!";
  for (std::size_t portion = 1; portion <= 70; ++portion) {
    const LastGlyph last = read_glyph(data, portion);
    ASSERT_EQ(last.count, 1U);
    EXPECT_EQ(last.offset, 3U);
    EXPECT_EQ(last.glyph.code, (std::array<std::uint8_t, 2>{'u', '!'}));
    EXPECT_EQ(last.glyph.rows, 24U);
    ASSERT_EQ(last.glyph.dots.size(), 72U);
    EXPECT_EQ(last.glyph.dots[0], 0x80);
    EXPECT_EQ(last.glyph.dots[2], 0x01);
  }
}

TEST(Glyphs, ComeInNibbles) {
  // 22 rows of 6 characters, of which the last one has two dots too many.
  std::string pattern(22 * 6, '0');
  pattern[6] = '?';
  pattern[7] = ':';
  pattern[22 * 6 - 1] = '<';
  const std::string data =
      "\x1c"
      "0\"r\x1c"
      "21v~" +
      pattern;
  for (std::size_t portion = 1; portion <= 70; ++portion) {
    const LastGlyph last = read_glyph(data, portion);
    ASSERT_EQ(last.count, 1U);
    EXPECT_EQ(last.glyph.rows, 22U);
    ASSERT_EQ(last.glyph.dots.size(), 66U);
    EXPECT_EQ(last.glyph.dots[3], 0xfa);
    EXPECT_EQ(last.glyph.dots[65], 0x0c);
  }
}

TEST(Glyphs, ComeUnencoded) {
  // 36 rows of 5 bytes, of any value.
  std::string pattern(36 * 5, '\x1b');
  pattern[4] = '\xf0';
  const std::string data =
      "\x1c"
      "0#v\x1bQ0 Du\"" +
      pattern + "A";
  for (std::size_t portion = 1; portion <= 70; ++portion) {
    const LastGlyph last = read_glyph(data, portion);
    ASSERT_EQ(last.count, 1U);
    EXPECT_EQ(last.glyph.rows, 36U);
    EXPECT_EQ(last.glyph.dots.size(), 180U);
    EXPECT_EQ(last.glyph.dots[0], 0x1b);
    EXPECT_EQ(last.glyph.dots[4], 0xf0);
  }
}

TEST(Glyphs, HaveTheSizeSelectedLast) {
  const std::string first =
      "\x1c"
      "0\"r\x1c"
      "21u!" +
      std::string(22 * 6, '0');
  const std::string second =
      "\x1c"
      "0'r\x1c"
      "21u\"" +
      std::string(72 * 18, '0');
  const LastGlyph last = read_glyph(first + "A\n" + second + second.substr(4), 1000);
  EXPECT_EQ(last.count, 3U);
  EXPECT_EQ(last.glyph.rows, 72U);
}

TEST(Glyphs, AreNoneWithoutASizeOrWithOneThatNoMemoryHolds) {
  EXPECT_EQ(shown_tokens("\x1c"
                         "21u!00"),
            "0 unknown \\s2\n2 text 1u!00\n");
  EXPECT_EQ(shown_tokens("\x1c"
                         "0)))))))q\x1c"
                         "21u!00"),
            "0 sequence \\s0)))))))q\n10 unknown \\s2\n12 text 1u!00\n");
  EXPECT_EQ(shown_tokens("\x1bQ0 Du!"), "0 sequence \\eQ0 D\n5 text u!\n");
}

}  // namespace
}  // namespace rlx::testing
