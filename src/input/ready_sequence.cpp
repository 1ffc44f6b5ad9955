#include "input/ready_sequence.h"

#include <array>
#include <cstddef>

#include "input/command_tables.h"
#include "input/wide_scan.h"

namespace rlx {

namespace {

constexpr ReadySequence kNone{};
constexpr std::size_t kIntroducers = 2;
/// ESC or FS, and the byte that says what kind of sequence it is.
constexpr std::size_t kFrontBytes = 2;

/// What gives a sequence its code, once its last byte is found.
enum class CodeFrom : std::uint8_t {
  nothing,    ///< not for this road
  complete,   ///< the two bytes at the front, which are all
  front,      ///< the two bytes at the front
  csi_final,  ///< the last byte
  q_final,    ///< the separator and the last byte
};

/// How a sequence goes on behind its two front bytes: up to the first byte in `low` to `low` +
/// `range`, which may have to be the third byte.
struct Shape {
  CodeFrom code_from = CodeFrom::nothing;
  std::uint8_t low = 0;
  std::uint8_t range = 0;
  std::uint8_t most = kMaxReadySequence;  ///< bytes of the longest such sequence
  std::uint32_t code = CMD_IGNORE;
};

constexpr Shape esc_shape(const TableRow& row) {
  constexpr std::uint8_t kFixedLength = 3;
  switch (row.form) {
    case kEscDollar:
      return {CodeFrom::front, '@', 0, kFixedLength, row.code};
    case kEscParen:
      return {CodeFrom::front, 'H', 0, kFixedLength, row.code};
    case kEscQ:
      return {CodeFrom::q_final, 0x40, kDel - 0x40};
    case kEscCsi:
      return {CodeFrom::csi_final, 0x40, 0x7e - 0x40};
    default:
      return {};
  }
}

constexpr Shape fs_shape(const TableRow& row) {
  if (row.form == kFsNothingMore) {
    return {CodeFrom::complete, 0, 0, 0, row.code};
  }
  if (row.form != kFsParameters) {
    return {};
  }
  return {CodeFrom::front, kFirstFsTerminator, kLastFsTerminator - kFirstFsTerminator,
          kMaxReadySequence, row.code};
}

/// The shapes by introducer (ESC, FS) and second byte.
constexpr auto kShapes = [] {
  std::array<std::array<Shape, 128>, kIntroducers> shapes{};
  for (std::size_t byte = 0; byte < 128; ++byte) {
    shapes[0][byte] = esc_shape(row_of<kEscTable>(static_cast<std::uint8_t>(byte)));
    shapes[1][byte] = fs_shape(row_of<kFsTable>(static_cast<std::uint8_t>(byte)));
  }
  return shapes;
}();

/// The code of an ESC "Q" sequence that has no data; CMD_IGNORE for any other.
std::uint32_t code_without_data(std::uint8_t separator, std::uint8_t final) {
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

std::uint32_t csi_code(std::uint8_t final) {
  const TableRow& row = row_of<kCsiTable>(final);
  return row.form == kCsiPlain ? row.code : std::uint32_t{CMD_IGNORE};
}

std::uint32_t code_of(const Shape& shape, const std::uint8_t* last) {
  switch (shape.code_from) {
    case CodeFrom::q_final:
      return code_without_data(last[-1], *last);
    case CodeFrom::csi_final:
      return csi_code(*last);
    default:
      return shape.code;
  }
}

/// Position, counted from the introducer, of the byte that ends a sequence; kMaxReadySequence or
/// more if it does not stand in the 64 bytes there.
std::size_t find_last(const std::uint8_t* bytes, const Shape& shape) {
  std::size_t at = kFrontBytes;
  std::size_t found = kScanBytes;
  while (found == kScanBytes && at + kScanBytes <= kReadyBytes) {
    found = first_in_range(bytes + at, shape.low, shape.range);
    at += found;
  }
  return at;
}

}  // namespace

ReadySequence ready_sequence(const std::uint8_t* bytes) {
  if (bytes[1] >= 128) {
    return kNone;
  }
  const Shape& shape = kShapes[*bytes == kEsc ? 0 : 1][bytes[1]];
  if (shape.code_from == CodeFrom::nothing) {
    return kNone;
  }
  if (shape.code_from == CodeFrom::complete) {
    return {shape.code, kFrontBytes};
  }
  const std::size_t last = find_last(bytes, shape);
  if (last >= shape.most) {
    return kNone;
  }
  const std::uint32_t code = code_of(shape, bytes + last);
  return code != CMD_IGNORE ? ReadySequence{code, static_cast<std::int32_t>(last) + 1} : kNone;
}

}  // namespace rlx
