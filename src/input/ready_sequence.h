#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "input/command_tables.h"
#include "input/wide_scan.h"

namespace rlx {

/// A whole sequence that stands ready in memory.
struct ReadySequence {
  std::uint32_t code = 0;
  std::int32_t length = 0;  ///< 0 when there is none
};

/// Bytes that must stand ready for ready_sequence to look at.
inline constexpr std::size_t kReadyBytes = 66;
/// Longest sequence that ready_sequence finds.
inline constexpr std::uint8_t kMaxReadySequence = 64;

/// What ready_sequence knows of the shapes of sequences.
namespace sequences {

inline constexpr std::size_t kIntroducers = 2;
/// ESC or FS, and the byte that says what kind of sequence it is.
inline constexpr std::size_t kFrontBytes = 2;

/// What kind of sequence the two front bytes begin. `csi` and `q` end with a byte that gives,
/// together with the one before it, the code.
enum class Kind : std::uint8_t {
  none,      ///< not for this road
  complete,  ///< the front bytes are all
  fixed,     ///< the front bytes alone give the code
  csi,
  q,
};
inline constexpr std::size_t kKinds = 5;

/// How a sequence goes on behind its two front bytes: up to the first byte of a range.
struct Shape {
  Kind kind = Kind::none;
  std::uint8_t most = kMaxReadySequence;  ///< bytes of the longest such sequence
  std::uint16_t code = 0;                 ///< what the front bytes say of the code
  std::uint8_t length_mask = 0xff;        ///< 0 when the front bytes are all
  ByteRange final;
};

constexpr Shape shape_with_code(Kind kind, std::uint8_t most, const TableRow& row,
                                ByteRange final) {
  const std::uint8_t length_mask = kind == Kind::complete ? 0 : 0xff;
  return {kind, most, static_cast<std::uint16_t>(row.code), length_mask, final};
}

constexpr Shape esc_shape(const TableRow& row) {
  constexpr std::uint8_t kFixedLength = 3;
  switch (row.form) {
    case kEscDollar:
      return shape_with_code(Kind::fixed, kFixedLength, row, {'@', '@'});
    case kEscParen:
      return shape_with_code(Kind::fixed, kFixedLength, row, {'H', 'H'});
    case kEscQ:
      return {Kind::q, kMaxReadySequence, 0, 0xff, {0x40, kDel}};
    case kEscCsi:
      return {Kind::csi, kMaxReadySequence, 0, 0xff, {0x40, 0x7e}};
    default:
      return {};
  }
}

constexpr Shape fs_shape(const TableRow& row) {
  switch (row.form) {
    case kFsNothingMore:
      return shape_with_code(Kind::complete, kFrontBytes, row, {0x00, 0x7f});
    case kFsParameters:
      return shape_with_code(Kind::fixed, kMaxReadySequence, row,
                             {kFirstFsTerminator, kLastFsTerminator});
    default:
      return {};
  }
}

/// The shapes by introducer (ESC, FS) and second byte.
inline constexpr auto kShapes = [] {
  std::array<std::array<Shape, 128>, kIntroducers> shapes{};
  for (std::size_t byte = 0; byte < 128; ++byte) {
    shapes[0][byte] = esc_shape(row_of<kEscTable>(static_cast<std::uint8_t>(byte)));
    shapes[1][byte] = fs_shape(row_of<kFsTable>(static_cast<std::uint8_t>(byte)));
  }
  return shapes;
}();

/// The bytes before a final byte that codes depend on; 0 stands for any other.
inline constexpr std::array<std::uint8_t, 4> kSeparators{0, ' ', '!', '/'};

inline constexpr auto kSeparatorIndex = [] {
  std::array<std::uint8_t, 256> index{};
  for (std::size_t i = 1; i < kSeparators.size(); ++i) {
    index[kSeparators[i]] = static_cast<std::uint8_t>(i);
  }
  return index;
}();

/// The code of an ESC "Q" sequence that has no data; CMD_IGNORE for any other.
constexpr std::uint32_t q_code(std::uint8_t separator, std::uint8_t final) {
  const QRow& row = row_of<kQTable>(final);
  switch (row.form) {
    case kQSpaceOrExclamation:
    case kQExclamation:
    case kQExclamationOrSlash:
    case kQSlash:
      return code_for_separator(row, separator);
    default:
      return CMD_IGNORE;
  }
}

constexpr std::uint32_t csi_code(std::uint8_t before, std::uint8_t final) {
  const TableRow& row = row_of<kCsiTable>(final);
  return row.form != kCsiAfterSpace || before == ' ' ? row.code : std::uint32_t{CMD_IGNORE};
}

/// What the end of a sequence says of its code, by kind, separator and final byte: the whole code,
/// or nothing (0) when the front says it. Adding both needs no branch, which no processor could
/// predict in a job with sequences of many kinds.
inline constexpr auto kEndCodes = [] {
  std::array<std::array<std::array<std::uint16_t, 128>, kSeparators.size()>, kKinds> codes{};
  for (std::size_t i = 0; i < kSeparators.size(); ++i) {
    for (std::uint8_t final = 0; final < 128; ++final) {
      codes[static_cast<std::size_t>(Kind::csi)][i][final] =
          static_cast<std::uint16_t>(csi_code(kSeparators[i], final));
      codes[static_cast<std::size_t>(Kind::q)][i][final] =
          static_cast<std::uint16_t>(q_code(kSeparators[i], final));
    }
  }
  return codes;
}();

inline std::uint32_t code_of(const Shape& shape, const std::uint8_t* last) {
  const auto& by_separator = kEndCodes[static_cast<std::size_t>(shape.kind)];
  return std::uint32_t{shape.code} + by_separator[kSeparatorIndex[last[-1]]][*last];
}

/// Position, counted from the introducer, of the byte that ends a sequence; kReadyBytes if it does
/// not stand there.
inline std::size_t find_last(const std::uint8_t* bytes, const Shape& shape) {
  for (std::size_t at = kFrontBytes; at < kReadyBytes; at += kFewBytes) {
    const std::size_t found = first_few_in_range(bytes + at, shape.final);
    if (found < kFewBytes) {
      return at + found;
    }
  }
  return kReadyBytes;
}

}  // namespace sequences

/// Recognises, in place, a sequence after ESC or FS that zqtoken would read with the same code: a
/// known one of the common kinds, short, complete in memory and without data behind it. For
/// anything else - unknown, malformed, cut, with data - there is none, and zqtoken has to say.
/// @param bytes  begins with ESC or FS; kReadyBytes are readable.
inline ReadySequence ready_sequence(const std::uint8_t* bytes) {
  if (bytes[1] >= 128) {
    return ReadySequence{};
  }
  const sequences::Shape& shape = sequences::kShapes[*bytes == kEsc ? 0 : 1][bytes[1]];
  if (shape.kind == sequences::Kind::none) {
    return ReadySequence{};
  }
  // Of a complete one the last byte is the second, whatever is found behind it; again no branch.
  const std::size_t mask = shape.length_mask;
  const std::size_t last =
      (sequences::find_last(bytes, shape) & mask) | ((sequences::kFrontBytes - 1) & ~mask);
  if (last >= shape.most) {
    return ReadySequence{};
  }
  const std::uint32_t code = sequences::code_of(shape, bytes + last);
  return code != CMD_IGNORE ? ReadySequence{code, static_cast<std::int32_t>(last) + 1}
                            : ReadySequence{};
}

}  // namespace rlx
