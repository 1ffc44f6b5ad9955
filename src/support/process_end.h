#pragma once

#include "job/status.h"

namespace rlx {

// Most failures are handed up as statuses. What ends the process from deep inside does so here.

/// Ends the process at once, with the exit status of a status, ST_OK or ST_FAILED. What is gathered
/// and not written is lost.
[[noreturn]] void end_process(Status status);

/// Says "write error" (without the program's name and without a newline) and ends the process with
/// status 1: standard output does not take what was written.
[[noreturn]] void end_with_write_error();

/// Closes standard output, when all is written. Some systems tell only then that the bytes did not
/// arrive: a close that fails ends the process as end_with_write_error does.
void close_standard_output();

}  // namespace rlx
