#include "input/byte_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "support/guarded_bytes.h"

namespace rlx::testing {
namespace {

using VectorBlock = BasicByteBlock<VectorBytes>;
using ScalarBlock = BasicByteBlock<ScalarBytes>;
using BlockOfBytes = std::array<std::uint8_t, kBlockBytes>;

/// The bytes for which something is true.
template <typename Holds>
ByteMask bytes_for_which(const BlockOfBytes& bytes, Holds holds) {
  ByteMask mask = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    mask |= ByteMask{holds(bytes[i])} << i;
  }
  return mask;
}

/// A value at each position that is one more than that of the position before it: the blocks of all
/// first values have every value at every position.
BlockOfBytes ascending_from(std::size_t value) {
  BlockOfBytes bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(value + i);
  }
  return bytes;
}

BlockOfBytes random_block(std::mt19937& generator) {
  BlockOfBytes bytes{};
  std::generate(bytes.begin(), bytes.end(),
                [&generator] { return static_cast<std::uint8_t>(generator()); });
  return bytes;
}

/// The rules on one byte, as their names say.
void expect_rules_without_parameter(const BlockOfBytes& bytes) {
  const VectorBlock vector(bytes.data());
  const ScalarBlock scalar(bytes.data());
  const auto high = [](auto rule_bytes) { return rule_bytes.high(); };
  const auto continuation = [](auto rule_bytes) { return rule_bytes.continuation(); };
  const ByteMask all_high = bytes_for_which(bytes, [](int byte) { return byte > 127; });
  const ByteMask all_continuation =
      bytes_for_which(bytes, [](int byte) { return byte > 127 && byte < 192; });
  ASSERT_EQ(vector.where(high), all_high);
  ASSERT_EQ(scalar.where(high), all_high);
  ASSERT_EQ(vector.high(), all_high);
  ASSERT_EQ(scalar.high(), all_high);
  ASSERT_EQ(vector.where(continuation), all_continuation);
  ASSERT_EQ(scalar.where(continuation), all_continuation);
}

void expect_rules_with_one_parameter(const BlockOfBytes& bytes, int wanted) {
  const VectorBlock vector(bytes.data());
  const ScalarBlock scalar(bytes.data());
  const auto parameter = static_cast<std::uint8_t>(wanted);
  const auto up_to = [parameter](auto rule_bytes) { return rule_bytes.up_to(parameter); };
  const ByteMask all_equal = bytes_for_which(bytes, [wanted](int byte) { return byte == wanted; });
  const ByteMask all_up_to = bytes_for_which(bytes, [wanted](int byte) { return byte <= wanted; });
  ASSERT_EQ(vector.equal(parameter), all_equal) << wanted;
  ASSERT_EQ(scalar.equal(parameter), all_equal) << wanted;
  ASSERT_EQ(vector.where(up_to), all_up_to) << wanted;
  ASSERT_EQ(scalar.where(up_to), all_up_to) << wanted;
}

void expect_between(const BlockOfBytes& bytes, int first, int last) {
  const auto from = static_cast<std::uint8_t>(first);
  const auto to = static_cast<std::uint8_t>(last);
  const ByteMask wanted =
      bytes_for_which(bytes, [first, last](int byte) { return byte >= first && byte <= last; });
  ASSERT_EQ(VectorBlock(bytes.data()).between(from, to), wanted) << first << " to " << last;
  ASSERT_EQ(ScalarBlock(bytes.data()).between(from, to), wanted) << first << " to " << last;
}

/// Values at which a comparison with or without a sign, or one off by one, goes wrong.
constexpr std::array<int, 12> kEdges{0x00, 0x01, 0x1b, 0x20, 0x40, 0x7e,
                                     0x7f, 0x80, 0x81, 0xbf, 0xc0, 0xff};

TEST(ByteBlocks, BothKindsTellEveryValueAtEveryPosition) {
  for (std::size_t value = 0; value < 256; ++value) {
    const BlockOfBytes bytes = ascending_from(value);
    ASSERT_NO_FATAL_FAILURE(expect_rules_without_parameter(bytes)) << value;
    for (const int wanted : kEdges) {
      ASSERT_NO_FATAL_FAILURE(expect_rules_with_one_parameter(bytes, wanted)) << value;
    }
    for (std::size_t i = 0; i < kEdges.size(); ++i) {
      // From each edge to itself, the next one, and the last one.
      ASSERT_NO_FATAL_FAILURE(expect_between(bytes, kEdges[i], kEdges[i])) << value;
      ASSERT_NO_FATAL_FAILURE(
          expect_between(bytes, kEdges[i], kEdges[std::min(i + 1, kEdges.size() - 1)]))
          << value;
      ASSERT_NO_FATAL_FAILURE(expect_between(bytes, kEdges[i], kEdges.back())) << value;
    }
  }
}

