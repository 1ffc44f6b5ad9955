#include "driver/job_end.h"

#include "fonts/fal_library.h"
#include "fonts/font_sets.h"
#include "input/framed_transfer.h"
#include "job/settings.h"
#include "job/status.h"
#include "output/byte_writer.h"
#include "output/page_writer.h"

namespace rlx {

namespace {

int first_failure(int status, int later_status) {
  return status != ST_OK ? status : later_status;
}

int write_what_is_left(int status) {
  if (job_settings.framed_output != 0) {
    status = first_failure(status, out_end_frame());
  }
  status = first_failure(status, out_page_data(0, nullptr));
  return first_failure(status, flush_output());
}

void release() {
  fonts_close();
  if (job_settings.font_library_loaded != 0) {
    fal_unload();
  }
  free_page_buffers();
}

}  // namespace

int end_job(JobEnd end, int status) {
  if (end == JobEnd::flush) {
    status = write_what_is_left(status);
  }
  release();
  return status;
}

}  // namespace rlx
