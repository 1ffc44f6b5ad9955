#pragma once

#include "driver/filter.h"
#include "driver/main_loop.h"

namespace rlx {

/// Ends the job: writes what is held for a frame and what is gathered for the page, ends the job
/// towards the printer, then closes the fonts, releases the font library and frees the buffers.
/// @param end     after a pass-through nothing is left to write.
/// @param status  how the main loop ended.
/// @return `status`, or the first failure met here when that is 0.
Status end_job(Filter& filter, JobEnd end, Status status);

}  // namespace rlx
