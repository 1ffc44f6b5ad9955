#pragma once

#include "driver/loop/loop_state.h"

namespace rlx {

/// Where the main loop goes after a step.
enum class Next {
  step,    ///< to the next step of this record
  record,  ///< to the next record
  end,     ///< to the end of the job, with the loop's status
};

/// Ends the job when a status is not ST_OK.
inline Next go_on_if_ok(LoopState& loop, Status status) {
  loop.status = status;
  return status == ST_OK ? Next::step : Next::end;
}

}  // namespace rlx
