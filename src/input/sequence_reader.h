#pragma once

#include <cstdint>
#include <span>

#include "input/byte_source.h"
#include "job/command_record.h"

namespace rlx {

// What the parsers of the tokenizer read with. `flags` are those of zqgetc.

/// Marks the record as one that is skipped, and hands a status on.
inline Status ignore_command(CommandRecord& record, Status status) {
  record.code = CMD_IGNORE;
  return status;
}

/// Appends a byte. When the record is full the code becomes CMD_IGNORE, and storage starts again at
/// the front: the sequence goes on being consumed.
inline void append_byte(CommandRecord& record, std::uint8_t byte) {
  if (record.length >= kRecordCapacity) [[unlikely]] {
    record.code = CMD_IGNORE;
    record.length = 0;
  }
  record.bytes[static_cast<std::size_t>(record.length++)] = byte;
}

/// read_sequence_byte when no byte stands ready.
Status wait_for_sequence_byte(ByteSource& source, int flags, CommandRecord& record);

/// Appends one byte of the input to the record.
/// @return ST_OK; ST_CUT at the end of the END frame or the status of zqgetc, with CMD_IGNORE.
inline Status read_sequence_byte(ByteSource& source, int flags, CommandRecord& record) {
  ByteWindow& window = job_window(source);
  if (window.empty()) [[unlikely]] {
    return wait_for_sequence_byte(source, flags, record);
  }
  append_byte(record, *window.next++);
  return ST_OK;
}

/// zqrhandl: reads up to a final byte. Appends bytes of the input to the record, up to and
/// including one in `low` to `high`.
/// @return as read_sequence_byte. A null record is reported on standard error, with ST_FAILED.
Status zqrhandl(ByteSource& source, int flags, CommandRecord* record, std::uint8_t low,
                std::uint8_t high);

/// zqrdata: reads counted data, the bytes behind a final byte.
/// @param destination  where they go: as many as it has room for are read.
/// @param done         on return how many were read.
/// @return ST_OK when all were read; ST_CUT at the end of the END frame, or the status of zqgetc.
Status zqrdata(ByteSource& source, int flags, std::span<std::uint8_t> destination,
               std::int32_t& done);

/// Reads `count` bytes of counted data and drops them. @return as zqrdata.
Status skip_data(ByteSource& source, int flags, std::int32_t count);

}  // namespace rlx
