#include "support/escaped_bytes.h"

#include <gtest/gtest.h>

#include "support/descriptors.h"

namespace rlx::testing {
namespace {

TEST(EscapedBytes, PrintableBytesStandForThemselves) {
  for (char byte = ' '; byte <= '~'; ++byte) {
    if (byte != '\\') {
      EXPECT_EQ(encode_escaped_line(std::string(1, byte)), std::string(1, byte));
    }
  }
}

TEST(EscapedBytes, NamedBytesHaveLetters) {
  EXPECT_EQ(encode_escaped_line("\n\r\f\x1b\x1c\\"), "\\n\\r\\f\\e\\s\\\\");
  EXPECT_EQ(decode_escaped("\\n\\r\\f\\e\\s\\\\"), "\n\r\f\x1b\x1c\\");
}

TEST(EscapedBytes, OtherBytesAreHexadecimal) {
  EXPECT_EQ(encode_escaped_line(bytes("\0\x1f\x7f\x80\xff")), "\\x00\\x1f\\x7f\\x80\\xff");
}

TEST(EscapedBytes, EveryByteComesBack) {
  for (int value = 0; value <= 0xff; ++value) {
    const std::string byte(1, static_cast<char>(value));
    const std::string text = encode_escaped(byte);
    for (const char character : text) {
      EXPECT_TRUE((character >= ' ' && character <= '~') || character == '\n') << value;
    }
    EXPECT_EQ(decode_escaped(text), byte) << text;
  }
}

TEST(EscapedBytes, EveryPairOfBytesComesBack) {
  for (int pair = 0; pair <= 0xffff; ++pair) {
    const std::string both{static_cast<char>(pair / 256), static_cast<char>(pair % 256)};
    ASSERT_EQ(decode_escaped(encode_escaped(both)), both) << encode_escaped(both);
  }
}

TEST(EscapedBytes, LineBreaksAreLayout) {
  EXPECT_EQ(decode_escaped("A\nB\\n\n\n"), "AB\n");
}

TEST(EscapedBytes, LineIsBrokenAfterLfAndFf) {
  EXPECT_EQ(encode_escaped("A\nB\fC\n\n"), "A\\n\nB\\f\nC\\n\n\\n\n");
}

TEST(EscapedBytes, LineIsBrokenBeforeABlockHeader) {
  EXPECT_EQ(encode_escaped("A\x1bQ2;0000000001/aB\x1bQ0;0000000000/`"),
            "A\n\\eQ2;0000000001/aB\n\\eQ0;0000000000/`\n");
}

TEST(EscapedBytes, WhatIsNoBlockHeaderBreaksNoLine) {
  for (const std::string_view other :
       {"\x1bQ2;000000001/a", "\x1bQ2;0000000001/b", "\x1bQ2;0000000001!a", "\x1bQx;0000000001/a",
        "\x1bQ2:0000000001/a", "\x1bR2;0000000001/a", "\x1bQ2;00000x0001/a"}) {
    EXPECT_EQ(encode_escaped(std::string("A").append(other)),
              "A" + encode_escaped_line(other) + "\n");
  }
}

TEST(EscapedBytes, BlankAtTheEndOfALineIsVisible) {
  EXPECT_EQ(encode_escaped("A  "), "A \\x20\n");
  EXPECT_EQ(encode_escaped(" \x1bQ2;0000000001/a"), "\\x20\n\\eQ2;0000000001/a\n");
}

TEST(EscapedBytes, NothingIsNothing) {
  EXPECT_EQ(encode_escaped(""), "");
  EXPECT_EQ(decode_escaped(""), "");
}

TEST(EscapedBytes, MalformedTextIsRefused) {
  for (const std::string& text :
       {bytes("\\"), bytes("\\q"), bytes("\\x"), bytes("\\x1"), bytes("\\x1g"), bytes("\\xG1"),
        bytes("\t"), bytes("\r"), bytes("\0"), bytes("\x7f"), bytes("\x80")}) {
    EXPECT_EQ(decode_escaped(text), std::nullopt) << text;
  }
}

TEST(EscapedBytes, JobParameterBlockIsKnownByItsHeader) {
  EXPECT_TRUE(starts_with_job_parameter_block("\x1bQ0;0000000048/`text"));
  EXPECT_FALSE(starts_with_job_parameter_block("\x1bQ0;0000000048/atext"));
  EXPECT_FALSE(starts_with_job_parameter_block("\x1bQ9;0000000048/`text"));
  EXPECT_FALSE(starts_with_job_parameter_block("A\x1bQ0;0000000048/`text"));
}

TEST(DescribeDifference, EqualBytesHaveNone) {
  EXPECT_EQ(describe_difference("A\n", "A\n"), "");
}

TEST(DescribeDifference, ShowsBothSidesFromTheFirstDifferingByte) {
  EXPECT_EQ(describe_difference("A\nBC", "A\nXC"),
            "differs at byte 2 (4 bytes expected, 4 written)\n"
            "  expected: A\\n >>> BC\n"
            "  written : A\\n >>> XC\n");
}

TEST(DescribeDifference, ShowsAMissingEnd) {
  EXPECT_EQ(describe_difference("AB", "A"),
            "differs at byte 1 (2 bytes expected, 1 written)\n"
            "  expected: A >>> B\n"
            "  written : A >>> (end)\n");
}

TEST(DescribeDifference, CutsLongSurroundings) {
  const std::string same(100, 'a');
  const std::string after(61, 'b');
  EXPECT_EQ(describe_difference(same + after, same + std::string(60, 'c')),
            "differs at byte 100 (161 bytes expected, 160 written)\n"
            "  expected: ..." +
                std::string(40, 'a') + " >>> " + std::string(60, 'b') + "...\n" +
                "  written : ..." + std::string(40, 'a') + " >>> " + std::string(60, 'c') + "\n");
}

}  // namespace
}  // namespace rlx::testing
