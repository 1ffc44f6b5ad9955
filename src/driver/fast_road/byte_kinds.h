#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "input/classifier.h"
#include "job/control_bytes.h"

namespace rlx {

// What a byte is that stands where a command or a character begins, for the fast road.

enum class ByteClass : std::uint8_t {
  other,      ///< FF: for the record-by-record road
  sequence,   ///< ESC or FS
  printable,  ///< 0x20-0x7e
  cr,
  lf,
  control,  ///< any other control byte that is a command by itself, and DEL
  invalid,  ///< an invalid character
  lead,     ///< begins a multi-byte character
  shift,    ///< the 0x8e prefix
};

constexpr ByteClass class_of(std::uint8_t byte) {
  switch (byte) {
    case kCarriageReturn:
      return ByteClass::cr;
    case kLineFeed:
      return ByteClass::lf;
    case kFormFeed:
      return ByteClass::other;
    case kEsc:
    case kFs:
      return ByteClass::sequence;
    case kSingleShift2:
      return ByteClass::shift;
    default:
      break;
  }
  if (byte < 0x20 || byte == kDel) {
    return ByteClass::control;
  }
  if (byte < kDel) {
    return ByteClass::printable;
  }
  return continuation_bytes(byte) > 0 ? ByteClass::lead : ByteClass::invalid;
}

struct ByteKind {
  ByteClass byte_class;
  std::uint8_t length;  ///< of the character that the byte begins
};

inline constexpr auto kByteKinds = [] {
  std::array<ByteKind, 256> kinds{};
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    const auto byte = static_cast<std::uint8_t>(i);
    kinds[i] = {class_of(byte), static_cast<std::uint8_t>(1 + continuation_bytes(byte))};
  }
  return kinds;
}();

constexpr ByteKind kind_of(std::uint8_t byte) {
  return kByteKinds[byte];
}

constexpr bool is_single(ByteClass byte_class) {
  return byte_class > ByteClass::sequence && byte_class < ByteClass::lead;
}

/// By ByteClass: what puts content on the page, and what starts the page.
inline constexpr auto kBringsContent =
    std::to_array({false, false, true, false, false, false, true, true, true});
inline constexpr auto kStartsPage =
    std::to_array({false, false, true, true, true, false, false, true, true});

}  // namespace rlx
