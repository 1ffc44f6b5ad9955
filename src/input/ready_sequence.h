#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "input/byte_block.h"
#include "input/command_tables.h"

namespace rlx {

/// A whole sequence that stands in a block.
struct ReadySequence {
  std::uint32_t code;  ///< CMD_IGNORE when there is none
  std::size_t last;    ///< its last byte in the block
};

/// What ready_sequence knows of the shapes of sequences.
namespace sequences {

/// ESC or FS, and the byte that says what kind of sequence it is.
inline constexpr std::size_t kFrontBytes = 2;

/// What kind of sequence the two front bytes begin: how its end is found, and what the end says of
/// its code.
enum class Kind : std::uint8_t {
  none,        ///< not for this road
  complete,    ///< the front bytes are all
  double_set,  ///< "@" follows
  single_set,  ///< "H" follows
  fs,
  csi,
  q,
};
inline constexpr std::size_t kKinds = 7;

/// Final bytes, of the ranges that there are.
enum class Finals : std::uint8_t { any, q, csi, fs };
inline constexpr std::size_t kRanges = 4;

/// How a sequence goes on behind its two front bytes.
struct alignas(8) Shape {
  Kind kind = Kind::none;
  Finals finals = Finals::any;  ///< the first of these is the last byte ...
  std::uint8_t from = 1;        ///< ... from this byte on
  std::uint16_t code = 0;       ///< what the front bytes say of the code
};

constexpr Shape esc_shape(const TableRow& row) {
  switch (row.form) {
    case kEscDollar:
      return {Kind::double_set, Finals::any, kFrontBytes};
    case kEscParen:
      return {Kind::single_set, Finals::any, kFrontBytes};
    case kEscQ:
      return {Kind::q, Finals::q, kFrontBytes};
    case kEscNothingMore:
      return {Kind::complete, Finals::any, kFrontBytes - 1, static_cast<std::uint16_t>(row.code)};
    case kEscCsi:
      return {Kind::csi, Finals::csi, kFrontBytes};
    default:
      return {};
  }
}

constexpr Shape fs_shape(const TableRow& row) {
  const auto code = static_cast<std::uint16_t>(row.code);
  switch (row.form) {
    case kFsNothingMore:
      return {Kind::complete, Finals::any, kFrontBytes - 1, code};
    case kFsParameters:
      return {Kind::fs, Finals::fs, kFrontBytes, code};
    default:
      return {};
  }
}

/// The shapes by introducer (ESC, FS) and second byte.
inline constexpr auto kShapes = [] {
  static_assert(kFs == kEsc + 1);
  std::array<std::array<Shape, 256>, 2> shapes{};
  for (std::size_t byte = 0; byte != 128; ++byte) {
    shapes[0][byte] = esc_shape(row_of<kEscTable>(static_cast<std::uint8_t>(byte)));
    shapes[1][byte] = fs_shape(row_of<kFsTable>(static_cast<std::uint8_t>(byte)));
  }
  return shapes;
}();

/// The bytes before a final byte that codes depend on; 0 stands for any other.
inline constexpr std::array<std::uint8_t, 4> kSeparators{0, ' ', '!', '/'};

inline constexpr auto kSeparatorIndex = [] {
  std::array<std::uint8_t, 256> index{};
  for (std::size_t i = 1; i != kSeparators.size(); ++i) {
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
  std::array<std::array<std::array<std::uint16_t, 256>, kSeparators.size()>, kKinds> codes{};
  const auto set = [&codes](Kind kind, std::size_t i, std::size_t final, std::uint32_t code) {
    codes[static_cast<std::size_t>(kind)][i][final] = static_cast<std::uint16_t>(code);
  };
  for (std::size_t i = 0; i != kSeparators.size(); ++i) {
    for (std::size_t final = 0; final != 256; ++final) {
      const auto byte = static_cast<std::uint8_t>(final);
      set(Kind::none, i, final, CMD_IGNORE);
      set(Kind::double_set, i, final, byte == '@' ? CMD_ESC_DOLLAR_AT : CMD_IGNORE);
      set(Kind::single_set, i, final, byte == 'H' ? CMD_ESC_PAREN_H : CMD_IGNORE);
      set(Kind::csi, i, final, csi_code(kSeparators[i], byte));
      set(Kind::q, i, final, q_code(kSeparators[i], byte));
    }
  }
  return codes;
}();

/// @param last  the last byte, with the one before it.
inline std::uint32_t code_of(const Shape& shape, const std::uint8_t* last) {
  const auto& by_separator = kEndCodes[static_cast<std::size_t>(shape.kind)];
  return std::uint32_t{shape.code} + by_separator[kSeparatorIndex[last[-1]]][*last];
}

}  // namespace sequences

/// Where sequences can end in a block: by sequences::Finals.
struct SequenceEnds {
  std::array<ByteMask, sequences::kRanges> final;

  explicit SequenceEnds(const ByteBlock& block) {
    const ByteMask q = block.between(0x40, kDel);
    final = {~ByteMask{0}, q, q & ~block.equal(kDel),
             block.between(kFirstFsTerminator, kLastFsTerminator)};
  }
};

/// Recognises, in place, a sequence after ESC or FS that zqtoken would read with the same code: a
/// known one of the common kinds, complete and without data behind it. For anything else - unknown,
/// malformed, cut, with data - there is none, and zqtoken has to say.
/// @param block  the bytes of the block, and a few more that are looked at but do not matter.
/// @param ends   where sequences can end in it.
/// @param at     where its ESC or FS stands.
/// @param limit  the sequence has to end before this byte.
inline ReadySequence ready_sequence(const std::uint8_t* block, const SequenceEnds& ends,
                                    std::size_t at, std::size_t limit) {
  const sequences::Shape& shape = sequences::kShapes[block[at] - kEsc][block[at + 1]];
  const ByteMask behind = ~ByteMask{0} << at << shape.from;
  const std::size_t last = first_bit(ends.final[static_cast<std::size_t>(shape.finals)] & behind);
  if (last >= limit) {
    return {CMD_IGNORE, last};
  }
  return {sequences::code_of(shape, block + last), last};
}

}  // namespace rlx
