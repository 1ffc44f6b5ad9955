#include "rlx-printer-app/refusal.h"

#include <future>
#include <thread>
#include <utility>

#include "rlx-printer-app/formats.h"

namespace rlx::printer_app {

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
