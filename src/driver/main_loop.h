#pragma once

#include "driver/loop/loop_state.h"

namespace rlx {

/// How the main loop ended, as the end of the job must know it.
enum class JobEnd {
  flush,           ///< what is gathered must be written
  passed_through,  ///< the rest of the job has gone out as it stood; nothing is left to write
  copy_failed,  ///< the same, but not all of it: that has been reported, and is all there is to say
};

/// Converts the job: reads one command after the other and routes it (driver/loop/routing.h), until
/// the input ends or a step fails. `loop.status` becomes the status of the job.
JobEnd run_main_loop(LoopState& loop);

}  // namespace rlx