TEST(ByteBlocks, BothKindsTakeEveryParameter) {
  for (int wanted = 0; wanted < 256; ++wanted) {
    for (const std::size_t value : {0U, 60U, 120U, 180U, 240U}) {
      const BlockOfBytes bytes = ascending_from(value);
      ASSERT_NO_FATAL_FAILURE(expect_rules_with_one_parameter(bytes, wanted)) << value;
      ASSERT_NO_FATAL_FAILURE(expect_between(bytes, wanted / 2, wanted)) << value;
      ASSERT_NO_FATAL_FAILURE(expect_between(bytes, wanted, wanted + (255 - wanted) / 2)) << value;
    }
  }
}

TEST(ByteBlocks, BothKindsAgreeOnRandomBlocks) {
  std::mt19937 generator(64);
  for (int round = 0; round < 1000; ++round) {
    const BlockOfBytes bytes = random_block(generator);
    ASSERT_NO_FATAL_FAILURE(expect_rules_without_parameter(bytes)) << round;
    const int one = static_cast<int>(generator() % 256);
    const int other = static_cast<int>(generator() % 256);
    ASSERT_NO_FATAL_FAILURE(expect_rules_with_one_parameter(bytes, one)) << round;
    ASSERT_NO_FATAL_FAILURE(expect_between(bytes, std::min(one, other), std::max(one, other)));
  }
}

TEST(ByteBlocks, OneByteAloneIsFoundWhereItStands) {
  for (const int filler : {0x00, 0xff}) {
    for (std::size_t at = 0; at < kBlockBytes; ++at) {
      BlockOfBytes bytes{};
      bytes.fill(static_cast<std::uint8_t>(filler));
      bytes[at] = 0x8e;
      EXPECT_EQ(VectorBlock(bytes.data()).equal(0x8e), ByteMask{1} << at) << at;
      EXPECT_EQ(ScalarBlock(bytes.data()).equal(0x8e), ByteMask{1} << at) << at;
    }
  }
}

TEST(ByteBlocks, RulesCanBeJoined) {
  const auto rule = [](auto bytes) {
    return bytes.up_to(0x02) | bytes.equal(0x7f) | bytes.between(0xfe, 0xff) | bytes.equal(0x90);
  };
  for (int value = 0; value < 256; ++value) {
    const BlockOfBytes bytes = ascending_from(static_cast<std::size_t>(value));
    const ByteMask wanted = bytes_for_which(
        bytes, [](int byte) { return byte <= 2 || byte == 127 || byte >= 254 || byte == 144; });
    ASSERT_EQ(VectorBlock(bytes.data()).where(rule), wanted) << value;
  }
}

TEST(ByteBlocks, NothingIsReadAroundThem) {
  GuardedBytes guarded;
  const std::string bytes(kBlockBytes, '\xff');
  for (const std::uint8_t* const place : {guarded.at_start(bytes), guarded.at_end(bytes)}) {
    EXPECT_EQ(VectorBlock(place).high(), ~ByteMask{0});
    EXPECT_EQ(ScalarBlock(place).high(), ~ByteMask{0});
  }
}

TEST(ByteMasks, BitsBelowAPosition) {
  ByteMask bits = 0;
  for (std::size_t position = 0; position < kBlockBytes; ++position) {
    EXPECT_EQ(bits_below(position), bits) << position;
    bits |= ByteMask{1} << position;
  }
  EXPECT_EQ(bits_below(kBlockBytes), bits);
  EXPECT_EQ(bits, ~ByteMask{0});
}

/// Positions of the bits of a mask, in their order.
std::vector<std::size_t> positions_of(ByteMask mask) {
  std::vector<std::size_t> positions;
  for (std::size_t i = 0; i < kBlockBytes; ++i) {
    if ((mask >> i & 1) != 0) {
      positions.push_back(i);
    }
  }
  return positions;
}

void expect_bits(ByteMask mask) {
  const std::vector<std::size_t> positions = positions_of(mask);
  ASSERT_EQ(count_bits(mask), positions.size()) << mask;
  ASSERT_EQ(first_bit(mask), positions.empty() ? kBlockBytes : positions.front()) << mask;
  if (!positions.empty()) {
    ASSERT_EQ(last_bit(mask), positions.back()) << mask;
  }
}

TEST(ByteMasks, FirstAndLastBitAndTheirNumber) {
  expect_bits(0);
  expect_bits(~ByteMask{0});
  for (std::size_t i = 0; i < kBlockBytes; ++i) {
    for (std::size_t j = 0; j < kBlockBytes; ++j) {
      ASSERT_NO_FATAL_FAILURE(expect_bits(ByteMask{1} << i | ByteMask{1} << j));
    }
    ASSERT_NO_FATAL_FAILURE(expect_bits(~ByteMask{0} << i));
    ASSERT_NO_FATAL_FAILURE(expect_bits(~ByteMask{0} >> i));
  }
  std::mt19937_64 generator(7);
  for (int round = 0; round < 3000; ++round) {
    const ByteMask mask = generator();
    ASSERT_NO_FATAL_FAILURE(expect_bits(mask));
    ASSERT_NO_FATAL_FAILURE(expect_bits(mask & generator() & generator()));
  }
}

}  // namespace
}  // namespace rlx::testing
