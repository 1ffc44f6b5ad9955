#pragma once

namespace rlx {

/// Modes of dtout_pji.
inline constexpr int kWholeHeader = 0;
inline constexpr int kParameterTextOnly = 1;

/// Writes what stands in front of a page: the job parameter text, the job start block (once per
/// job), and the blocks that set character density, page format, unit, duplex and offsets. Takes
/// its values from job_settings (resolution, form length, -D) and print_conditions; of most of them
/// it sends only what differs from the copy last sent. The copies live for the whole run.
/// @param mode  kWholeHeader, or kParameterTextOnly at the end of a job whose last page has none.
/// @return 0 or the first non-zero status of out_bytes; copies updated so far stay updated.
int dtout_pji(int mode);

/// Forgets all last-sent copies.
void reset_job_header();

}  // namespace rlx
