#include "support/byte_builder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace rlx {
namespace {

std::string decimal(std::int32_t value, int width) {
  ByteBuilder<32> builder;
  builder.append_decimal(value, width);
  return std::string(builder.text());
}

TEST(ByteBuilder, StartsEmpty) {
  const ByteBuilder<4> builder{};
  EXPECT_TRUE(builder.empty());
  EXPECT_EQ(builder.size(), 0U);
  EXPECT_TRUE(builder.bytes().empty());
  EXPECT_EQ(builder.text(), "");
}

TEST(ByteBuilder, AppendsTextsCharactersAndNulBytes) {
  ByteBuilder<16> builder;
  builder.append("ab");
  builder.append('c');
  builder.append(std::string_view("\0d", 2));
  builder.append("");
  EXPECT_EQ(builder.text(), std::string_view("abc\0d", 5));
  EXPECT_EQ(builder.size(), 5U);
  EXPECT_EQ(builder.bytes().size(), 5U);
  EXPECT_FALSE(builder.empty());
  EXPECT_EQ(builder.bytes()[4], 'd');
}

TEST(ByteBuilder, DecimalsHaveNoLeadingZerosByDefault) {
  ByteBuilder<32> builder;
  builder.append_decimal(0);
  builder.append(',');
  builder.append_decimal(240);
  builder.append(',');
  builder.append_decimal(-5);
  EXPECT_EQ(builder.text(), "0,240,-5");
}

TEST(ByteBuilder, DecimalsAreFilledWithZerosUpToTheirWidth) {
  EXPECT_EQ(decimal(0, 5), "00000");
  EXPECT_EQ(decimal(330, 5), "00330");
  EXPECT_EQ(decimal(9999, 5), "09999");
  EXPECT_EQ(decimal(10000, 5), "10000");
  EXPECT_EQ(decimal(99999, 5), "99999");
  EXPECT_EQ(decimal(100000, 5), "100000");
  EXPECT_EQ(decimal(13, 10), "0000000013");
}

TEST(ByteBuilder, SignCountsAsOneOfTheCharactersOfADecimal) {
  EXPECT_EQ(decimal(-1, 5), "-0001");
  EXPECT_EQ(decimal(-9999, 5), "-9999");
  EXPECT_EQ(decimal(-10000, 5), "-10000");
}

TEST(ByteBuilder, DecimalsAtTheEndsOfTheirRange) {
  EXPECT_EQ(decimal(std::numeric_limits<std::int32_t>::max(), 1), "2147483647");
  EXPECT_EQ(decimal(std::numeric_limits<std::int32_t>::min(), 1), "-2147483648");
  EXPECT_EQ(decimal(std::numeric_limits<std::int32_t>::min(), 12), "-02147483648");
}

TEST(ByteBuilder, WhatWouldNotFitIsLeftOutWhole) {
  for (std::size_t used = 0; used <= 8; ++used) {
    for (std::size_t more = 0; more <= 9; ++more) {
      ByteBuilder<8> builder;
      builder.append(std::string(used, 'a'));
      builder.append(std::string(more, 'b'));
      const std::string expected =
          std::string(used, 'a') + std::string(used + more <= 8 ? more : 0, 'b');
      EXPECT_EQ(builder.text(), expected) << used << '+' << more;
    }
  }
}

TEST(ByteBuilder, CharacterAndDecimalThatWouldNotFitAreLeftOut) {
  ByteBuilder<3> builder;
  builder.append("ab");
  builder.append_decimal(12);
  EXPECT_EQ(builder.text(), "ab");
  builder.append_decimal(1);
  EXPECT_EQ(builder.text(), "ab1");
  builder.append('c');
  EXPECT_EQ(builder.text(), "ab1");
}

}  // namespace
}  // namespace rlx
