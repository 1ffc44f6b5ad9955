#pragma once

#include <array>
#include <cstdint>

#include "driver/loop/loop_state.h"

namespace rlx {

/// What becomes of a command while nothing waits to go before it: the conditions have been sent, no
/// command and no movement is held.
struct CommandEffects {
  /// It is written, and has no other effects than these. (What is ignored is not written.)
  bool only_written;
  bool brings_content;    ///< it puts something on the page
  bool begins_new_state;  ///< nothing has been put on the page since
  bool starts_page;       ///< a form must feed a sheet before it begins
};
extern const std::array<CommandEffects, kHighestCommandCode + 1> command_effects;

/// Routes the command that stands in `loop.record`, through all steps that its code takes part in.
/// @return false when the job ends with it (`loop.status` says how).
bool route_record(LoopState& loop);

}  // namespace rlx
