#include "driver/loop/code_set.h"

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
  constexpr CodeSet kAll = CodeSet::all();
  for (const std::uint32_t code : {3841U, 3903U, 3904U, 4096U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_FALSE(kAll.contains(code));
  }
  EXPECT_EQ(members(kAll).size(), kHighestCommandCode + 1);
}

TEST(CodeSet, AllButOthersIsTheRest) {
  constexpr CodeSet kRest = CodeSet::all_but(kSome);
  EXPECT_EQ(members(kRest).size(), kHighestCommandCode + 1 - 7);
  for (std::uint32_t code = 0; code <= kHighestCommandCode; ++code) {
    EXPECT_NE(kRest.contains(code), kSome.contains(code)) << code;
  }
}

TEST(CodeSet, EmptySetHoldsNothing) {
  constexpr CodeSet kNone{};
  EXPECT_TRUE(members(kNone).empty());
  EXPECT_EQ(members(CodeSet::all_but(kNone)).size(), kHighestCommandCode + 1);
}

}  // namespace
}  // namespace rlx
