#include "input/ready_sequence.h"

#include <algorithm>

#include "input/command_tables.h"

namespace rlx {

namespace {

constexpr ReadySequence kNone{};

/// Where the sequence's first byte in `low` to `high` stands, from `from` on; `end` if nowhere.
const std::uint8_t* find_final(const std::uint8_t* from, const std::uint8_t* end, std::uint8_t low,
                               std::uint8_t high) {
  const auto range = static_cast<std::uint8_t>(high - low);
  while (from != end && static_cast<std::uint8_t>(*from - low) > range) {
    ++from;
  }
  return from;
}

ReadySequence found(std::uint32_t code, const std::uint8_t* bytes, const std::uint8_t* last) {
  return {code, static_cast<std::int32_t>(last - bytes) + 1};
}

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

ReadySequence ready_q(const std::uint8_t* bytes, const std::uint8_t* end) {
  const std::uint8_t* const last = find_final(bytes + 2, end, 0x40, kDel);
  if (last == end) {
    return kNone;
  }
  const std::uint32_t code = code_without_data(last[-1], *last);
  return code != CMD_IGNORE ? found(code, bytes, last) : kNone;
}

ReadySequence ready_csi(const std::uint8_t* bytes, const std::uint8_t* end) {
  const std::uint8_t* const last = find_final(bytes + 2, end, 0x40, 0x7e);
  if (last == end) {
    return kNone;
  }
  const TableRow& row = row_of<kCsiTable>(*last);
  return row.form == kCsiPlain ? found(row.code, bytes, last) : kNone;
}

ReadySequence ready_esc(const std::uint8_t* bytes, const std::uint8_t* end) {
  const TableRow& row = row_of<kEscTable>(bytes[1]);
  switch (row.form) {
    case kEscDollar:
      return bytes[2] == '@' ? found(row.code, bytes, bytes + 2) : kNone;
    case kEscParen:
      return bytes[2] == 'H' ? found(row.code, bytes, bytes + 2) : kNone;
    case kEscQ:
      return ready_q(bytes, end);
    case kEscCsi:
      return ready_csi(bytes, end);
    default:
      return kNone;
  }
}

ReadySequence ready_fs(const std::uint8_t* bytes, const std::uint8_t* end) {
  const TableRow& row = row_of<kFsTable>(bytes[1]);
  switch (row.form) {
    case kFsParameters: {
      const std::uint8_t* const last =
          find_final(bytes + 2, end, kFirstFsTerminator, kLastFsTerminator);
      return last != end ? found(row.code, bytes, last) : kNone;
    }
    case kFsNothingMore:
      return found(row.code, bytes, bytes + 1);
    default:
      return kNone;
  }
}

}  // namespace

ReadySequence ready_sequence(const std::uint8_t* bytes, const std::uint8_t* end) {
  end = std::min<std::ptrdiff_t>(end - bytes, kMaxReadySequence) + bytes;
  if (end - bytes < 3) {
    return kNone;
  }
  return *bytes == kEsc ? ready_esc(bytes, end) : ready_fs(bytes, end);
}

}  // namespace rlx
