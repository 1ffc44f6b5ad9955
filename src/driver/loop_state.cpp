#include "driver/loop_state.h"

namespace rlx {

LoopState loop_state;

void reset_loop_state() {
  loop_state = LoopState{};
  loop_state.current_store = &loop_state.initial_store;
}

}  // namespace rlx
