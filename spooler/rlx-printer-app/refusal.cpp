#include "rlx-printer-app/refusal.h"

#include <cstring>
#include <future>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "rlx-printer-app/formats.h"

namespace rlx::printer_app {

namespace {

/// Jobs that could not be noted, by printer and number.
std::mutex changing;
std::map<std::pair<int, int>, int> unnoted;

std::pair<int, int> number_of(pappl_job_t* job) {
  return {papplPrinterGetID(papplJobGetPrinter(job)), papplJobGetID(job)};
}

}  // namespace

void set_unnoted(pappl_job_t* job, int error) {
  const std::lock_guard lock(changing);
  unnoted[number_of(job)] = error;
}

int take_unnoted(pappl_job_t* job) {
  int error = 0;
  {
    const std::lock_guard lock(changing);
    if (const auto found = unnoted.find(number_of(job)); found != unnoted.end()) {
      error = found->second;
      unnoted.erase(found);
    }
  }
  if (error != 0) {
    papplJobSetReasons(job, PAPPL_JREASON_ABORTED_BY_SYSTEM, PAPPL_JREASON_NONE);
    papplJobSetMessage(job, "the job cannot be kept: %s; nothing was printed, submit it again",
                       std::strerror(error));
  }
  return error;
}

void refuse_format(pappl_job_t* job) {
  if (is_printable(papplJobGetFormat(job))) {
    return;
  }
  // The event's thread has the job's lock, so this is for another one, which has it as soon as the
  // event is over. The job cannot be gone by then: PAPPL has yet to open its printer.
  std::promise<void> begun;
  const std::future<void> has_begun = begun.get_future();
  std::thread([job, promise = std::move(begun)]() mutable {
    promise.set_value();
    papplJobSetReasons(job, PAPPL_JREASON_DOCUMENT_FORMAT_ERROR, PAPPL_JREASON_NONE);
    papplJobSetMessage(job, "%s", kNotPrintable);
    papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "%s", kNotPrintable);
  }).detach();
  has_begun.wait();
}

bool print_no_picture(pappl_job_t* /*job*/, pappl_device_t* /*device*/, void* /*data*/) {
  return false;
}

}  // namespace rlx::printer_app
