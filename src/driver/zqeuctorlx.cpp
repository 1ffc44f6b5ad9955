// The filter: options on the command line, a line-printer job on standard input, the printer's job
// on standard output.

#include <cstddef>
#include <new>

#include "driver/filter.h"
#include "driver/job_end.h"
#include "driver/main_loop.h"
#include "driver/start_up.h"
#include "job/exit_status.h"
#include "support/process_end.h"

namespace {

/// Where the filter stands: static memory, so that nothing is allocated for it. It is constructed
/// in place, and its buffers are left alone, so that a start costs next to nothing.
alignas(rlx::Filter) std::byte filter_storage[sizeof(rlx::Filter)];

}  // namespace

int main(int argc, char** argv) {
  rlx::Filter& filter = *new (filter_storage) rlx::Filter;
  const rlx::Status status = rlx::start_up(filter, argc, argv);
  if (status != rlx::ST_OK) {
    return rlx::exit_status_of(status);
  }
  const rlx::JobEnd end = rlx::run_main_loop(filter.loop);
  const rlx::Status end_status = rlx::end_job(filter, end, filter.loop.status);
  if (end != rlx::JobEnd::copy_failed) {
    rlx::close_standard_output();
  }
  return rlx::exit_status_of(end_status);
}
