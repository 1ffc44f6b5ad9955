#include "driver/code_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace rlx {
namespace {

constexpr CodeSet kSome{0, 63, 64, 127, 260, 3839, 3840};
static_assert(kSome.contains(64) && !kSome.contains(65));

std::vector<std::uint32_t> members(const CodeSet& set) {
  std::vector<std::uint32_t> codes;
  set.for_each([&](std::uint32_t code) { codes.push_back(code); });
  return codes;
}

TEST(CodeSet, HoldsItsCodesAlone) {
  const std::vector<std::uint32_t> codes{0, 63, 64, 127, 260, 3839, 3840};
  EXPECT_EQ(members(kSome), codes);
  for (std::uint32_t code = 0; code <= kHighestCommandCode; ++code) {
    EXPECT_EQ(kSome.contains(code), std::ranges::find(codes, code) != codes.end()) << code;
  }
}

TEST(CodeSet, HoldsNoCodeAboveTheHighest) {
  constexpr CodeSet all = CodeSet::all();
  for (const std::uint32_t code : {3841U, 3903U, 3904U, 4096U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_FALSE(all.contains(code));
  }
  EXPECT_EQ(members(all).size(), kHighestCommandCode + 1);
}

TEST(CodeSet, AllButOthersIsTheRest) {
  constexpr CodeSet rest = CodeSet::all_but(kSome);
  EXPECT_EQ(members(rest).size(), kHighestCommandCode + 1 - 7);
  for (std::uint32_t code = 0; code <= kHighestCommandCode; ++code) {
    EXPECT_NE(rest.contains(code), kSome.contains(code)) << code;
  }
}

TEST(CodeSet, EmptySetHoldsNothing) {
  constexpr CodeSet none{};
  EXPECT_TRUE(members(none).empty());
  EXPECT_EQ(members(CodeSet::all_but(none)).size(), kHighestCommandCode + 1);
}

}  // namespace
}  // namespace rlx
