#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "job/control_bytes.h"

namespace rlx {

// Looks at 16 bytes of the input at once, for the fast road. Portable: the compiler's vector types
// do the comparisons, two 64-bit words hold their results.

inline constexpr std::size_t kScanBytes = 16;

namespace detail {

using ScanVector = std::uint8_t __attribute__((vector_size(kScanBytes)));
using ScanMask = std::int8_t __attribute__((vector_size(kScanBytes)));
using ScanWords = std::array<std::uint64_t, kScanBytes / 8>;

inline ScanVector load_scan(const std::uint8_t* bytes) {
  ScanVector vector;
  std::memcpy(&vector, bytes, kScanBytes);
  return vector;
}

inline ScanWords words_of(ScanMask mask) {
  ScanWords words;
  std::memcpy(words.data(), &mask, kScanBytes);
  return words;
}

/// Position, in memory order, of the first byte of a word that is not 0; 8 when all are.
constexpr std::size_t first_byte(std::uint64_t word) {
  const int bits =
      std::endian::native == std::endian::little ? std::countr_zero(word) : std::countl_zero(word);
  return static_cast<std::size_t>(bits) / 8;
}

/// The same for both words; 16 when all bytes are 0.
constexpr std::size_t first_byte(const ScanWords& words) {
  return words[0] != 0 ? first_byte(words[0]) : 8 + first_byte(words[1]);
}

/// A mask with 0xff at each `step`-th position from `first` on.
constexpr ScanMask every(std::size_t step, std::size_t first) {
  ScanMask mask{};
  for (std::size_t i = first; i + 1 < kScanBytes; i += step) {
    mask[i] = -1;
  }
  return mask;
}

}  // namespace detail

/// Of the 16 bytes at `bytes`, how many at the front are pieces of one byte while the single-byte
/// set is selected: printable, invalid and most control bytes. FF, ESC, FS, the 0x8e prefix and
/// lead bytes are not; `line_end` is LF when a LF is more than a byte, otherwise any of the others.
inline std::size_t single_bytes_at_front(const std::uint8_t* bytes, std::uint8_t line_end) {
  using Byte = std::uint8_t;
  const detail::ScanVector text = detail::load_scan(bytes);
  const detail::ScanMask other = (text == kFormFeed) | (text == line_end) |
                                 (text - kEsc < Byte{2}) | (text == Byte{0x8e}) |
                                 (text - Byte{0xc0} < Byte{0x3e});
  return detail::first_byte(detail::words_of(other));
}

/// Bytes that the functions of few bytes look at. They find what they look for by a shorter chain
/// of steps than the ones of 16, which counts where the next thing to look for stands close by.
inline constexpr std::size_t kFewBytes = 8;

namespace detail {

/// A byte in each place of a word.
constexpr std::uint64_t in_each(std::uint8_t byte) {
  return 0x0101010101010101U * byte;
}

inline constexpr std::uint64_t kHighBits = in_each(0x80);

inline std::uint64_t load_word(const std::uint8_t* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof(word));
  return word;
}

}  // namespace detail

/// Of the 8 bytes at `bytes`, how many at the front are 0x20 to 0x7f.
inline std::size_t few_single_bytes_at_front(const std::uint8_t* bytes) {
  const std::uint64_t word = detail::load_word(bytes);
  const std::uint64_t at_least_0x20 = (word | detail::kHighBits) - detail::in_each(0x20);
  return detail::first_byte((~at_least_0x20 | word) & detail::kHighBits);
}

/// A range of 7-bit bytes, made ready for first_few_in_range.
struct ByteRange {
  std::uint64_t low = 0;
  std::uint64_t above_high = 0;

  constexpr ByteRange() = default;
  /// @param last  at most 0x7f.
  constexpr ByteRange(std::uint8_t first, std::uint8_t last)
      : low(detail::in_each(first)),
        above_high(detail::in_each(static_cast<std::uint8_t>(last + 1))) {}
};

/// Position of the first of the 8 bytes at `bytes` that lies in a range; 8 if none does.
inline std::size_t first_few_in_range(const std::uint8_t* bytes, const ByteRange& range) {
  const std::uint64_t word = detail::load_word(bytes);
  const std::uint64_t raised = word | detail::kHighBits;
  const std::uint64_t inside = (raised - range.low) & ~(raised - range.above_high) & ~word;
  return detail::first_byte(inside & detail::kHighBits);
}

/// Of the 16 bytes at `bytes`, how many at the front are 0x80 or above.
inline std::size_t high_bytes_at_front(const std::uint8_t* bytes) {
  const std::uint64_t first = ~detail::load_word(bytes) & detail::kHighBits;
  const std::uint64_t second = ~detail::load_word(bytes + 8) & detail::kHighBits;
  const std::size_t in_first = detail::first_byte(first);
  const std::size_t in_second = 8 + detail::first_byte(second);
  return first != 0 ? in_first : in_second;
}

namespace detail {

/// For 16 bytes, marks where whole characters of three bytes, none of which ends in FF, are broken.
inline ScanWords mark_broken_characters(const std::uint8_t* bytes) {
  using Byte = std::uint8_t;
  constexpr std::size_t kCharacter = 3;
  const ScanVector text = load_scan(bytes);
  const ScanMask no_lead = (text & Byte{0xf0}) != Byte{0xe0};
  const ScanMask form_feed = text == kFormFeed;
  return words_of((no_lead & every(kCharacter, 0)) |
                  (form_feed & every(kCharacter, kCharacter - 1)));
}

}  // namespace detail

/// True when the first `count` of the 16 bytes at `bytes`, 15 at most, are whole characters of
/// three bytes none of which ends in FF.
inline bool are_three_byte_characters(const std::uint8_t* bytes, std::size_t count) {
  constexpr std::uint32_t kWholeCounts = 0b1001001001001001;
  return (kWholeCounts >> count & 1) != 0 &&
         detail::first_byte(detail::mark_broken_characters(bytes)) >= count;
}

/// Of the 15 bytes at `bytes` (16 are readable), how many at the front are whole characters of
/// three bytes none of which ends in FF.
inline std::size_t three_byte_characters_at_front(const std::uint8_t* bytes) {
  constexpr std::size_t kCharacter = 3;
  const std::size_t first_bad = detail::first_byte(detail::mark_broken_characters(bytes));
  return first_bad < kScanBytes ? first_bad / kCharacter * kCharacter : kScanBytes - 1;
}

}  // namespace rlx
