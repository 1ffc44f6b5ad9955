#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/the_filter.h"

namespace rlx::testing {

/// Makes the_filter() (support/the_filter.h) a fresh one, as a new process has it.
void reset_filter();

/// Starts every test with reset_filter().
class FilterTest : public ::testing::Test {
 protected:
  FilterTest() { reset_filter(); }
};

/// What a job did when it ran inside the test process.
struct JobResult {
  int status = 0;
  std::string output;
  std::string messages;
  bool passed_through = false;  ///< the job turned out to be in the printer's language
};

/// How run_job converts: along both roads, or every command by itself.
enum class Road { fast, record_by_record };

/// Runs a whole job inside the test process with the descriptors as they are, from the options
/// (without the program name, which is "filter") to the released buffers.
/// @param passed_through  unless it is null: where to say whether the job was passed through.
/// @return its exit status.
int run_job_here(const std::vector<std::string>& options, Road road = Road::fast,
                 bool* passed_through = nullptr);

/// The same with what it writes caught. Not for jobs that end the process from inside.
JobResult run_job_from_current_input(const std::vector<std::string>& options,
                                     Road road = Road::fast);

/// The same for a job that is given.
JobResult run_job(const std::vector<std::string>& options, std::string_view input,
                  Road road = Road::fast);

}  // namespace rlx::testing
