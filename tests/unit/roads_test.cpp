// The fast road against the reference: every job must come out the same along both.

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/descriptors.h"
#include "support/filter_state.h"
#include "support/job_generator.h"

namespace rlx::testing {
namespace {

/// Jobs per run; the long suite asks for more through RLX_GENERATED_JOBS.
std::size_t generated_jobs() {
  const char* const wanted = std::getenv("RLX_GENERATED_JOBS");
  return wanted == nullptr ? 3000 : std::strtoul(wanted, nullptr, 10);
}

std::string shown(const GeneratedJob& job) {
  std::string words;
  for (const std::string& option : job.options) {
    words += option + " ";
  }
  return words + "with " + std::to_string(job.input.size()) + " bytes";
}

void expect_same_along_both_roads(const GeneratedJob& job) {
  const JobResult reference = run_job(job.options, job.input, Road::record_by_record);
  const JobResult fast = run_job(job.options, job.input, Road::fast);
  ASSERT_EQ(reference.status, fast.status) << shown(job);
  ASSERT_EQ(reference.messages, fast.messages) << shown(job);
  ASSERT_TRUE(reference.output == fast.output) << shown(job);
}

TEST(Roads, WriteTheSameForGeneratedJobs) {
  const ScratchDirectory scratch;
  write_generator_forms();
  JobGenerator generator(20261120);
  std::size_t written = 0;
  for (std::size_t i = 0; i < generated_jobs(); ++i) {
    const GeneratedJob job = generator.next();
    SCOPED_TRACE(i);
    ASSERT_NO_FATAL_FAILURE(expect_same_along_both_roads(job));
    written += run_job(job.options, job.input).output.size();
  }
  // The jobs do print.
  EXPECT_GT(written, generated_jobs() * 100);
}

/// One kind of unit placed across the border at every offset.
struct BorderCase {
  const char* name;
  std::vector<std::string> options;
  std::size_t border;
  std::string unit;
};

class RoadsAcrossBorder : public ::testing::TestWithParam<BorderCase> {};

TEST_P(RoadsAcrossBorder, WriteTheSame) {
  const ScratchDirectory scratch;
  write_generator_forms();
  const BorderCase& border_case = GetParam();
  for (std::size_t offset = 0; offset <= 48; ++offset) {
    std::string input(border_case.border - 24 - offset, 'x');
    for (int i = 0; i < 12; ++i) {
      input += border_case.unit;
    }
    SCOPED_TRACE(offset);
    ASSERT_NO_FATAL_FAILURE(expect_same_along_both_roads({border_case.options, input}));
  }
}

constexpr std::size_t kBlock = 8192;
constexpr std::size_t kBuffer = 65536;
const std::vector<std::string> kForm{"-p", "forms", "-n", "six"};

INSTANTIATE_TEST_SUITE_P(
    Blocks, RoadsAcrossBorder,
    ::testing::Values(
        BorderCase{"TextAcrossBlock", {}, kBlock, "ab\n"},
        BorderCase{"CharactersAcrossBlock", {}, kBlock, "\xe3\x81\x82\xe3\x81\x84"},
        BorderCase{"LongCharactersAcrossBlock", {}, kBlock, "\xfc\x84\x80\x80\x80\x80"},
        BorderCase{"SwitchesAcrossBlock", {}, kBlock, "\xe3\x81\x82z"},
        BorderCase{"ShiftedAcrossBlock", {}, kBlock, "\x8e\xb1\xe3\x81\x82"},
        BorderCase{"InvalidAcrossBlock", {}, kBlock, "\xe3\x81\x82\xff\x80"},
        BorderCase{"FormLinesAcrossBlock", kForm, kBlock, "y\n"},
        BorderCase{"TextAcrossBuffer", {}, kBuffer, "ab\n"},
        BorderCase{"CharactersAcrossBuffer", {}, kBuffer, "\xe3\x81\x82\xe3\x81\x84"},
        BorderCase{"LongCharactersAcrossBuffer", {}, kBuffer, "\xfc\x84\x80\x80\x80\x80"},
        BorderCase{"SwitchesAcrossBuffer", {}, kBuffer, "\xe3\x81\x82z"},
        BorderCase{"ShiftedAcrossBuffer", {}, kBuffer, "\x8e\xb1\x8e\xe3\x81\x82"},
        BorderCase{"FormLinesAcrossBuffer", kForm, kBuffer, "y\n"},
        BorderCase{"SequencesAcrossBuffer", {}, kBuffer, "\x1c%!\" p"}),
    [](const auto& border_case) { return border_case.param.name; });

}  // namespace
}  // namespace rlx::testing
