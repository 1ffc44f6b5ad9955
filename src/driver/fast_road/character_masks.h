#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "input/classifier.h"
#include "job/control_bytes.h"

namespace rlx {

/// A character, by its first byte: a bit for each of its bytes, the lowest for the first.
struct CharacterMasks {
  std::uint8_t length = 0;       ///< 0: FF, or what begins a sequence
  std::uint8_t double_byte = 0;  ///< all bytes of a multi-byte character, otherwise none
  std::uint8_t neutral = 0;      ///< a control byte or DEL, which leaves the character set alone
  std::uint8_t invalid = 0;      ///< no character
};

constexpr CharacterMasks character_masks(std::uint8_t first) {
  const int more = continuation_bytes(first);
  const auto length = static_cast<std::uint8_t>(1 + more);
  if (first == kFormFeed || first == kEsc || first == kFs) {
    return {};
  }
  if (first < 0x20 || first == kDel) {
    return {length, 0, 1, 0};
  }
  if (more > 0) {
    return {length, static_cast<std::uint8_t>((1U << length) - 1), 0, 0};
  }
  const bool text = first < kDel || first == kSingleShift2;
  return {length, 0, 0, static_cast<std::uint8_t>(text ? 0 : 1)};
}

inline constexpr auto kCharacterMasks = [] {
  std::array<CharacterMasks, 256> masks{};
  for (std::size_t byte = 0; byte != masks.size(); ++byte) {
    masks[byte] = character_masks(static_cast<std::uint8_t>(byte));
  }
  return masks;
}();

}  // namespace rlx
