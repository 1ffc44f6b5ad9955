#include "driver/job_end.h"

namespace rlx {

namespace {

Status write_what_is_left(Filter& filter) {
  const Status status = filter.output.framed() ? out_end_frame(filter.frame_writer) : ST_OK;
  end_page_data(filter.page);
  flush_output(filter.writer);
  return status;
}

void release(Filter& filter) {
  fonts_close(filter.fonts);
  if (filter.job.font_library_loaded != 0) {
    fal_unload(filter.library);
  }
  free_page_buffers(filter.page);
}

}  // namespace

Status end_job(Filter& filter, JobEnd end, Status status) {
  if (end == JobEnd::flush) {
    const Status written = write_what_is_left(filter);
    status = status != ST_OK ? status : written;
  }
  release(filter);
  return status;
}

}  // namespace rlx
