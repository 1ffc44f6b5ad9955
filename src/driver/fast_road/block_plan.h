#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "driver/fast_road/line_feeds.h"
#include "driver/fast_road/text_masks.h"
#include "output/text_out.h"

namespace rlx {

/// What becomes of the bytes at the front of a block: they are put out as they are, but for what is
/// put in or left out.
struct BlockPlan {
  TextMasks text;
  /// The double-byte set is selected when the byte has been put out.
  ByteMask set = 0;
  /// A switch to the other set goes in front of the byte.
  ByteMask border = 0;
  /// A LF that gets a pitch.
  ByteMask line_feed = 0;

  std::size_t length() const { return text.length; }

  /// Works out where the set changes.
  /// @param was_double  the double-byte set is selected in front of the block.
  void find_borders(bool was_double) {
    const ByteMask before = was_double ? 1 : 0;
    // Bytes that leave the set alone are of the set of what stands in front of them: the carry of
    // the sum runs through those behind double-byte text, and takes away their bits.
    const ByteMask starts = text.neutral & (text.double_byte << 1 | before);
    set = text.double_byte | (text.neutral & ~(text.neutral + starts));
    border = (set ^ (set << 1 | before)) & bits_below(text.length);
  }

  /// Where something is put in or left out.
  ByteMask insertions() const {
    return (border | line_feed | text.prefix) & bits_below(text.length);
  }

  /// Bytes that the first `count` bytes become.
  std::size_t output_length(std::size_t count, const LineFeeds& line_feeds) const;

  /// The largest number of bytes whose output is no longer than `room` and whose last piece is
  /// whole.
  std::size_t fitting(std::size_t room, const LineFeeds& line_feeds) const;
};

/// Bytes behind its output that put_block may write to as well.
inline constexpr std::size_t kPutSlack = 2 * kBlockBytes;
/// Most that a block becomes: for each byte an insertion and the byte.
inline constexpr std::size_t kMostOutput = kBlockBytes * (16 + 1);

namespace detail {

inline constexpr std::size_t kSwitchBytes = kSizeSequenceBytes + kSetSequenceBytes;

// The bits of an index into kInsertions.
inline constexpr std::size_t kToDoubleBit = 1;
inline constexpr std::size_t kBorderBit = 2;
inline constexpr std::size_t kInvalidBit = 4;
inline constexpr std::size_t kPrefixBit = 8;

/// What goes in front of a byte, by those bits. In front of an invalid character a switch leaves
/// out the size sequence; a prefix is left out.
inline constexpr auto kInsertions = [] {
  std::array<Insertion, 16> all{};
  for (std::size_t i = 0; i != all.size(); ++i) {
    const SetSwitch& set_switch = (i & kToDoubleBit) != 0 ? kToDoubleByte : kToSingleByte;
    const std::size_t from = (i & kInvalidBit) != 0 ? kSizeSequenceBytes : 0;
    const std::size_t end = (i & kBorderBit) != 0 ? kSwitchBytes : from;
    for (std::size_t at = from; at < end; ++at) {
      all[i].bytes[all[i].length++] = set_switch.bytes[at];
    }
    all[i].skip = (i & kPrefixBit) != 0 ? 1 : 0;
  }
  return all;
}();

inline std::size_t bit_at(ByteMask mask, std::size_t at) {
  return mask >> at & 1;
}

inline std::uint64_t word_of(const SetSwitch& set_switch) {
  std::uint64_t word = 0;
  static_assert(sizeof(word) == kSwitchBytes);
  std::memcpy(&word, set_switch.bytes.data(), sizeof(word));
  return word;
}

/// Copies what stands between a place and the next one, and some more.
inline void copy_between(std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
  constexpr std::size_t kMostly = 32;
  std::memcpy(to, from, kMostly);
  if (count > kMostly) [[unlikely]] {
    std::memcpy(to + kMostly, from + kMostly, kBlockBytes - kMostly);
  }
}

/// Puts out a block in which nothing but whole switches is put in. They alternate.
inline std::uint8_t* put_switches(const std::uint8_t* block, ByteMask borders, ByteMask set,
                                  std::uint8_t* to) {
  std::uint8_t* const end = to + kSwitchBytes * count_bits(borders);
  std::size_t at = first_bit(borders);
  const bool to_double = bit_at(set, at) != 0;
  const std::array<std::uint64_t, 2> switches{word_of(to_double ? kToDoubleByte : kToSingleByte),
                                              word_of(to_double ? kToSingleByte : kToDoubleByte)};
  // Four at a time, the last of them perhaps behind the end: how many groups there are can be
  // foretold more often than how many switches.
  while (borders != 0) {
    for (int i = 0; i < 4; ++i) {
      borders &= borders - 1;
      const std::size_t next = first_bit(borders);
      std::memcpy(to + at, &switches[static_cast<std::size_t>(i % 2)], kSwitchBytes);
      to += kSwitchBytes;
      copy_between(to + at, block + at, next - at);
      at = next;
    }
  }
  return end;
}

/// Puts out a block with insertions of all kinds.
inline std::uint8_t* put_insertions(const std::uint8_t* block, ByteMask places,
                                    const BlockPlan& plan, const LineFeeds& line_feeds,
                                    std::uint8_t* to) {
  std::size_t at = first_bit(places);
  while (places != 0) {
    const std::size_t kind =
        bit_at(plan.set, at) * kToDoubleBit | bit_at(plan.border, at) * kBorderBit |
        bit_at(plan.text.invalid, at) * kInvalidBit | bit_at(plan.text.prefix, at) * kPrefixBit;
    const Insertion& put =
        bit_at(plan.line_feed, at) != 0 ? line_feeds.insertion() : kInsertions[kind];
    places &= places - 1;
    const std::size_t next = first_bit(places);
    std::memcpy(to + at, put.bytes.data(), put.bytes.size());
    to += put.length;
    copy_between(to + at, block + at + put.skip, next - at);
    to -= put.skip;
    at = next;
  }
  return to;
}

}  // namespace detail

/// Puts out the bytes of a block.
/// @param block  kBlockBytes bytes, and as many readable behind them.
/// @param to     room for the output and kPutSlack more.
/// @return the end of the output.
inline std::uint8_t* put_block(const std::uint8_t* block, const BlockPlan& plan,
                               const LineFeeds& line_feeds, std::uint8_t* to) {
  std::memcpy(to, block, kBlockBytes);
  const ByteMask places = plan.insertions();
  if (places == 0) {
    return to + plan.length();
  }
  const bool others =
      ((plan.line_feed | plan.text.prefix | (plan.border & plan.text.invalid)) & places) != 0;
  return (others ? detail::put_insertions(block, places, plan, line_feeds, to)
                 : detail::put_switches(block, places, plan.set, to)) +
         plan.length();
}

}  // namespace rlx
