#pragma once

#include <cstdint>

#include "job/command_record.h"

namespace rlx {

// The job is cut into commands: single control bytes, sequences after ESC (0x1b) or FS (0x1c), and
// text bytes. Every parser below fills the one record it is given: it appends what it reads and
// sets the code. All of them return a status:
//   ST_OK     the record is filled; its code is CMD_IGNORE if the sequence is unknown or malformed
//   ST_EOF    the input ended (inside a sequence: the code is CMD_IGNORE)
//   ST_CUT    the END frame ended inside the sequence; the code is CMD_IGNORE
//   ST_IOERR  read error; the code is CMD_IGNORE
// `flags` are those of zqgetc.

/// Reads one command. A text byte comes back as CMD_TEXT_RAW, for zqclass to complete. When the
/// input ends inside a sequence the record is returned with ST_OK, and the next call returns
/// ST_EOF.
int zqtoken(int flags, CommandRecord* record);

/// Reads the rest of a sequence after ESC.
int zqescseq(int flags, CommandRecord* record);
/// Reads the rest of a sequence after FS.
int zqfsseq(int flags, CommandRecord* record);
/// Reads the rest of a sequence after ESC "[".
int zqcsiseq(int flags, CommandRecord* record);

/// Forgets that the input ended inside a sequence.
void reset_tokenizer();

}  // namespace rlx
