#pragma once

#include <array>
#include <cstdint>

#include "driver/loop/loop_state.h"

namespace rlx {

/// By code, whether is_only_written holds, and whether is_only_written_on_started_page does.
struct OnlyWritten {
  bool always;
  bool on_started_page;
};
extern const std::array<OnlyWritten, kHighestCommandCode + 1> only_written;

/// True for a code that takes part in no step but those that every command takes part in: such a
/// command is written, and that is all, unless something waits to go before it.
inline bool is_only_written(std::uint32_t code) {
  return code > kHighestCommandCode || only_written[code].always;
}

/// True for a code that besides those steps takes part in the ones that note content and the page's
/// start, or release movements that are held: the same holds for it once both are noted and nothing
/// is held.
inline bool is_only_written_on_started_page(std::uint32_t code) {
  return code > kHighestCommandCode || only_written[code].on_started_page;
}

/// Routes the command that stands in `loop.record`, through all steps that its code takes part in.
/// @return false when the job ends with it (`loop.status` says how).
bool route_record(LoopState& loop);

}  // namespace rlx
