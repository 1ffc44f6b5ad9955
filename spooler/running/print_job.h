#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mapping/filter_arguments.h"
#include "mapping/job_settings.h"
#include "running/cancellation.h"
#include "running/page_counter.h"

namespace rlx::spooler {

/// What a spooler hands over.
struct PrintJob {
  QueueSettings queue;
  JobSettings settings;
  bool in_printer_language = false;  ///< sent as it is; copies are made by sending it so often
  int input = 0;                     ///< descriptor of the job
  int output = 1;                    ///< descriptor that takes the printer's job
  std::string filter;                ///< path of the filter
  std::string form_checker;          ///< path of fcbcheck; empty when it is not installed
};

/// Why a job was not printed.
enum class Problem : std::uint8_t {
  none,
  wrong_option,  ///< of the job or its queue
  form_missing,
  form_wrong,
  wrong_text,  ///< it is no text of its encoding
  job,         ///< the filter refused it, or a file that it needs
  output,      ///< nobody took the output: the printer, or what stands between, went away
  system,      ///< something that trying again may mend: no memory, no room, no process
};

/// How a job went.
struct PrintResult {
  Problem problem = Problem::none;
  /// One line for people: what is wrong, and what to do about it; empty when nothing is.
  std::string words;
  int output_error = 0;     ///< why the output was not taken, as errno; 0 when it was
  PageCount count;          ///< of all copies that were sent
  std::uint64_t bytes = 0;  ///< that were handed on
};

/// Who wants to know how a job goes on.
class PrintListener {
 public:
  virtual ~PrintListener() = default;
  /// A run of the filter begins. @param words  its command line, quoted for a shell.
  virtual void command_line(const std::string& /*words*/) {}
  /// A page was handed on. @param number  from 1, through all copies. @param copies  that the
  /// printer makes of it.
  virtual void page(std::uint64_t /*number*/, unsigned /*copies*/) {}
};

/// Prints a job: the filter runs with what queue and job ask for, and what it has no option for
/// goes in front of the job as a print-condition command.
///
/// Copies are made by the printer, through that command, or by sending the job so often when the
/// job has such a command of its own, is in the printer's language, or wants more than the
/// command's column holds; never by both. Nothing is sent when the form is missing or when text is
/// no text of its encoding: that is found out first.
///
/// When it is cancelled the printer gets whole blocks and a job end, see run_filter and
/// WholeBlocks.
PrintResult print_job(const PrintJob& job, PrintListener& listener,
                      const Cancellation& cancellation);

/// The places where the filter looks for a form: fcbe/NAME below the folders of the queue, then in
/// the system's folder of forms.
std::vector<std::string> form_places(const QueueSettings& queue, const std::string& name);

}  // namespace rlx::spooler
