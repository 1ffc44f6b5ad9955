#pragma once

#include "driver/capabilities.h"
#include "driver/loop_state.h"
#include "fonts/fal_library.h"
#include "fonts/font_sets.h"
#include "fonts/gaiji.h"
#include "harness.h"
#include "input/classifier.h"
#include "input/framed_transfer.h"
#include "input/raw_input.h"
#include "input/tokenizer.h"
#include "job/print_conditions.h"
#include "job/settings.h"
#include "output/byte_writer.h"
#include "output/carried_settings.h"
#include "output/job_header.h"
#include "output/line_spacing.h"
#include "output/page_writer.h"
#include "support/environment_file.h"

namespace rlx::fuzzing {

/// Puts the readers of the input back to the state of a new process.
inline void reset_input() {
  reset_raw_input();
  reset_framed_transfer();
  reset_tokenizer();
  reset_classifier();
}

/// Puts every module back to the state of a new process that has its work buffers.
inline void reset_filter() {
  reset_job_settings();
  reset_print_conditions();
  reset_environment_file();
  reset_capabilities();
  reset_input();
  reset_byte_writer();
  reset_job_header();
  reset_line_spacing();
  reset_fal_library();
  reset_font_sets();
  reset_gaiji();
  reset_loop_state();
  job_settings.program_name = "filter";
  require(allocate_page_buffers() == 0, "no memory");
  reset_carried_settings();
  reset_page_writer();
}

}  // namespace rlx::fuzzing
