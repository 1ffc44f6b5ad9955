#pragma once

#include <cstdint>

#include "input/byte_source.h"
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

/// What the tokenizer keeps from one command to the next, and what it reads.
struct Tokenizer {
  ByteSource& source;
  const CommandLine& command_line;
  /// The input ended inside a sequence; the next call returns ST_EOF at once.
  bool sticky_eof = false;

  Tokenizer(ByteSource& bytes, const CommandLine& options) : source(bytes), command_line(options) {}
};

/// zqtoken: reads one command. A text byte comes back as CMD_TEXT_RAW, for zqclass to complete.
/// When the input ends inside a sequence the record is returned with ST_OK, and the next call
/// returns ST_EOF.
Status zqtoken(Tokenizer& tokenizer, int flags, CommandRecord* record);

/// zqescseq: reads the rest of a sequence after ESC.
Status zqescseq(Tokenizer& tokenizer, int flags, CommandRecord* record);
/// zqfsseq: reads the rest of a sequence after FS.
Status zqfsseq(Tokenizer& tokenizer, int flags, CommandRecord* record);
/// zqcsiseq: reads the rest of a sequence after ESC "[".
Status zqcsiseq(Tokenizer& tokenizer, int flags, CommandRecord* record);

}  // namespace rlx
