#pragma once

#include <string>
#include <vector>

#include "mapping/job_settings.h"
#include "running/cancellation.h"

namespace rlx::texttorlx {

/// What CUPS hands over (filter(7)): job, user, title, copies, options, and a file or nothing.
struct CupsJob {
  std::string id;
  std::string copies;
  std::vector<spooler::JobOption> options;
  std::string file;          ///< empty for standard input
  std::string ppd;           ///< path of the queue's PPD file, $PPD
  std::string content_type;  ///< $CONTENT_TYPE
};

/// @param arguments  the five or six behind the program's name.
CupsJob read_cups_job(const std::vector<std::string>& arguments);

/// Prints it to standard output, and says on standard error how that goes.
/// @return the exit status: 0 when it was printed or cancelled, 1 when it was not, which stops the
///         job and not the queue. When standard output is closed by whoever reads it the process
///         ends by SIGPIPE, which CUPS takes for the reader's failure, as it is.
int print_cups_job(const CupsJob& job, const spooler::Cancellation& cancellation);

}  // namespace rlx::texttorlx
