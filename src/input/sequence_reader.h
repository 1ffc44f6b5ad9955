#pragma once

#include <cstdint>

#include "job/command_record.h"

namespace rlx {

// What the parsers of the tokenizer read with. `flags` are those of zqgetc.

/// Marks the record as one that is skipped, and hands a status on.
inline int ignore_command(CommandRecord& record, int status) {
  record.code = CMD_IGNORE;
  return status;
}

/// Appends one byte of the input to the record, which has room for it.
/// @return ST_OK; ST_CUT at the end of the END frame or the status of zqgetc, with CMD_IGNORE.
int read_sequence_byte(int flags, CommandRecord& record);

/// Appends bytes of the input to the record up to and including one in `low` to `high`. When the
/// record is full the code becomes CMD_IGNORE, and the sequence goes on being consumed into the
/// front of the record.
/// @return as read_sequence_byte. A null record is reported on standard error, with status 1.
int zqrhandl(int flags, CommandRecord* record, std::uint8_t low, std::uint8_t high);

/// Reads bytes of the input.
/// @param destination  where they go; null discards them.
/// @param count        bytes wanted; on return the bytes read.
/// @return ST_OK when all were read; ST_CUT at the end of the END frame, or the status of zqgetc.
int zqrdata(int flags, std::uint8_t* destination, std::int32_t* count);

}  // namespace rlx
