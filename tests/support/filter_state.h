#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace rlx::testing {

/// Puts every module of the filter back to the state of a new process, program name "filter", and
/// allocates the work buffers.
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
};

/// How run_job converts: along both roads, or every command by itself.
enum class Road { fast, record_by_record };

/// Runs a whole job inside the test process, from the options (without the program name, which is
/// "filter") to the released buffers. Not for jobs that end the process from inside.
JobResult run_job(const std::vector<std::string>& options, std::string_view input,
                  Road road = Road::fast);

}  // namespace rlx::testing
