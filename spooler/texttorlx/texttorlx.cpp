// The CUPS filter: a line-printer job to the page printer's language.
#include <cstdio>
#include <string_view>
#include <vector>

#include "running/cancellation.h"
#include "texttorlx/cups_job.h"

namespace {

constexpr int kWrongUse = 2;

constexpr const char* kUsage =
    "Usage: texttorlx JOB USER TITLE COPIES OPTIONS [FILE]\n"
    "       texttorlx --help | --version\n"
    "\n"
    "CUPS runs this filter once for each job: it turns the job's options into those of "
    "zqeuctorlx,\n"
    "runs it, hands its output on to standard output, and counts the pages. Without FILE the job "
    "is\n"
    "read from standard input. The queue is described by the PPD file that $PPD names, the kind "
    "of\n"
    "job by $CONTENT_TYPE. Messages go to standard error, as CUPS reads them.\n"
    "\n"
    "texttorlx(8) tells the options, rlx-queue(8) how to make a queue.\n";

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() == 1 && arguments[0] == "--help") {
    return std::fputs(kUsage, stdout) < 0 ? 1 : 0;
  }
  if (arguments.size() == 1 && arguments[0] == "--version") {
    return std::puts("texttorlx " RLX_VERSION) < 0 ? 1 : 0;
  }
  if (arguments.size() < 5 || arguments.size() > 6) {
    std::fprintf(stderr, "ERROR: texttorlx takes five or six arguments, not %zu\n%s",
                 arguments.size(), kUsage);
    return kWrongUse;
  }
  // The handler may come at any time, so the wish stands outside all that ends before the process.
  static rlx::spooler::Cancellation cancellation;
  rlx::spooler::cancel_on_signals(cancellation);
  return rlx::texttorlx::print_cups_job(rlx::texttorlx::read_cups_job(arguments), cancellation);
}
