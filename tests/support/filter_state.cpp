#include "support/filter_state.h"

#include "driver/capabilities.h"
#include "driver/job_end.h"
#include "driver/loop_state.h"
#include "driver/main_loop.h"
#include "driver/start_up.h"
#include "fonts/fal_library.h"
#include "fonts/font_sets.h"
#include "fonts/gaiji.h"
#include "input/classifier.h"
#include "input/framed_transfer.h"
#include "input/raw_input.h"
#include "input/tokenizer.h"
#include "job/print_conditions.h"
#include "job/settings.h"
#include "job/status.h"
#include "output/byte_writer.h"
#include "output/carried_settings.h"
#include "output/job_header.h"
#include "output/line_spacing.h"
#include "output/page_writer.h"
#include "support/descriptors.h"
#include "support/environment_file.h"

namespace rlx::testing {

void reset_filter() {
  reset_job_settings();
  reset_print_conditions();
  reset_environment_file();
  reset_capabilities();
  reset_raw_input();
  reset_framed_transfer();
  reset_tokenizer();
  reset_classifier();
  reset_byte_writer();
  reset_carried_settings();
  reset_page_writer();
  reset_job_header();
  reset_line_spacing();
  fal_unload();
  reset_fal_library();
  reset_font_sets();
  reset_gaiji();
  reset_loop_state();
  job_settings.program_name = "filter";
  EXPECT_EQ(allocate_page_buffers(), ST_OK);
  reset_carried_settings();
  reset_page_writer();
}

int run_job_here(const std::vector<std::string>& options, Road road) {
  reset_filter();
  loop_state.fast_road = road == Road::fast;
  std::vector<std::string> words{"filter"};
  words.insert(words.end(), options.begin(), options.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  int status = start_up(static_cast<int>(words.size()), argv.data());
  if (status == ST_OK) {
    const JobEnd end = run_main_loop(loop_state);
    status = end_job(end, loop_state.status);
  }
  // The settings point into `words`.
  reset_filter();
  return status;
}

JobResult run_job(const std::vector<std::string>& options, std::string_view input, Road road) {
  const StandardInput standard_input(input);
  return run_job_from_current_input(options, road);
}

JobResult run_job_from_current_input(const std::vector<std::string>& options, Road road) {
  const CaptureDescriptor output(1);
  const CaptureDescriptor messages(2);
  JobResult result;
  result.status = run_job_here(options, road);
  result.output = output.text();
  result.messages = messages.text();
  return result;
}

}  // namespace rlx::testing
