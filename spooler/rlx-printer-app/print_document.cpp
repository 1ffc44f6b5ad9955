#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "rlx-printer-app/formats.h"
#include "rlx-printer-app/job_turns.h"
#include "rlx-printer-app/print_document.h"
#include "rlx-printer-app/printer_device.h"
#include "rlx-printer-app/printer_kinds.h"
#include "rlx-printer-app/printer_options.h"
#include "running/print_job.h"

namespace rlx::printer_app {

namespace {

using spooler::Problem;

/// A cancelled job may take so long until the printer has what was on its way.
constexpr int kCancelMilliseconds = 30000;
constexpr int kLookMilliseconds = 100;
constexpr std::chrono::milliseconds kLeastTime(50);

/// Tells PAPPL of the job's pages and command lines.
class Listener : public spooler::PrintListener {
 public:
  Listener(pappl_job_t* job, std::vector<std::string>& commands) : job_(job), commands_(commands) {}

  void command_line(const std::string& words) override {
    commands_.push_back(words);
    papplLogJob(job_, PAPPL_LOGLEVEL_INFO, "Running %s", words.c_str());
  }
  void page(std::uint64_t /*number*/, unsigned copies) override {
    papplJobSetImpressionsCompleted(job_, static_cast<int>(copies));
  }

 private:
  pappl_job_t* job_;
  std::vector<std::string>& commands_;
};

/// Looks whether the job was cancelled, and gives the printer up when it takes too long then.
class CancelWatch {
 public:
  explicit CancelWatch(pappl_job_t* job) : thread_([this, job] { watch(job); }) {}
  ~CancelWatch() {
    done_.ask();
    thread_.join();
  }
  CancelWatch(const CancelWatch&) = delete;
  CancelWatch& operator=(const CancelWatch&) = delete;

  const spooler::Cancellation& cancelled() const { return cancelled_; }
  const spooler::Cancellation& give_up() const { return give_up_; }

 private:
  void watch(pappl_job_t* job) {
    while (!papplJobIsCanceled(job)) {
      if (!done_.pause(kLookMilliseconds)) {
        return;
      }
    }
    cancelled_.ask();
    if (done_.pause(kCancelMilliseconds)) {
      give_up_.ask();
    }
  }

  spooler::Cancellation done_;
  spooler::Cancellation cancelled_;
  spooler::Cancellation give_up_;
  std::thread thread_;
};

/// Hands what comes out of a pipe to the printer. It connects when there is something to hand on,
/// so a job with a fault never reaches the printer.
class DeviceFeeder {
 public:
  DeviceFeeder(spooler::Descriptor from, JobDevice& device)
      : from_(std::move(from)), thread_([this, &device] { feed(device); }) {}
  ~DeviceFeeder() { join(); }
  DeviceFeeder(const DeviceFeeder&) = delete;
  DeviceFeeder& operator=(const DeviceFeeder&) = delete;

  /// Waits until all was handed on. @return false when the printer did not take all.
  bool finish() {
    join();
    return taken_;
  }

 private:
  void join() {
    if (thread_.joinable()) {
      thread_.join();
    }
  }

  void feed(JobDevice& device) {
    std::vector<std::uint8_t> portion(std::size_t{1} << 16);
    std::size_t count = spooler::read_some(from_.number(), portion, "the filter's output");
    if (count == 0) {
      taken_ = true;
      return;
    }
    bool taken = device.open();
    for (; taken && count > 0;
         count = spooler::read_some(from_.number(), portion, "the filter's output")) {
      taken = device.write(std::span(portion).first(count));
      if (!taken) {
        break;
      }
    }
    // Whoever writes learns that nobody reads any more.
    from_.reset();
    taken_ = taken && device.finish();
  }

