#include "support/number.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace rlx {
namespace {

TEST(Number, LettersAndDigitsOfAllByteValues) {
  const std::string all = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  for (int byte = 0; byte < 256; ++byte) {
    const bool expected = byte < 128 && all.find(static_cast<char>(byte)) != std::string::npos;
    EXPECT_EQ(is_letter_or_digit(static_cast<std::uint8_t>(byte)), expected) << byte;
  }
}

TEST(Number, DigitsOfAllByteValues) {
  const std::string all = "0123456789";
  for (int byte = 0; byte < 256; ++byte) {
    const bool expected = byte < 128 && all.find(static_cast<char>(byte)) != std::string::npos;
    EXPECT_EQ(is_digit(static_cast<std::uint8_t>(byte)), expected) << byte;
  }
}

TEST(Number, DecimalValueSkipsBlanksAndIgnoresJunk) {
  EXPECT_EQ(decimal_value("12"), 12);
  EXPECT_EQ(decimal_value("  12"), 12);
  EXPECT_EQ(decimal_value("007"), 7);
  EXPECT_EQ(decimal_value("12x3"), 12);
  EXPECT_EQ(decimal_value("-5"), -5);
  EXPECT_EQ(decimal_value("+5"), 5);
}

TEST(Number, DecimalValueWithoutDigitsIsZero) {
  EXPECT_EQ(decimal_value(""), 0);
  EXPECT_EQ(decimal_value("   "), 0);
  EXPECT_EQ(decimal_value("x12"), 0);
  EXPECT_EQ(decimal_value("- 5"), 0);
}

TEST(Number, DecimalValueKeepsTheLowBitsOfLargeNumbers) {
  EXPECT_EQ(decimal_value("2147483647"), 2147483647);
  EXPECT_EQ(decimal_value("2147483648"), -2147483647 - 1);
  EXPECT_EQ(decimal_value("4294967296"), 0);
  EXPECT_EQ(decimal_value("4294967301"), 5);
  EXPECT_EQ(decimal_value("99999999999999999999999"), -1);
}

TEST(Number, AnyNumberOfBlanksMayStandInFront) {
  for (const std::size_t blanks : {1U, 30U, 31U, 32U, 33U, 4000U}) {
    EXPECT_EQ(decimal_value(std::string(blanks, '\t') + "100;7"), 100) << blanks;
    EXPECT_EQ(decimal_value(std::string(blanks, '0') + "100;7"), 100) << blanks;
  }
  EXPECT_EQ(decimal_value(" \t\n\v\f\r-3"), -3);
  EXPECT_EQ(decimal_value(std::string_view("\0 5", 3)), 0);
}

TEST(Number, BothEndsOfTheWideRange) {
  EXPECT_EQ(decimal_value("9223372036854775807"), -1);
  EXPECT_EQ(decimal_value("9223372036854775808"), -1);
  EXPECT_EQ(decimal_value("9223372036854775806"), -2);
  EXPECT_EQ(decimal_value("-9223372036854775807"), 1);
  EXPECT_EQ(decimal_value("-9223372036854775808"), 0);
  EXPECT_EQ(decimal_value("-9223372036854775809"), 0);
  EXPECT_EQ(decimal_value("-2147483648"), -2147483647 - 1);
}

}  // namespace
}  // namespace rlx
