#include "running/print_job.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <system_error>

#include "mapping/condition_command.h"
#include "mapping/own_conditions_scan.h"
#include "running/failure_words.h"
#include "running/filter_run.h"
#include "running/job_source.h"
#include "running/kept_job.h"
#include "running/whole_blocks.h"

namespace rlx::spooler {

namespace {

namespace fs = std::filesystem;

/// Who makes the copies.
struct CopyPlan {
  unsigned times = 1;    ///< so often the job is sent
  unsigned printer = 1;  ///< so many copies the printer is asked for
};

/// What a run of the job is made of, and the run.
class JobPrinter {
 public:
  JobPrinter(const PrintJob& job, PrintListener& listener, const Cancellation& cancellation)
      : job_(job), listener_(listener), cancellation_(cancellation) {}

  PrintResult print();

 private:
  bool check();
  bool form_is_there();
  bool text_is_convertible(const KeptJob& kept);
  bool has_own_conditions(const KeptJob& kept) const;
  CopyPlan plan_copies(const KeptJob& kept) const;
  void send(const CopyPlan& plan, const KeptJob& kept);
  void send_straight_on();
  void send_once(const CopyPlan& plan, int descriptor);
  RunReport run(const CopyPlan& plan, int descriptor);
  void add(const RunReport& report);
  bool refuse(Problem problem, const std::string& words);
  bool refuse_text(const ConversionFault& fault, const std::string& remedy);

