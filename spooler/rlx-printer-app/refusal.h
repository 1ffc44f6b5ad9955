#pragma once

#include <pappl/pappl.h>

namespace rlx::printer_app {

/// Says why a job whose format is none of ours will not be printed. PAPPL aborts such a job by
/// itself, and only its log tells why. To be called from the event of the job's begin.
void refuse_format(pappl_job_t* job);

/// The journal does not know of the job. @param error  why, as errno.
void set_unnoted(pappl_job_t* job, int error);

/// To be called when the job's document comes, with no lock held. @return 0 for a job that is
/// noted; for another one why it is not, as errno, and the job has the words.
int take_unnoted(pappl_job_t* job);

/// A filter that prints nothing, in place of PAPPL's own for pictures: its one for PNG never ends
/// when the picture is cut. Its jobs have their words by refuse_format().
bool print_no_picture(pappl_job_t* job, pappl_device_t* device, void* data);

}  // namespace rlx::printer_app
