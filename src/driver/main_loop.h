#pragma once

#include "driver/loop_state.h"

namespace rlx {

/// How the main loop ended, as the end of the job must know it.
enum class JobEnd {
  flush,           ///< what is gathered must be written
  passed_through,  ///< the rest of the job has gone out as it stood; nothing is left to write
};

/// Converts the job: reads one command after the other and routes each through the steps below, in
/// this order, until the input ends or a step fails. `loop.status` becomes the status of the job.
JobEnd run_main_loop(LoopState& loop);

/// Routes the command that stands in `loop.record`, through all steps that its code takes part in.
/// @return false when the job ends with it (`loop.status` says how).
bool route_record(LoopState& loop);

}  // namespace rlx
