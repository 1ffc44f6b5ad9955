#pragma once

#include "driver/loop/loop_state.h"

namespace rlx {

/// The fast road: takes what is ordinary at the front of the input - text, line ends, other control
/// bytes, invalid bytes, LFs of a form or of -L, sequences that are only written - and writes it,
/// as far as it stands ready in memory. Exactly what the record-by-record road would write, keep
/// and note for the same bytes. Takes nothing when something else has to happen first, and leaves
/// everything else, and what may cross the end of the buffer or frame, to that road.
void write_text_run(LoopState& loop);

}  // namespace rlx
