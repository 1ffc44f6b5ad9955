#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace rlx {

// Looks at 64 bytes of the input at once, for the fast road. What is asked of each byte is written
// once, as a rule on a vector of bytes; the answers are the bits of a mask. There are two kinds of
// vector, one of the processor's and one of a single byte, for every processor: same rules, same
// masks.

/// Bytes that are looked at together.
inline constexpr std::size_t kBlockBytes = 64;

/// A bit for each byte of a block, the lowest for the first.
using ByteMask = std::uint64_t;

/// The bits below a position, which may be 64.
constexpr ByteMask bits_below(std::size_t position) {
  return position < kBlockBytes ? (ByteMask{1} << position) - 1 : ~ByteMask{0};
}

/// The position of the first bit; 64 when there is none.
constexpr std::size_t first_bit(ByteMask mask) {
  return static_cast<unsigned>(std::countr_zero(mask));
}

/// The position of the last bit. There is one.
constexpr std::size_t last_bit(ByteMask mask) {
  return kBlockBytes - 1 - static_cast<std::size_t>(std::countl_zero(mask));
}

/// The number of bits. Not std::popcount: without an instruction for it, which not every processor
/// has, that is a call.
constexpr std::size_t count_bits(ByteMask mask) {
  mask -= mask >> 1 & 0x5555555555555555U;
  mask = (mask & 0x3333333333333333U) + (mask >> 2 & 0x3333333333333333U);
  mask = (mask + (mask >> 4)) & 0x0f0f0f0f0f0f0f0fU;
  return static_cast<std::size_t>(mask * 0x0101010101010101U >> 56);
}

/// One byte, as a vector.
struct ScalarBytes {
  static constexpr std::size_t kBytes = 1;

  struct Answer {
    bool holds;
    friend Answer operator|(Answer left, Answer right) { return {left.holds || right.holds}; }
  };

  std::uint8_t byte;

  static ScalarBytes load(const std::uint8_t* bytes) { return {*bytes}; }
  Answer equal(std::uint8_t wanted) const { return {byte == wanted}; }
  Answer up_to(std::uint8_t last) const { return {byte <= last}; }
  Answer between(std::uint8_t first, std::uint8_t last) const {
    return {byte >= first && byte <= last};
  }
  Answer high() const { return {byte >= 0x80}; }
  Answer continuation() const { return {(byte & 0xc0) == 0x80}; }
  static ByteMask bits_of(Answer answer) { return answer.holds ? 1 : 0; }
};

#if defined(__SSE2__)

/// 16 bytes, compared by the instructions that every x86-64 processor has.
struct VectorBytes {
  static constexpr std::size_t kBytes = 16;

  /// The highest bit of each byte.
  struct Answer {
    __m128i bytes;
    friend Answer operator|(Answer left, Answer right) {
      return {_mm_or_si128(left.bytes, right.bytes)};
    }
  };

  __m128i bytes;

  static VectorBytes load(const std::uint8_t* from) {
    __m128i loaded;
    std::memcpy(&loaded, from, sizeof(loaded));
    return {loaded};
  }
  static __m128i each(std::uint8_t byte) { return _mm_set1_epi8(static_cast<char>(byte)); }

  Answer equal(std::uint8_t wanted) const { return {_mm_cmpeq_epi8(bytes, each(wanted))}; }
  Answer up_to(std::uint8_t last) const {
    return {_mm_cmpeq_epi8(_mm_min_epu8(bytes, each(last)), bytes)};
  }
  Answer between(std::uint8_t first, std::uint8_t last) const {
    const VectorBytes above_first{_mm_sub_epi8(bytes, each(first))};
    return above_first.up_to(static_cast<std::uint8_t>(last - first));
  }
  /// Continuation bytes, 0x80 to 0xbf: the lowest numbers of those with a sign.
  Answer continuation() const { return {_mm_cmplt_epi8(bytes, each(0xc0))}; }
  Answer high() const { return {bytes}; }
  static ByteMask bits_of(Answer answer) {
    return static_cast<ByteMask>(static_cast<unsigned>(_mm_movemask_epi8(answer.bytes)));
  }
};

#else

using VectorBytes = ScalarBytes;

#endif

/// 64 bytes that a rule can be asked about.
template <typename Vector>
class BasicByteBlock {
 public:
  explicit BasicByteBlock(const std::uint8_t* bytes) {
    for (std::size_t i = 0; i < vectors_.size(); ++i) {
      vectors_[i] = Vector::load(bytes + i * Vector::kBytes);
    }
  }

  /// The bytes for which a rule holds.
  /// @param rule  takes a vector, gives an answer of it.
  template <typename Rule>
  ByteMask where(Rule rule) const {
    ByteMask mask = 0;
    for (std::size_t i = 0; i < vectors_.size(); ++i) {
      mask |= Vector::bits_of(rule(vectors_[i])) << i * Vector::kBytes;
    }
    return mask;
  }

  /// Bytes from 0x80 on.
  ByteMask high() const {
    return where([](Vector vector) { return vector.high(); });
  }
  ByteMask equal(std::uint8_t byte) const {
    return where([byte](Vector vector) { return vector.equal(byte); });
  }
  ByteMask between(std::uint8_t first, std::uint8_t last) const {
    return where([first, last](Vector vector) { return vector.between(first, last); });
  }

 private:
  std::array<Vector, kBlockBytes / Vector::kBytes> vectors_;
};

using ByteBlock = BasicByteBlock<VectorBytes>;

}  // namespace rlx
