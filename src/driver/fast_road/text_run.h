#pragma once

#include "driver/loop/loop_state.h"

namespace rlx {

/// The fast road: takes the ordinary text at the front of the input - printable bytes, line ends,
/// other control bytes, invalid bytes, multi-byte characters, and LFs of an active form - and
/// writes it as one run, as far as it stands ready in memory. Exactly what the record-by-record
/// road would write, keep and note for the same bytes. Takes nothing when something else has to
/// happen first, and leaves everything else, and what may cross the end of the buffer or frame, to
/// that road.
void write_text_run(LoopState& loop);

}  // namespace rlx
