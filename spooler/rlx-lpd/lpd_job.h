#pragma once

#include <string>

#include "rlx-lpd/lpd_arguments.h"
#include "running/cancellation.h"
#include "running/print_job.h"

namespace rlx::lpd {

/// Exit statuses as LPRng's lpd (3.8.B) takes them from a filter; it reads 1 to 31 as 32 to 62. Of
/// the others some are known (33 JABORT, 34 JREMOVE, 41 JFAILNORETRY) and none is of use: after any
/// of them, and after a signal, lpd is done with the job, which is gone unless the queue has
/// save_on_error.
enum class JobEnd : int {
  printed = 0,  ///< JSUCC: the next file or job
  retry = 32,   ///< JFAIL: the job is tried again, as often as the queue's send_try says
  hold = 37,    ///< JHOLD: the job stays until somebody releases it (lpc release); the next job
};

/// What lpd is to do with a job that went so. What trying again may mend is tried again: a printer
/// that went away, a machine without memory. Everything else needs somebody: a form that is missing
/// or wrong, an option, a text in another encoding. A cancelled job counts as failed; if lpd still
/// knows the job it prints it again, for only a part was printed.
JobEnd job_end(spooler::Problem problem, bool cancelled);

/// True when a job is one in the printer's own language (docs/rlx.md): it begins with the head of
/// such a job. It is sent as it is.
/// @param descriptor  the job. One that is no file is taken for a line-printer job. Where it stands
///                    does not change.
bool is_printer_language(int descriptor);

/// Prints the file of a job, standard input, to standard output, and says on standard error, which
/// lpd puts into the queue's status (lpq -L), how that went.
/// @param ticket  the job's ticket, see copies_sent.
JobEnd print_lpd_job(const LpdArguments& arguments, const std::string& ticket,
                     const spooler::Cancellation& cancellation);

/// Ends this process when a cancelled job is not done after a time: nobody else would, for lpd has
/// forgotten the job.
/// @param cancellation  must stay until the process ends.
void end_late_after_cancel(const spooler::Cancellation& cancellation, std::chrono::seconds time);

}  // namespace rlx::lpd
