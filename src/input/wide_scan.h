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

/// Position of the first of the 16 bytes at `bytes` that lies in `low` to `low` + `range`; 16 if
/// none does.
inline std::size_t first_in_range(const std::uint8_t* bytes, std::uint8_t low, std::uint8_t range) {
  const detail::ScanVector text = detail::load_scan(bytes);
  const detail::ScanMask in_range = text - low <= range;
  return detail::first_byte(detail::words_of(in_range));
}

/// Of the 15 bytes at `bytes` (16 are readable), how many at the front are whole characters of
/// three bytes none of which ends in FF.
inline std::size_t three_byte_characters_at_front(const std::uint8_t* bytes) {
  using Byte = std::uint8_t;
  constexpr std::size_t kCharacter = 3;
  const detail::ScanVector text = detail::load_scan(bytes);
  const detail::ScanMask no_lead = (text & Byte{0xf0}) != Byte{0xe0};
  const detail::ScanMask form_feed = text == kFormFeed;
  const detail::ScanMask bad = (no_lead & detail::every(kCharacter, 0)) |
                               (form_feed & detail::every(kCharacter, kCharacter - 1));
  const std::size_t first_bad = detail::first_byte(detail::words_of(bad));
  return first_bad < kScanBytes ? first_bad / kCharacter * kCharacter : kScanBytes - 1;
}

}  // namespace rlx
