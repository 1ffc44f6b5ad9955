#include "fonts/gaiji_cache.h"

#include <gtest/gtest.h>

#include <string>

namespace rlx {
namespace {

GaijiCharacter character(std::size_t number) {
  return {1, 0, static_cast<std::uint8_t>(0xF5 + number / 94),
          static_cast<std::uint8_t>(0xA1 + number % 94)};
}

std::string text(const DownloadCode& code) {
  return {code.begin(), code.end()};
}

/// The code of the n-th character, counted from 0: two rows of 94 codes.
std::string nth_code(std::size_t number) {
  return {number < 94 ? 'u' : 'v', static_cast<char>('!' + number % 94)};
}

TEST(GaijiCacheTest, AnEmptyCacheHoldsNothing) {
  const GaijiCache cache{};
  EXPECT_EQ(gaiji_cache_find(cache, {}), nullptr);
  EXPECT_EQ(gaiji_cache_find(cache, character(0)), nullptr);
}

TEST(GaijiCacheTest, TheFirst188CharactersGetACodeEach) {
  GaijiCache cache;
  for (std::size_t number = 0; number < 188; ++number) {
    EXPECT_EQ(text(gaiji_cache_add(cache, character(number))), nth_code(number));
    EXPECT_EQ(cache.count, number + 1);
    EXPECT_EQ(cache.next, (number + 1) % 188);
  }
  EXPECT_EQ(nth_code(0), "u!");
  EXPECT_EQ(nth_code(93), "u~");
  EXPECT_EQ(nth_code(94), "v!");
  EXPECT_EQ(nth_code(187), "v~");
  for (std::size_t number = 0; number < 188; ++number) {
    const GaijiCacheEntry* const entry = gaiji_cache_find(cache, character(number));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(text(entry->code), nth_code(number));
  }
}

TEST(GaijiCacheTest, AFullCacheGivesTheOldestCharactersCodeAway) {
  GaijiCache cache;
  for (std::size_t number = 0; number < 188; ++number) {
    gaiji_cache_add(cache, character(number));
  }
  // Once around and a bit: every slot keeps its code.
  for (std::size_t number = 188; number < 2 * 188 + 3; ++number) {
    EXPECT_EQ(text(gaiji_cache_add(cache, character(number))), nth_code(number % 188));
    EXPECT_EQ(cache.count, 188U);
    EXPECT_EQ(gaiji_cache_find(cache, character(number - 188)), nullptr);
    EXPECT_NE(gaiji_cache_find(cache, character(number - 187)), nullptr);
    EXPECT_NE(gaiji_cache_find(cache, character(number)), nullptr);
  }
}

TEST(GaijiCacheTest, CodeSetTypefaceAndBothBytesMakeTheDifference) {
  GaijiCache cache;
  const GaijiCharacter known{1, 0, 0xF5, 0xA1};
  gaiji_cache_add(cache, known);
  EXPECT_NE(gaiji_cache_find(cache, known), nullptr);
  EXPECT_EQ(gaiji_cache_find(cache, {0, 0, 0xF5, 0xA1}), nullptr);
  EXPECT_EQ(gaiji_cache_find(cache, {1, 1, 0xF5, 0xA1}), nullptr);
  EXPECT_EQ(gaiji_cache_find(cache, {1, 0, 0xF6, 0xA1}), nullptr);
  EXPECT_EQ(gaiji_cache_find(cache, {1, 0, 0xF5, 0xA2}), nullptr);
}

TEST(GaijiCacheTest, TheFirstOfTwoEqualEntriesAnswers) {
  GaijiCache cache;
  gaiji_cache_add(cache, character(0));
  gaiji_cache_add(cache, character(0));
  EXPECT_EQ(gaiji_cache_find(cache, character(0)), cache.entries.data());
}

TEST(GaijiCacheTest, AClearedCacheStartsAgain) {
  GaijiCache cache;
  for (std::size_t number = 0; number < 200; ++number) {
    gaiji_cache_add(cache, character(number));
  }
  gaiji_cache_clear(cache);
  EXPECT_EQ(cache.count, 0U);
  EXPECT_EQ(cache.next, 0U);
  EXPECT_EQ(gaiji_cache_find(cache, character(199)), nullptr);
  EXPECT_EQ(text(gaiji_cache_add(cache, character(7))), "u!");
  EXPECT_EQ(text(gaiji_cache_add(cache, character(8))), "u\"");
}

}  // namespace
}  // namespace rlx
