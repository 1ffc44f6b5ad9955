#include "input/tokenizer.h"

#include "input/byte_source.h"
#include "input/command_tables.h"
#include "input/q_sequence.h"
#include "input/sequence_reader.h"
#include "job/control_bytes.h"

namespace rlx {

namespace {

constexpr int kDel4DataBytes = 4;

std::uint8_t last_byte(const CommandRecord& record) {
  return record.bytes[static_cast<std::size_t>(record.length - 1)];
}

/// One more byte, which must be `expected`; a wrong one stays in the record.
Status read_expected(ByteSource& source, int flags, CommandRecord& record, std::uint8_t expected,
                     std::uint32_t code) {
  const Status status = read_sequence_byte(source, flags, record);
  if (status == ST_OK) {
    record.code = last_byte(record) == expected ? code : std::uint32_t{CMD_IGNORE};
  }
  return status;
}

Status read_del4(ByteSource& source, int flags, CommandRecord& record, std::uint32_t code) {
  for (int i = 0; i < kDel4DataBytes; ++i) {
    const Status status = read_sequence_byte(source, flags, record);
    if (status != ST_OK) {
      return status;
    }
  }
  record.code = code;
  return ST_OK;
}

/// Consumes a sequence that no table knows: its second byte has been read, and ends it when it lies
/// in 0x40 to `last_second`; else a byte in 0x40-0x7e does.
Status read_unknown(ByteSource& source, int flags, CommandRecord& record,
                    std::uint8_t last_second) {
  record.code = CMD_IGNORE;
  const std::uint8_t second = last_byte(record);
  if (second >= kFirstFinal && second <= last_second) {
    return ST_OK;
  }
  return zqrhandl(source, flags, &record, kFirstFinal, kLastFinal);
}

Status read_fs_parameters(ByteSource& source, int flags, CommandRecord& record,
                          std::uint32_t code) {
  const Status status = zqrhandl(source, flags, &record, kFirstFsTerminator, kLastFsTerminator);
  if (status == ST_OK && record.code != CMD_IGNORE) {
    record.code = code;
  }
  return status;
}

Status parse_control(Tokenizer& tokenizer, int flags, CommandRecord& record, std::uint8_t byte) {
  const TableRow row = row_of<kFirstByteTable>(byte);
  switch (row.form) {
    case kFirstEsc:
      return zqescseq(tokenizer, flags, &record);
    case kFirstFs:
      return zqfsseq(tokenizer, flags, &record);
    default:
      record.code = row.code;
      return ST_OK;
  }
}

}  // namespace

Status zqescseq(Tokenizer& tokenizer, int flags, CommandRecord* record) {
  const Status status = read_sequence_byte(tokenizer.source, flags, *record);
  if (status != ST_OK) {
    return status;
  }
  const TableRow row = row_of<kEscTable>(last_byte(*record));
  switch (row.form) {
    case kEscDollar:
      return read_expected(tokenizer.source, flags, *record, '@', row.code);
    case kEscParen:
      return read_expected(tokenizer.source, flags, *record, 'H', row.code);
    case kEscNothingMore:
      record->code = row.code;
      return ST_OK;
    case kEscQ:
      return zqqseq(tokenizer, flags, record);
    case kEscCsi:
      return zqcsiseq(tokenizer, flags, record);
    case kEscDel:
      return read_del4(tokenizer.source, flags, *record, row.code);
    default:
      return read_unknown(tokenizer.source, flags, *record, kLastFinal);
  }
}

Status zqcsiseq(Tokenizer& tokenizer, int flags, CommandRecord* record) {
  const Status status = zqrhandl(tokenizer.source, flags, record, kFirstFinal, kLastFinal);
  if (status != ST_OK || record->code == CMD_IGNORE) {
    return status;
  }
  const TableRow row = row_of<kCsiTable>(last_byte(*record));
  const std::uint8_t before = record->bytes[static_cast<std::size_t>(record->length - 2)];
  const bool accepted = row.form != kCsiAfterSpace || before == ' ';
  record->code = accepted ? row.code : std::uint32_t{CMD_IGNORE};
  return ST_OK;
}

Status zqfsseq(Tokenizer& tokenizer, int flags, CommandRecord* record) {
  const Status status = read_sequence_byte(tokenizer.source, flags, *record);
  if (status != ST_OK) {
    return status;
  }
  const TableRow row = row_of<kFsTable>(last_byte(*record));
  switch (row.form) {
    case kFsParameters:
      return read_fs_parameters(tokenizer.source, flags, *record, row.code);
    case kFsNothingMore:
      record->code = row.code;
      return ST_OK;
    default:
      // A DEL as second byte ends the sequence here but not after ESC, deliberately.
      return read_unknown(tokenizer.source, flags, *record, kDel);
  }
}

Status zqtoken(Tokenizer& tokenizer, int flags, CommandRecord* record) {
  record->length = 0;
  record->pending = 0;
  record->extra = 0;
  record->code = CMD_NONE;
  if (tokenizer.sticky_eof) {
    return ST_EOF;
  }
  std::uint8_t byte = 0;
  Status status = zqgetc(tokenizer.source, flags, &byte);
  if (status != ST_OK) {
    record->code = status == ST_EOF ? std::uint32_t{CMD_NONE} : std::uint32_t{CMD_IGNORE};
    return status;
  }
  record->bytes[0] = byte;
  record->length = 1;
  if (byte >= 0x20 && byte != kDel) {
    record->code = CMD_TEXT_RAW;
    return ST_OK;
  }
  status = parse_control(tokenizer, flags, *record, byte);
  if (status == ST_EOF) {
    tokenizer.sticky_eof = true;
    return ST_OK;
  }
  return status;
}

}  // namespace rlx
