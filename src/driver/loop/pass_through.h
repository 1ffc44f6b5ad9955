#pragma once

#include "driver/loop/loop_state.h"

namespace rlx {

/// Passes the rest of the job through: a job parameter block (command 520) says that the job is in
/// the printer's language already. Writes the bytes of the command in `loop.record` and then all
/// that follows on standard input, with neither blocks nor frames; of a framed job what is held for
/// a frame and the rest of the input frame are dropped, and the frames that follow go out as they
/// stand. What stands in the page buffer is not written.
/// A copy that fails is reported with the system's text and deliberately does not change
/// the status. The command's own bytes and the pages before it are no part of the copy: when they
/// cannot be written, the process ends with "write error".
void pass_through(LoopState& loop);

}  // namespace rlx
