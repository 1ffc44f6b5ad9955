#include "texttorlx/cups_job.h"

#include <cups/cups.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <stdexcept>

#include "running/child_process.h"
#include "running/descriptor.h"
#include "running/print_job.h"
#include "texttorlx/messages.h"
#include "texttorlx/queue_of_ppd.h"

namespace rlx::texttorlx {

namespace {

using spooler::Problem;

constexpr const char* kFormMissing = "rlx-form-missing-warning";
constexpr const char* kPrinterLanguage = "application/vnd.rlx";
constexpr const char* kUnrecognised = "application/octet-stream";
/// CUPS's own banner pages, and those of its filters.
constexpr std::array<const char*, 2> kBanners{"application/vnd.cups-banner",
                                              "application/vnd.cups-pdf-banner"};

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

std::vector<spooler::JobOption> parse_options(const std::string& text) {
  cups_option_t* options = nullptr;
  const int count = cupsParseOptions(text.c_str(), 0, &options);
  std::vector<spooler::JobOption> all;
  all.reserve(static_cast<std::size_t>(count));
  for (const cups_option_t& option : std::span(options, static_cast<std::size_t>(count))) {
    all.push_back({option.name, option.value});
  }
  cupsFreeOptions(count, options);
  return all;
}

class Listener : public spooler::PrintListener {
 public:
  void command_line(const std::string& words) override { debug("running " + words); }
  void page(std::uint64_t number, unsigned copies) override { texttorlx::page(number, copies); }
};

/// The queue's settings with the job's behind them.
/// @throws std::runtime_error with what is wrong.
void read_settings(const CupsJob& job, spooler::PrintJob& print) {
  const Queue queue = read_ppd(job.ppd);
  print.queue = queue.settings;
  auto faults = queue.faults;
  if (faults.empty()) {
    faults = read_job_options(queue.defaults, print.settings);
  }
  if (!faults.empty()) {
    throw std::runtime_error("the queue is set up wrongly: " + text_of(faults.front()));
  }
  // The number of copies is an argument; the option says what was asked for before that was
  // settled.
  std::vector<spooler::JobOption> options;
  for (const spooler::JobOption& option : job.options) {
    if (option.name != "copies") {
      options.push_back(option);
    }
  }
  options.push_back({"copies", job.copies});
  faults = read_job_options(options, print.settings);
  if (!faults.empty()) {
    throw std::runtime_error(text_of(faults.front()) + "; nothing was printed");
  }
}

/// cupsd looks through gzip when it finds out what a job is, and takes compressed text for text,
/// but hands it on as it is.
void require_not_compressed(const spooler::Descriptor& job) {
  std::array<std::uint8_t, 2> front{};
  constexpr std::array<std::uint8_t, 2> kGzip{0x1f, 0x8b};
  if (pread(job.number(), front.data(), front.size(), 0) == std::ssize(front) && front == kGzip) {
    throw std::runtime_error("the job is compressed with gzip; submit what is in it");
  }
}

spooler::Descriptor open_job(const std::string& file) {
  const bool from_file = !file.empty();
  spooler::Descriptor descriptor(from_file ? open(file.c_str(), O_RDONLY | O_CLOEXEC)
                                           : fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
  if (!descriptor.is_open()) {
    throw std::runtime_error((from_file ? "the job's file " + file : "standard input") + ": " +
                             std::strerror(errno));
  }
  require_not_compressed(descriptor);
  return descriptor;
}

/// "2 pages, 2503 bytes, form INVOICE, 0.1 seconds"
std::string summary(const std::string& form, const spooler::PrintResult& result,
                    std::chrono::duration<double> time) {
  std::array<char, 32> seconds{};
  std::snprintf(seconds.data(), seconds.size(), "%.1f", time.count());
  const bool one = result.count.impressions == 1;
  return std::to_string(result.count.impressions) + (one ? " page, " : " pages, ") +
         std::to_string(result.bytes) + " bytes, " + (form.empty() ? "no form" : "form " + form) +
         ", " + seconds.data() + " seconds";
}

/// A reader that has gone tells CUPS itself why; this program then only ends, in the usual way.
[[noreturn]] void end_by_broken_pipe() {
  std::signal(SIGPIPE, SIG_DFL);
  raise(SIGPIPE);
  std::_Exit(1);
}

int tell(const spooler::PrintResult& result) {
  if (result.problem == Problem::none) {
    return 0;
  }
  if (result.problem == Problem::form_missing) {
    add_state(kFormMissing);
  }
  error(result.words);
  return 1;
}

/// cupsd gives this filter what it does not recognise, too, lest it print that as it is; and banner
/// pages, lest it abort the job without a word.
void require_known_type(const CupsJob& job) {
  if (std::find(kBanners.begin(), kBanners.end(), job.content_type) != kBanners.end()) {
    throw std::runtime_error(
        "the job has a banner page, which the printer cannot print; the rest of the job is printed "
        "without it: cancel the job, and submit the next one with -o job-sheets=none");
  }
  if (job.content_type == kUnrecognised) {
    throw std::runtime_error(
        "the job is neither text nor a job with control sequences that is recognised; if it is for "
        "a line printer, submit it with -o document-format=application/vnd.rlx-lines");
  }
}

int print_to_standard_output(const CupsJob& job, const spooler::Cancellation& cancellation) {
  const auto begin = std::chrono::steady_clock::now();
  require_known_type(job);
  spooler::PrintJob print;
  read_settings(job, print);
  const spooler::Descriptor input = open_job(job.file);
  print.input = input.number();
  print.output = STDOUT_FILENO;
  print.in_printer_language = job.content_type == kPrinterLanguage;
  print.filter = spooler::find_program("zqeuctorlx", RLX_TO_FILTERS);
  print.form_checker = spooler::find_program("fcbcheck", RLX_TO_PROGRAMS);
  Listener listener;
  const spooler::PrintResult result = print_job(print, listener, cancellation);
  if (result.output_error == EPIPE) {
    end_by_broken_pipe();
  }
  // A job in the printer's language has no use for the form of its queue.
  const std::string form = print.in_printer_language ? "" : print.settings.form;
  if (result.problem == Problem::none && !form.empty()) {
    remove_state(kFormMissing);
  }
  const int status = tell(result);
  info(summary(form, result, std::chrono::steady_clock::now() - begin));
  return status;
}

}  // namespace

CupsJob read_cups_job(const std::vector<std::string>& arguments) {
  CupsJob job;
  job.id = arguments.at(0);
  job.copies = arguments.at(3);
  job.options = parse_options(arguments.at(4));
  job.file = arguments.size() > 5 ? arguments[5] : std::string();
  job.ppd = environment("PPD");
  job.content_type = environment("CONTENT_TYPE");
  return job;
}

int print_cups_job(const CupsJob& job, const spooler::Cancellation& cancellation) {
  int status = 1;
  try {
    status = print_to_standard_output(job, cancellation);
  } catch (const std::exception& failure) {
    error(failure.what());
  }
  if (status != 0) {
    wait_until_read();
  }
  return status;
}

}  // namespace rlx::texttorlx
