#include "driver/fast_road/text_masks.h"

#include "driver/fast_road/character_masks.h"
#include "job/control_bytes.h"

namespace rlx {

void masks_of_any_text(const std::uint8_t* bytes, std::size_t ready, std::size_t enough,
                       TextMasks& masks) {
  masks = {};
  ByteMask firsts = 0;
  std::size_t at = 0;
  while (at < enough && at < ready) {
    const std::uint8_t first = bytes[at];
    CharacterMasks character = kCharacterMasks[first];
    std::size_t length = character.length;
    if (first == kSingleShift2) [[unlikely]] {
      length += at + 1 < ready ? 1U + static_cast<std::size_t>(continuation_bytes(bytes[at + 1]))
                               : kBlockBytes;
    }
    // A length of 0 is more than there is, too.
    if (length - 1 >= ready - at || bytes[at + length - 1] == kFormFeed) {
      break;
    }
    firsts |= ByteMask{1} << at;
    masks.double_byte |= ByteMask{character.double_byte} << at;
    masks.neutral |= ByteMask{character.neutral} << at;
    masks.invalid |= ByteMask{character.invalid} << at;
    masks.prefix |= ByteMask{first == kSingleShift2} << at;
    at += length;
  }
  masks.length = at;
  masks.inside = bits_below(at) & ~firsts;
}

}  // namespace rlx
