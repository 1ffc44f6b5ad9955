#pragma once

#include "driver/main_loop.h"

namespace rlx {

/// Ends the job: writes what is held for a frame and what is gathered for the page, ends the job
/// towards the printer, then closes the fonts, releases the font library and frees the buffers.
/// @param end     after a pass-through nothing is left to write.
/// @param status  how the main loop ended.
/// @return the exit status: `status`, or the first failure met here when that is 0.
int end_job(JobEnd end, int status);

}  // namespace rlx