  const PrintJob& job_;
  PrintListener& listener_;
  const Cancellation& cancellation_;
  PrintResult result_;
};

bool JobPrinter::refuse(Problem problem, const std::string& words) {
  result_.problem = problem;
  result_.words = words;
  return false;
}

/// @return true when a job that is cancelled was cut off: its text may end where none can.
bool JobPrinter::refuse_text(const ConversionFault& fault, const std::string& remedy) {
  return cancellation_.is_asked() ||
         refuse(Problem::wrong_text,
                std::string(fault.what()) + "; nothing was printed; " + remedy);
}

std::string closed_folder(const std::string& form, const std::string& place,
                          const std::string& why) {
  return "form " + form + " cannot be looked for: " + place + ": " + why +
         "; let the spooler's user enter the folder, then let the job print again";
}

bool JobPrinter::form_is_there() {
  const std::string& form = job_.settings.form;
  if (form.empty()) {
    return true;
  }
  const auto places = form_places(job_.queue, form);
  std::string all;
  for (const std::string& place : places) {
    std::error_code error;
    if (fs::is_regular_file(place, error)) {
      return true;
    }
    // Without the right to enter a folder nobody knows whether the form is in it.
    if (error && error != std::errc::no_such_file_or_directory &&
        error != std::errc::not_a_directory) {
      return refuse(Problem::form_missing, closed_folder(form, place, error.message()));
    }
    all += (all.empty() ? "" : ", ") + place;
  }
  return refuse(Problem::form_missing, "form " + form + " is missing; it was looked for as " + all +
                                           "; put it there, then let the job print again");
}

bool JobPrinter::check() {
  const auto faults = check_queue(job_.queue);
  if (!faults.empty()) {
    return refuse(Problem::wrong_option, "the queue is set up wrongly: " + text_of(faults.front()));
  }
  if (!job_.in_printer_language && job_.filter.empty()) {
    return refuse(Problem::system, "the filter, zqeuctorlx, is not installed");
  }
  return job_.in_printer_language || form_is_there();
}

/// Reads the whole text, so that a fault in it shows before anything is printed.
bool JobPrinter::text_is_convertible(const KeptJob& kept) {
  DescriptorSource bytes(kept.rewind(), cancellation_);
  ConvertedText text(job_.settings.charset, bytes);
  std::array<std::uint8_t, 16384> room{};
  try {
    while (text.read(room) > 0) {
    }
  } catch (const SequenceInText& fault) {
    return refuse_text(fault,
                       "a job with control sequences is UTF-8: leave the option rlx-charset "
                       "out, or give it the value UTF-8");
  } catch (const ConversionFault& fault) {
    return refuse_text(fault, "name the encoding of the text with the option rlx-charset");
  }
  return true;
}

bool JobPrinter::has_own_conditions(const KeptJob& kept) const {
  DescriptorSource bytes(kept.rewind(), cancellation_);
  std::array<std::uint8_t, 16384> room{};
  OwnConditionsScan scan;
  for (std::size_t count = bytes.read(room); count > 0 && !scan.found(); count = bytes.read(room)) {
    scan.take(std::span(room).first(count));
  }
  return scan.found();
}

CopyPlan JobPrinter::plan_copies(const KeptJob& kept) const {
  const unsigned copies = job_.settings.copies;
  const bool by_sending = job_.in_printer_language || copies > kMostCommandCopies ||
                          (copies > 1 && has_own_conditions(kept));
  return by_sending ? CopyPlan{copies, 1} : CopyPlan{1, copies};
}

RunReport JobPrinter::run(const CopyPlan& plan, int descriptor) {
  Cancellation run(&cancellation_);
  const std::uint64_t before = result_.count.pages;
  const PageListener listener = [this, before](std::uint64_t number, unsigned copies) {
    listener_.page(before + number, copies);
  };
  if (job_.in_printer_language) {
    WholeBlocks blocks(descriptor, run);
    return hand_on(blocks, job_.output, listener);
  }
  DescriptorSource bytes(descriptor, run);
  std::unique_ptr<ConvertedText> text;
  if (!job_.settings.charset.empty()) {
    text = std::make_unique<ConvertedText>(job_.settings.charset, bytes);
  }
  TextInFront job(condition_command(job_.settings, plan.printer),
                  text == nullptr ? static_cast<JobSource&>(bytes) : *text);
  const FilterCommand command{job_.filter, filter_arguments(job_.queue, job_.settings)};
  listener_.command_line(command_line(command));
  return run_filter(command, job, job_.output, listener, run);
}

void JobPrinter::add(const RunReport& report) {
  result_.count.pages += report.count.pages;
  result_.count.impressions += report.count.impressions;
  result_.bytes += report.bytes;
  result_.output_error = report.output_error;
}

void JobPrinter::send_once(const CopyPlan& plan, int descriptor) {
  const RunReport report = run(plan, descriptor);
  add(report);
  if (failed(report)) {
    const Failure failure = explain_failure(job_, report);
    refuse(failure.problem, failure.words);
  }
}

void JobPrinter::send(const CopyPlan& plan, const KeptJob& kept) {
  for (unsigned time = 0;
       time < plan.times && result_.problem == Problem::none && !cancellation_.is_asked(); ++time) {
    send_once(plan, kept.rewind());
  }
}

/// One copy of a job that needs no look ahead: nothing is kept.
void JobPrinter::send_straight_on() {
  send_once(CopyPlan(), job_.input);
}

PrintResult JobPrinter::print() {
  try {
    if (!check()) {
      return result_;
    }
    if (job_.settings.copies == 1 && job_.settings.charset.empty()) {
      send_straight_on();
      return result_;
    }
    const KeptJob kept(job_.input, cancellation_);
    const bool converts = !job_.in_printer_language && !job_.settings.charset.empty();
    if (!converts || text_is_convertible(kept)) {
      send(plan_copies(kept), kept);
    }
  } catch (const std::exception& error) {
    refuse(Problem::system, error.what());
  }
  return result_;
}

}  // namespace

PrintResult print_job(const PrintJob& job, PrintListener& listener,
                      const Cancellation& cancellation) {
  return JobPrinter(job, listener, cancellation).print();
}

std::vector<std::string> form_places(const QueueSettings& queue, const std::string& name) {
  std::vector<std::string> places;
  for (const std::string& directory : queue.form_directories) {
    places.push_back(fs::path(directory) / "fcbe" / name);
  }
  places.push_back("/usr/local/lib/PXLQlp/fcbe/" + name);
  return places;
}

}  // namespace rlx::spooler
