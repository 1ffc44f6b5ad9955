#include "driver/start_up.h"

#include "driver/capabilities.h"
#include "driver/loop_state.h"
#include "driver/options.h"
#include "fonts/fal_library.h"
#include "fonts/font_sets.h"
#include "fonts/g1_gaiji_file.h"
#include "forms/fcb.h"
#include "input/raw_input.h"
#include "job/settings.h"
#include "job/status.h"
#include "output/byte_writer.h"
#include "output/line_spacing.h"
#include "output/page_writer.h"

namespace rlx {

namespace {

/// Loads the form of -n, if there is one.
int load_initial_form(LoopState& loop) {
  if (job_settings.fcb_name == nullptr) {
    return ST_OK;
  }
  int status = fcb_load(job_settings.fcb_name, loop.initial_store, resource_directories);
  if (status == ST_OK) {
    status = top_of_form(loop.initial_store, loop.pending_vertical_bytes);
  }
  if (status == ST_OK) {
    loop.fcb_active = true;
    loop.initial_fcb_exists = true;
  }
  return status;
}

int set_up_fonts() {
  job_settings.font_library_loaded = fal_load() == ST_OK ? 1 : 0;
  // The range is checked here; which character lies in it will be for the classifier to say.
  G1GaijiRange range;
  const int status = g1gaiji_load(range);
  return status != ST_OK ? kExitFailure
                         : fonts_open(job_settings.font_variant, job_settings.high_resolution_fonts,
                                      1, job_settings.capability_g);
}

}  // namespace

int start_up(int argc, char** argv) {
  int status = parse_options(argc, argv);
  if (status == ST_OK) {
    status = load_initial_form(loop_state);
  }
  if (status != ST_OK) {
    return status;
  }
  choose_resolution();
  query_printer();
  status = set_up_fonts();
  if (status == ST_OK) {
    status = allocate_page_buffers();
  }
  if (status == ST_OK) {
    pitch_sequences();
    call_before_waiting(flush_finished_pages);
  }
  return status;
}

}  // namespace rlx
