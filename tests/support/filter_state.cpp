#include "support/filter_state.h"

#include "driver/job_end.h"
#include "driver/main_loop.h"
#include "driver/start_up.h"
#include "job/exit_status.h"
#include "support/descriptors.h"

namespace rlx::testing {

void reset_filter() {
  renew_filter();
}

int run_job_here(const std::vector<std::string>& options, Road road, bool* passed_through) {
  renew_filter();
  Filter& filter = the_filter();
  filter.loop.fast_road = road == Road::fast;
  std::vector<std::string> words{"filter"};
  words.insert(words.end(), options.begin(), options.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  Status status = start_up(filter, static_cast<int>(words.size()), argv.data());
  if (status == ST_OK) {
    const JobEnd end = run_main_loop(filter.loop);
    status = end_job(filter, end, filter.loop.status);
  }
  if (passed_through != nullptr) {
    *passed_through = filter.loop.passed_through;
  }
  // The settings point into `words`.
  renew_filter();
  return exit_status_of(status);
}

JobResult run_job(const std::vector<std::string>& options, std::string_view input, Road road) {
  const StandardInput standard_input(input);
  return run_job_from_current_input(options, road);
}

JobResult run_job_from_current_input(const std::vector<std::string>& options, Road road) {
  const CaptureDescriptor output(1);
  const CaptureDescriptor messages(2);
  JobResult result;
  result.status = run_job_here(options, road, &result.passed_through);
  result.output = output.text();
  result.messages = messages.text();
  return result;
}

}  // namespace rlx::testing
