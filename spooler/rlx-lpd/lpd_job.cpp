#include "rlx-lpd/lpd_job.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <string_view>
#include <thread>

#include "mapping/words.h"
#include "rlx-lpd/job_options.h"
#include "running/child_process.h"
#include "running/descriptor.h"

namespace rlx::lpd {

namespace {

using spooler::Problem;

/// The head of a job in the printer's language: a count of ten digits stands between two texts.
constexpr std::string_view kHeadBefore = "\033Q0;";
constexpr std::size_t kCountDigits = 10;
constexpr std::string_view kHeadBehind = "/`%%%=Pji";
constexpr std::size_t kHeadBytes = kHeadBefore.size() + kCountDigits + kHeadBehind.size();

/// One write, one line. Nothing can be said of a failure: lpd is gone when a job was removed.
void tell(const std::string& text) {
  const std::string line = spooler::in_one_line(text) + '\n';
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(line.data());
  static_cast<void>(spooler::write_all(STDERR_FILENO, {bytes, line.size()}));
}

class Listener : public spooler::PrintListener {
 public:
  explicit Listener(bool verbose) : verbose_(verbose) {}

  void command_line(const std::string& words) override {
    if (verbose_) {
      tell("running " + words);
    }
  }

 private:
  bool verbose_;
};

/// "2 pages, 2503 bytes, form INVOICE, 0.1 seconds"
std::string summary(const spooler::PrintJob& print, const spooler::PrintResult& result,
                    std::chrono::duration<double> time) {
  std::array<char, 32> seconds{};
  std::snprintf(seconds.data(), seconds.size(), "%.1f", time.count());
  const bool one = result.count.impressions == 1;
  // A job in the printer's language has no use for the form of its queue.
  const std::string form = print.in_printer_language ? "" : print.settings.form;
  return std::to_string(result.count.impressions) + (one ? " page, " : " pages, ") +
         std::to_string(result.bytes) + " bytes, " + (form.empty() ? "no form" : "form " + form) +
         ", " + seconds.data() + " seconds";
}

/// How somebody lets a held job print: "lpc release lines 384".
std::string release_command(const LpdArguments& arguments) {
  return "lpc release " + (arguments.printer.empty() ? "QUEUE" : arguments.printer) + ' ' +
         (arguments.job_number.empty() ? "JOB" : arguments.job_number);
}

/// Says why a job was not printed and what becomes of it.
JobEnd tell_failure(const LpdArguments& arguments, Problem problem, const std::string& words) {
  const JobEnd end = job_end(problem, false);
  const std::string job = "job " + (arguments.job_number.empty() ? "" : arguments.job_number + ' ');
  if (end == JobEnd::hold) {
    tell(job + "is held: " + words + "; to print it then: " + release_command(arguments));
  } else {
    tell(job + "is tried again: " + words);
  }
  return end;
}

/// @return what is wrong with the options; empty when nothing is.
std::string read_settings(const LpdArguments& arguments, const std::string& ticket,
                          spooler::JobSettings& settings) {
  const std::string wrong = read_options(divide_options(arguments.queue_options), 1, settings);
  if (!wrong.empty()) {
    return "the printcap entry is wrong: --options: " + wrong;
  }
  return read_options(divide_options(arguments.job_options),
                      copies_sent(ticket, arguments.data_file), settings);
}

}  // namespace

JobEnd job_end(Problem problem, bool cancelled) {
  if (cancelled) {
    return JobEnd::retry;
  }
  switch (problem) {
    case Problem::none:
      return JobEnd::printed;
    case Problem::output:
    case Problem::system:
      return JobEnd::retry;
    case Problem::wrong_option:
    case Problem::form_missing:
    case Problem::form_wrong:
    case Problem::wrong_text:
    case Problem::job:
      break;
  }
  return JobEnd::hold;
}

bool is_printer_language(int descriptor) {
  std::array<char, kHeadBytes> bytes{};
  const off_t here = lseek(descriptor, 0, SEEK_CUR);
  if (here < 0 ||
      pread(descriptor, bytes.data(), bytes.size(), here) != static_cast<ssize_t>(bytes.size())) {
    return false;
  }
  const std::string_view head(bytes.data(), bytes.size());
  const std::string_view count = head.substr(kHeadBefore.size(), kCountDigits);
  return head.starts_with(kHeadBefore) && head.ends_with(kHeadBehind) &&
         count.find_first_not_of("0123456789") == std::string_view::npos;
}

JobEnd print_lpd_job(const LpdArguments& arguments, const std::string& ticket,
                     const spooler::Cancellation& cancellation) {
  const auto begin = std::chrono::steady_clock::now();
  if (!arguments.fault.empty()) {
    return tell_failure(arguments, Problem::wrong_option,
                        "the printcap entry is wrong: " + arguments.fault);
  }
  spooler::PrintJob print;
  print.queue = arguments.queue;
  const std::string wrong = read_settings(arguments, ticket, print.settings);
  if (!wrong.empty()) {
    return tell_failure(arguments, Problem::wrong_option, wrong);
  }
  print.input = STDIN_FILENO;
  print.output = STDOUT_FILENO;
  print.in_printer_language = is_printer_language(STDIN_FILENO);
  print.filter = spooler::find_program("zqeuctorlx", RLX_TO_FILTERS);
  print.form_checker = spooler::find_program("fcbcheck", RLX_TO_PROGRAMS);
  Listener listener(arguments.verbose);
  const spooler::PrintResult result = print_job(print, listener, cancellation);
  const bool cancelled = cancellation.is_asked();
  if (result.problem != Problem::none && !cancelled) {
    return tell_failure(arguments, result.problem, result.words);
  }
  tell((cancelled ? "cancelled after " : "") +
       summary(print, result, std::chrono::steady_clock::now() - begin));
  return job_end(result.problem, cancelled);
}

void end_late_after_cancel(const spooler::Cancellation& cancellation, std::chrono::seconds time) {
  std::thread([&cancellation, time] {
    constexpr int kNoDescriptor = -1;
    while (cancellation.wait_for(kNoDescriptor, 0)) {
    }
    std::this_thread::sleep_for(time);
    _exit(static_cast<int>(JobEnd::retry));
  }).detach();
}

}  // namespace rlx::lpd
