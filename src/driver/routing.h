#pragma once

#include <array>
#include <cstdint>

#include "driver/loop_state.h"

namespace rlx {

/// By code, what is_only_written says.
extern const std::array<bool, kHighestCommandCode + 1> only_written;

/// True for a code that takes part in no step but those that every command takes part in: such a
/// command is written, and that is all, unless something waits to go before it.
inline bool is_only_written(std::uint32_t code) {
  return code > kHighestCommandCode || only_written[code];
}

/// Routes the command that stands in `loop.record`, through all steps that its code takes part in.
/// @return false when the job ends with it (`loop.status` says how).
bool route_record(LoopState& loop);

}  // namespace rlx
