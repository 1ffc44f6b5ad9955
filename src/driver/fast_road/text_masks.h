#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "input/byte_block.h"
#include "input/classifier.h"
#include "job/control_bytes.h"

namespace rlx {

/// What stands at the front of a block of input: text, described by masks. What they do not
/// describe - a FF, a character that is not whole - ends it.
struct TextMasks {
  /// Bytes that are described; from there on the masks mean nothing.
  std::size_t length = 0;
  /// Characters of the double-byte set, all their bytes.
  ByteMask double_byte = 0;
  /// Control bytes and DEL: they leave the character set alone.
  ByteMask neutral = 0;
  /// Invalid characters: they belong to the single-byte set.
  ByteMask invalid = 0;
  /// Bytes that do not begin a piece: those of a character but its first.
  ByteMask inside = 0;
  /// 0x8e prefixes, which are not written.
  ByteMask prefix = 0;
  /// ESC and FS. What they begin is described as if it were text.
  ByteMask introducer = 0;
};

namespace detail {

/// The lead bytes of a block, by the length of their characters.
struct Leads {
  ByteMask of_two = 0;
  ByteMask of_three = 0;
  ByteMask of_four = 0;

  ByteMask all() const { return of_two | of_three | of_four; }
  /// Where their continuation bytes have to stand.
  ByteMask continuations() const { return all() << 1 | (of_three | of_four) << 2 | of_four << 3; }
  /// Those whose characters the end of the block cuts.
  ByteMask cut() const {
    return (of_two & ~bits_below(kBlockBytes - 1)) | (of_three & ~bits_below(kBlockBytes - 2)) |
           (of_four & ~bits_below(kBlockBytes - 3));
  }
};

/// Describes 0x8e prefixes and the characters behind them, which are of one byte.
/// @param stop  where multi-byte characters stand that are not described.
/// @return the prefixes that are not followed by such a character.
inline ByteMask describe_shifted(const ByteBlock& block, ByteMask shift, ByteMask stop,
                                 TextMasks& masks) {
  const ByteMask shifted = shift << 1;
  masks.prefix = shift;
  masks.invalid &= ~(shift | shifted);
  masks.neutral &= ~shifted;
  masks.inside |= shifted;
  const ByteMask cut = ~bits_below(kBlockBytes - 1);
  const ByteMask others = masks.double_byte | stop | shift | block.equal(kFormFeed);
  return shift & (cut | others >> 1);
}

/// Describes the high bytes of a block that has some.
[[gnu::always_inline]] inline void describe_high_bytes(const ByteBlock& block, ByteMask high,
                                                       TextMasks& masks) {
  const ByteMask continuation = block.where([](auto bytes) { return bytes.continuation(); });
  Leads leads;
  leads.of_three = block.between(0xe0, 0xef);
  ByteMask stop = 0;
  if ((high & ~continuation & ~leads.of_three) != 0) {
    leads.of_two = block.between(0xc0, 0xdf);
    leads.of_four = block.between(0xf0, 0xf7);
    stop = block.between(0xf8, 0xfd);
  }
  const ByteMask expected = leads.continuations();
  const ByteMask missing = expected & ~continuation;
  if (missing != 0) {
    // The lead byte of the first character that lacks one.
    stop |= std::bit_floor(leads.all() & bits_below(first_bit(missing)));
  }
  masks.invalid = high & ~leads.all() & ~expected;
  masks.double_byte = leads.all() | expected;
  masks.inside = expected;
  if (masks.invalid != 0) {
    const ByteMask shift = masks.invalid & block.equal(kSingleShift2);
    if (shift != 0) {
      stop |= describe_shifted(block, shift, stop, masks);
    }
  }
  masks.length = first_bit(stop | leads.cut());
}

}  // namespace detail

/// Describes text as it should be: whole characters of two to four bytes, anything of one byte.
/// Stops at a character whose continuation bytes are none, that the block's end cuts, or that has
/// five or six bytes, and at 0x8e in front of anything but a character of one byte.
[[gnu::always_inline]] inline void masks_of_text(const ByteBlock& block, TextMasks& masks) {
  masks = {};
  masks.length = kBlockBytes;
  masks.neutral = block.where([](auto bytes) { return bytes.up_to(0x1f) | bytes.equal(kDel); });
  const ByteMask high = block.high();
  if (high != 0) {
    detail::describe_high_bytes(block, high, masks);
  }
  if (masks.neutral != 0) {
    const ByteMask special =
        block.where([](auto bytes) { return bytes.between(kEsc, kFs) | bytes.equal(kFormFeed); });
    if (special != 0) {
      const ByteMask introducer = block.between(kEsc, kFs);
      masks.introducer = introducer & ~masks.inside;
      masks.length = std::min(masks.length, first_bit(special & ~introducer));
    }
  }
}

/// Describes any text, one character after the other: the bytes behind a lead byte belong to it
/// whatever they are, and the character behind 0x8e belongs to that. Stops at ESC and FS, at a
/// character that needs more than the `ready` bytes, 64 at most, or that ends in FF, and when
/// `enough` bytes are described.
void masks_of_any_text(const std::uint8_t* bytes, std::size_t ready, std::size_t enough,
                       TextMasks& masks);

}  // namespace rlx
