#include "input/wide_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <utility>

#include "support/descriptors.h"
#include "support/guarded_bytes.h"

namespace rlx::testing {
namespace {

constexpr std::array<std::uint8_t, 2> kLineEnds{0x0a, 0x0c};
/// Ranges that sequences end with.
constexpr std::array<std::pair<std::uint8_t, std::uint8_t>, 4> kRanges{
    {{'p', 'y'}, {0x40, 0x7f}, {0x40, 0x7e}, {'@', '@'}}};
/// Bytes at which every scan has to decide something, and their neighbours.
const std::string kTelling =
    "\x09\x0a\x0b\x0c\x0d\x1a\x1b\x1c\x1d\x1f !/0?@AHopy~\x7f\x80\x8d\x8e\x8f\xbf\xc0\xdf\xe0\xe9"
    "\xef\xf0\xfd\xfe\xff";

std::uint8_t byte_at(const std::string& text, std::size_t at) {
  return static_cast<std::uint8_t>(text[at]);
}

bool ends_single_bytes(std::uint8_t byte, std::uint8_t line_end) {
  return byte == line_end || byte == 0x0c || byte == 0x1b || byte == 0x1c || byte == 0x8e ||
         (byte >= 0xc0 && byte <= 0xfd);
}

std::size_t single_bytes_one_by_one(const std::string& text, std::uint8_t line_end) {
  std::size_t count = 0;
  while (count < 16 && !ends_single_bytes(byte_at(text, count), line_end)) {
    ++count;
  }
  return count;
}

/// Bytes at the front of the first `most` for which `wanted` holds.
template <typename Wanted>
std::size_t front(const std::string& text, std::size_t most, Wanted wanted) {
  std::size_t count = 0;
  while (count < most && wanted(byte_at(text, count))) {
    ++count;
  }
  return count;
}

std::size_t few_in_range_one_by_one(const std::string& text, std::uint8_t first,
                                    std::uint8_t last) {
  return front(text, 8, [=](std::uint8_t byte) { return byte < first || byte > last; });
}

std::size_t three_byte_characters_one_by_one(const std::string& text) {
  std::size_t at = 0;
  while (at < 15 && byte_at(text, at) >= 0xe0 && byte_at(text, at) <= 0xef &&
         byte_at(text, at + 2) != 0x0c) {
    at += 3;
  }
  return at;
}

class WideScan : public ::testing::Test {
 protected:
  /// Compares every scan with its loop, at both ends of readable memory.
  void expect_as_one_by_one(const std::string& text) {
    for (const std::uint8_t* bytes : {guarded_.at_end(text), guarded_.at_start(text)}) {
      for (const std::uint8_t line_end : kLineEnds) {
        ASSERT_EQ(single_bytes_at_front(bytes, line_end), single_bytes_one_by_one(text, line_end));
      }
      ASSERT_EQ(three_byte_characters_at_front(bytes), three_byte_characters_one_by_one(text));
      ASSERT_EQ(high_bytes_at_front(bytes),
                front(text, 16, [](std::uint8_t byte) { return byte >= 0x80; }));
      for (std::size_t count = 0; count <= 16; ++count) {
        const bool whole = count % 3 == 0 && count <= three_byte_characters_one_by_one(text);
        ASSERT_EQ(are_three_byte_characters(bytes, count), whole) << count;
      }
    }
    expect_few_as_one_by_one(text.substr(0, 8));
    expect_few_as_one_by_one(text.substr(8));
  }

  /// The same for the scans of few bytes.
  void expect_few_as_one_by_one(const std::string& text) {
    for (const std::uint8_t* bytes : {guarded_.at_end(text), guarded_.at_start(text)}) {
      ASSERT_EQ(few_single_bytes_at_front(bytes),
                front(text, 8, [](std::uint8_t byte) { return byte >= 0x20 && byte < 0x80; }));
      for (const auto& [first, last] : kRanges) {
        ASSERT_EQ(first_few_in_range(bytes, ByteRange(first, last)),
                  few_in_range_one_by_one(text, first, last));
      }
    }
  }

  GuardedBytes guarded_;
};

TEST_F(WideScan, FindsEveryByteAtEveryPosition) {
  for (const std::string filler : {"x", "\xbf", "\x01", "\xff"}) {
    for (int value = 0; value < 256; ++value) {
      for (std::size_t position = 0; position < 16; ++position) {
        std::string text;
        while (text.size() < 16) {
          text += filler;
        }
        text[position] = static_cast<char>(value);
        SCOPED_TRACE(::testing::Message() << value << " at " << position);
        ASSERT_NO_FATAL_FAILURE(expect_as_one_by_one(text));
      }
    }
  }
}

TEST_F(WideScan, SeesEveryByteAtEveryPlaceOfThreeByteCharacters) {
  // Any bytes may follow a lead byte, but a character that ends in FF ends the page.
  const std::string all = bytes("\xe3\x81\x82\xe0\x41\xff\xef\xbf\xbf\xe9\x0c\x80\xe5\x1b\0z");
  ASSERT_EQ(three_byte_characters_at_front(guarded_.at_end(all)), 15U);
  for (int value = 0; value < 256; ++value) {
    for (std::size_t position = 0; position < 16; ++position) {
      std::string text = all;
      text[position] = static_cast<char>(value);
      SCOPED_TRACE(::testing::Message() << value << " at " << position);
      ASSERT_NO_FATAL_FAILURE(expect_as_one_by_one(text));
    }
  }
}

TEST_F(WideScan, GivesTheFirstOfSeveralBytes) {
  for (std::size_t first = 0; first < 16; ++first) {
    for (std::size_t second = first; second < 16; ++second) {
      std::string text(16, 'A');
      text[first] = text[second] = '\x0c';
      EXPECT_EQ(single_bytes_at_front(guarded_.at_end(text), '\n'), first);
    }
  }
}

TEST_F(WideScan, AgreesOnMixturesOfTellingBytes) {
  std::mt19937 generator(11);
  for (int i = 0; i < 30000; ++i) {
    std::string text;
    while (text.size() < 16) {
      text += kTelling[generator() % kTelling.size()];
    }
    ASSERT_NO_FATAL_FAILURE(expect_as_one_by_one(text)) << i;
  }
}

TEST_F(WideScan, CountsNothingButTheBytesOfTheRangeItIsGiven) {
  for (int first = 0; first < 128; ++first) {
    for (const int range : {0, 1, 9, 0x3e, 0x3f, 127}) {
      const int last = std::min(first + range, 127);
      const ByteRange bounds(static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(last));
      for (int value = 0; value < 256; ++value) {
        const std::string text(8, static_cast<char>(value));
        const std::size_t found = first_few_in_range(guarded_.at_end(text), bounds);
        ASSERT_EQ(found, value >= first && value <= last ? 0U : 8U) << first << " " << last;
      }
    }
  }
}

}  // namespace
}  // namespace rlx::testing
