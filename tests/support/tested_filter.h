#pragma once

#include <string>

namespace rlx::testing {

/// The filter that tests start as a process: the one of this build whose fixed paths are below
/// "sandbox", or another one that $RLX_TESTED_FILTER names: one built for another machine or
/// against another C library.
std::string tested_filter();

/// The stand-in font library that goes with it: of this build, or $RLX_TESTED_FONT_LIBRARY. Those
/// that lack an entry point stand beside it.
std::string tested_font_library();

}  // namespace rlx::testing
