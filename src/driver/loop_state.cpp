#include "driver/loop_state.h"

#include "job/settings.h"

namespace rlx {

LoopState loop_state;

bool conditions_due(const LoopState& loop) {
  return loop.conditions_pending && job_settings.print_conditions_enabled != 0;
}

void reset_loop_state() {
  loop_state = LoopState{};
  loop_state.current_store = &loop_state.initial_store;
}

}  // namespace rlx
