// LPRng's filter: a line-printer job to the page printer's language.
#include "rlx-lpd/lpd_job.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

constexpr const char* kUsage =
    "Usage: rlx-lpd [--mode N] [--resolution N] [--capabilities LIST] [--flags LETTERS]\n"
    "               [--forms DIR]... [--options OPTIONS] [--cancel-seconds N] [--verbose]\n"
    "               [LPRng's own letters]\n"
    "       rlx-lpd --help | --version\n"
    "\n"
    "LPRng's lpd runs this filter once for each file of a job: it turns the options of lpr -Z\n"
    "into those of zqeuctorlx and runs it, from standard input to standard output. The options\n"
    "that describe the printer stand in the queue's printcap entry:\n"
    "\n"
    "    lines:lp=192.0.2.10%9100:if=/usr/libexec/rlx-lpd --forms=/srv/forms:sh:send_try#0\n"
    "\n"
    "Messages go to standard error; lpq -L shows them. rlx-lpd(8) tells all of it.\n";

int print(const rlx::lpd::LpdArguments& arguments) {
  // The handler may come at any time, so the wish stands outside all that ends before the process.
  static rlx::spooler::Cancellation cancellation;
  rlx::spooler::cancel_on_signals(cancellation);
  rlx::lpd::end_late_after_cancel(cancellation, arguments.cancel_time);
  const char* const ticket = std::getenv("HF");
  return static_cast<int>(
      rlx::lpd::print_lpd_job(arguments, ticket == nullptr ? "" : ticket, cancellation));
}

int run(int argc, char** argv) {
  using Task = rlx::lpd::LpdArguments::Task;
  const auto arguments = rlx::lpd::read_arguments({argv + 1, argv + argc});
  switch (arguments.task) {
    case Task::help:
      return std::fputs(kUsage, stdout) < 0 ? 1 : 0;
    case Task::version:
      return std::puts("rlx-lpd " RLX_VERSION) < 0 ? 1 : 0;
    case Task::print:
      break;
  }
  return print(arguments);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "rlx-lpd: %s\n", failure.what());
    return static_cast<int>(rlx::lpd::JobEnd::retry);
  }
}
