// Jobs of any length: the filter's memory does not grow with them, and every byte comes out in its
// place. `RLX_LARGE_JOB=BYTES` sets how long the long ones are; with more than 4 GiB every counter
// of 32 bits that there was would begin anew. Without it they are short enough for every run.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "sizes/large_jobs.h"
#include "sizes/large_run.h"
#include "support/descriptors.h"

namespace rlx::testing {
namespace {

constexpr std::uint64_t kSmallJob = std::uint64_t{1} << 20U;
constexpr std::uint64_t kMostMemory = 4096;  ///< KiB
constexpr std::size_t kMostCountedData = 9999999;

/// The bytes of a large job that the environment asks for.
std::optional<std::uint64_t> bytes_asked_for() {
  const char* const bytes = std::getenv("RLX_LARGE_JOB");
  return bytes == nullptr ? std::nullopt : std::optional(std::strtoull(bytes, nullptr, 10));
}

void expect_right(const LargeRun& run) {
  EXPECT_EQ(run.fault, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.messages, "");
  // Not one page more, touched or not, than any job has.
  EXPECT_GT(run.memory, 0U);
  EXPECT_LE(run.memory, kMostMemory);
}

/// The filter holds the same address space after both, so it has asked for nothing in between.
void expect_constant_memory(const LargeRun& small, const LargeRun& large) {
  EXPECT_GT(small.address_space, 0U);
  EXPECT_EQ(large.address_space, small.address_space);
}

/// One line a job, for the long run's log.
void tell(const std::string& name, std::uint64_t bytes, const LargeRun& run) {
  ::testing::Test::RecordProperty("bytes_printed", std::to_string(run.bytes_printed));
  if (bytes_asked_for()) {
    std::printf("%-26s %12llu bytes in %14llu bytes out %6llu KiB at most\n", name.c_str(),
                static_cast<unsigned long long>(bytes),
                static_cast<unsigned long long>(run.bytes_printed),
                static_cast<unsigned long long>(run.memory));
  }
}

LargeRun run_kind(const LargeJobKind& kind, std::uint64_t bytes) {
  const std::unique_ptr<LargeJob> fed = kind.create();
  const std::unique_ptr<LargeJob> told = kind.create();
  LargeRun run = run_on_large_job(kind.options, *fed, *told, bytes);
  tell(kind.name, bytes, run);
  return run;
}

class LargeJobs : public ::testing::TestWithParam<LargeJobKind> {};

TEST_P(LargeJobs, ArePrintedWholeInConstantMemory) {
  const ScratchDirectory scratch;
  write_file(std::string("forms/fcbe/") + kLargeJobForm, kLargeJobFormFile);
  const LargeRun small = run_kind(GetParam(), kSmallJob);
  expect_right(small);
  const LargeRun large =
      run_kind(GetParam(), bytes_asked_for().value_or(GetParam().short_run_bytes));
  expect_right(large);
  expect_constant_memory(small, large);
}

std::string name_of(const ::testing::TestParamInfo<LargeJobKind>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Kinds, LargeJobs, ::testing::ValuesIn(large_job_kinds()), name_of);

LargeRun run_with_parameters(std::size_t bytes, std::uint64_t units) {
  const std::unique_ptr<LargeJob> fed = job_of_long_parameters(bytes);
  const std::unique_ptr<LargeJob> told = job_of_long_parameters(bytes);
  LargeRun run = run_on_large_job({"-q"}, *fed, *told, bytes * units);
  tell("parameters of " + std::to_string(bytes), bytes * units, run);
  return run;
}

/// Ten sequences, one of each shape, with parameters of up to 100 MB.
TEST(LargeParameters, AreConsumedInConstantMemory) {
  constexpr std::size_t kShapes = 10;
  const LargeRun small = run_with_parameters(10000, kShapes);
  expect_right(small);
  const LargeRun large = run_with_parameters(bytes_asked_for() ? 100000000 : 5000000, kShapes);
  expect_right(large);
  expect_constant_memory(small, large);
}

LargeRun run_with_data(std::size_t bytes, std::uint64_t units) {
  const std::unique_ptr<LargeJob> fed = job_of_counted_data(bytes);
  const std::unique_ptr<LargeJob> told = job_of_counted_data(bytes);
  LargeRun run = run_on_large_job({"-q"}, *fed, *told, bytes * units);
  tell("counted data of " + std::to_string(bytes), bytes * units, run);
  return run;
}

/// Seven digits are the most that a count may have.
TEST(LargeCountedData, IsPrintedInConstantMemory) {
  const LargeRun small = run_with_data(10000, 2);
  expect_right(small);
  const LargeRun large =
      run_with_data(kMostCountedData, bytes_asked_for().value_or(0) / kMostCountedData + 4);
  expect_right(large);
  expect_constant_memory(small, large);
}

}  // namespace
}  // namespace rlx::testing