  spooler::Descriptor from_;
  bool taken_ = false;
  std::thread thread_;
};

void abort_job(pappl_job_t* job, pappl_jreason_t reason, const std::string& words) {
  papplJobSetReasons(job, reason, PAPPL_JREASON_NONE);
  papplJobSetMessage(job, "%s", words.c_str());
  papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "%s", words.c_str());
}

/// What a job's state says beside its message.
pappl_jreason_t reason_of(Problem problem) {
  switch (problem) {
    case Problem::wrong_text:
    case Problem::job:
      return PAPPL_JREASON_DOCUMENT_FORMAT_ERROR;
    case Problem::wrong_option:
    case Problem::form_missing:
    case Problem::form_wrong:
      return PAPPL_JREASON_DOCUMENT_UNPRINTABLE_ERROR;
    default:
      return PAPPL_JREASON_ABORTED_BY_SYSTEM;
  }
}

/// What the job and its printer ask for. @return false when that cannot be; the job then has the
/// reason.
bool read_settings(pappl_job_t* job, const Application& application, spooler::PrintJob& print,
                   JobRecord& record) {
  pappl_printer_t* const printer = papplJobGetPrinter(job);
  const PrinterKind* const kind = find_printer_kind(papplPrinterGetDriverName(printer));
  if (kind == nullptr) {
    abort_job(job, PAPPL_JREASON_ABORTED_BY_SYSTEM, "this printer is of no known kind");
    return false;
  }
  const auto faults = read_print_options(job, print.settings);
  if (!faults.empty()) {
    abort_job(job, PAPPL_JREASON_DOCUMENT_UNPRINTABLE_ERROR,
              text_of(faults.front()) + "; nothing was printed");
    return false;
  }
  record.kind = kind->name;
  record.resolution = resolution_of(job);
  record.settings = print.settings;
  print.queue = queue_settings(*kind, record.resolution, application.form_folder);
  print.in_printer_language = papplJobGetFormat(job) == std::string(kPrinterLanguage);
  print.filter = application.filter;
  print.form_checker = application.form_checker;
  return true;
}

/// Runs the job with its output going to the device. @return how that went.
spooler::PrintResult print_to_device(pappl_job_t* job, pappl_device_t* device,
                                     spooler::PrintJob& print, JobRecord& record,
                                     std::optional<AtPrinter>& at_printer) {
  Listener listener(job, record.commands);
  CancelWatch watch(job);
  JobDevice printer(job, device, watch.give_up(), at_printer);
  spooler::Pipe pipe = spooler::make_pipe();
  DeviceFeeder feeder(std::move(pipe.read_end), printer);
  print.output = pipe.write_end.number();
  spooler::PrintResult result = print_job(print, listener, watch.cancelled());
  pipe.write_end.reset();
  const bool taken = feeder.finish();
  if (!taken && result.problem == Problem::none) {
    result.problem = Problem::output;
  }
  if (result.problem == Problem::output) {
    result.words = "the printer did not take the job to its end: " + printer.words() + " after " +
                   std::to_string(result.bytes) + " bytes had been made; print it again";
  }
  return result;
}

void log_end(pappl_job_t* job, const spooler::PrintResult& result) {
  papplLogJob(job, PAPPL_LOGLEVEL_INFO, "%llu pages, %llu impressions, %llu bytes",
              static_cast<unsigned long long>(result.count.pages),
              static_cast<unsigned long long>(result.count.impressions),
              static_cast<unsigned long long>(result.bytes));
}

bool print_in_turn(pappl_job_t* job, pappl_device_t* device, const Application& application,
                   JobRecord& record, std::optional<AtPrinter>& at_printer) {
  spooler::PrintJob print;
  if (!read_settings(job, application, print, record)) {
    return false;
  }
  // One that was cancelled as it began may have lost it.
  const char* const path = papplJobGetFilename(job);
  errno = ENOENT;
  const spooler::Descriptor document(
      path == nullptr ? -1 : open(path, O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (!document.is_open()) {
    abort_job(job, PAPPL_JREASON_ABORTED_BY_SYSTEM,
              std::string("the document cannot be read: ") + std::strerror(errno));
    return false;
  }
  print.input = document.number();
  const spooler::PrintResult result = print_to_device(job, device, print, record, at_printer);
  log_end(job, result);
  record.pages = result.count.pages;
  record.impressions = result.count.impressions;
  record.bytes = result.bytes;
  if (result.problem != Problem::none && !papplJobIsCanceled(job)) {
    abort_job(job, reason_of(result.problem), result.words);
    return false;
  }
  return true;
}

/// What the web page shows of the job later; it prints without, too.
void keep_record(pappl_job_t* job, bool printed, const Application& application,
                 JobRecord& record) {
  const char* const message = printed ? nullptr : papplJobGetMessage(job);
  record.format = papplJobGetFormat(job);
  record.words = message == nullptr ? "" : message;
  if (application.records != nullptr &&
      !application.records->keep(papplPrinterGetID(papplJobGetPrinter(job)), papplJobGetID(job),
                                 record)) {
    papplLogJob(job, PAPPL_LOGLEVEL_WARN, "The job's record cannot be kept: %s",
                std::strerror(errno));
  }
}

/// A job's turn at its printer, from the wait for it to its end.
class Turn {
 public:
  Turn(JobTurns& turns, int printer_id, int job_id)
      : turns_(turns), printer_id_(printer_id), job_id_(job_id) {
    turns_.wait(printer_id_, job_id_);
  }
  ~Turn() { turns_.leave(printer_id_, job_id_); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  JobTurns& turns_;
  int printer_id_;
  int job_id_;
};

}  // namespace

bool print_document(pappl_job_t* job, pappl_device_t* device, void* data) {
  const auto& application = *static_cast<const Application*>(data);
  static JobTurns turns;
  const int printer_id = papplPrinterGetID(papplJobGetPrinter(job));
  const int job_id = papplJobGetID(job);
  if (!turns.enter(printer_id, job_id)) {
    // A second thread for the same job: the first one ends it.
    papplLogJob(job, PAPPL_LOGLEVEL_DEBUG, "Started twice; once is enough.");
    pthread_exit(nullptr);
  }
  const auto begin = std::chrono::steady_clock::now();
  const Turn turn(turns, printer_id, job_id);
  say_nothing_of_waiting(job);
  application.queue->begin(printer_id, job_id);
  bool printed = false;
  JobRecord record;
  // A server that is asked to end waits until the job's end is noted, or it would print it again.
  std::optional<AtPrinter> at_printer;
  try {
    printed = print_in_turn(job, device, application, record, at_printer);
  } catch (const std::exception& error) {
    abort_job(job, PAPPL_JREASON_ABORTED_BY_SYSTEM, error.what());
  }
  if (printed && papplJobGetMessage(job) != nullptr) {
    // It had to wait for its printer.
    papplJobSetMessage(job, papplJobIsCanceled(job) ? "Job canceled." : "Job completed.");
  }
  keep_record(job, printed, application, record);
  // A second thread that is still on its way here must find the job not ended.
  std::this_thread::sleep_until(begin + kLeastTime);
  // Noted here and not when PAPPL tells of it: that takes the disk's time, between this job's place
  // and the next one's.
  const int ended = printed ? IPP_JSTATE_COMPLETED : IPP_JSTATE_ABORTED;
  application.journal->note_ended(printer_id, job_id,
                                  papplJobIsCanceled(job) ? int{IPP_JSTATE_CANCELED} : ended);
  application.queue->end(printer_id, job_id);
  return printed;
}

}  // namespace rlx::printer_app
