#pragma once

#include "driver/filter.h"

namespace rlx {

/// Everything from the process start to the first read of the input: reads the options, loads the
/// form of -n and moves to its top, settles resolution and printer class, loads the font library
/// (a missing one is no failure), reads the G1 range file, opens the fonts, allocates the buffers.
/// Nothing is written to standard output.
/// @return ST_OK, or the status of the process; the message has been printed.
Status start_up(Filter& filter, int argc, char** argv);

}  // namespace rlx
