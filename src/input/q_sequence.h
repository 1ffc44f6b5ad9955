#pragma once

#include "input/tokenizer.h"
#include "job/command_record.h"

namespace rlx {

/// zqqseq: reads the rest of a sequence after ESC "Q": parameters, a separator, a final byte and,
/// for some final bytes, counted binary data. Data that does not fit in the record is left in the
/// input, and `pending` counts it. @return as the parsers of input/tokenizer.h.
Status zqqseq(Tokenizer& tokenizer, int flags, CommandRecord* record);

}  // namespace rlx
