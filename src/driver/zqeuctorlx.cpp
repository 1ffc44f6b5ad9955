// The filter: options on the command line, a line-printer job on standard input, the printer's job
// on standard output.

#include "driver/job_end.h"
#include "driver/loop_state.h"
#include "driver/main_loop.h"
#include "driver/start_up.h"
#include "job/status.h"
#include "support/process_end.h"

int main(int argc, char** argv) {
  const int status = rlx::start_up(argc, argv);
  if (status != rlx::ST_OK) {
    return status;
  }
  const rlx::JobEnd end = rlx::run_main_loop(rlx::loop_state);
  const int exit_status = rlx::end_job(end, rlx::loop_state.status);
  if (end != rlx::JobEnd::copy_failed) {
    rlx::close_standard_output();
  }
  return exit_status;
}
