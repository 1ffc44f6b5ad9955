#include "mapping/own_conditions_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

#include "input/byte_source.h"
#include "job/command_record.h"
#include "job/status.h"
#include "support/descriptors.h"
#include "support/escaped_bytes.h"
#include "support/filter_state.h"
#include "support/input_stream.h"
#include "support/job_generator.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;
namespace fs = std::filesystem;

std::span<const std::uint8_t> as_bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool scan_finds(std::string_view job, std::size_t portion = 0) {
  OwnConditionsScan scan;
  const std::size_t step = portion == 0 ? std::max<std::size_t>(job.size(), 1) : portion;
  for (std::size_t at = 0; at < job.size(); at += step) {
    scan.take(as_bytes(job.substr(at, step)));
  }
  return scan.found();
}

/// What the filter's own reading of a job finds: 482, or 520, behind which nothing is read any
/// more.
bool filter_finds(const std::string& job, const std::vector<std::string>& options) {
  reset_filter();
  const bool extended = std::ranges::any_of(
      options, [](const std::string& option) { return option == "-P" || option == "-C"; });
  the_filter().command_line.extended_parameters = extended ? 1 : 0;
  const StandardInput input(job);
  CommandRecord& record = reused_record();
  while (zqclass(the_filter().classifier, &record) == ST_OK) {
    if (record.code == CMD_Q_NL_SP || record.code == CMD_Q_BQ_SL) {
      return true;
    }
    for (std::uint8_t byte = 0; record.pending > 0; --record.pending) {
      if (zqgetc(the_filter().source, 0, &byte) != ST_OK) {
        return false;
      }
    }
  }
  return false;
}

TEST(OwnConditionsScan, FindsPrintConditionCommands) {
  EXPECT_TRUE(scan_finds("\033Q1;16 n0123456789abcdef"));
  EXPECT_TRUE(scan_finds("TEXT\n\033Q1;2 n  TEXT\f"));
  EXPECT_TRUE(scan_finds("\033Q n"));
  EXPECT_TRUE(scan_finds("\033Q0;0 n"));
  EXPECT_TRUE(scan_finds("\033Q12;0 n"));
}

TEST(OwnConditionsScan, FindsAJobInThePrintersLanguage) {
  EXPECT_TRUE(scan_finds("\033Q0;0000000043/`%%%"));
  EXPECT_TRUE(scan_finds("\033Q/`"));
  EXPECT_TRUE(scan_finds("\033Q2/`"));
}

TEST(OwnConditionsScan, FindsNothingElse) {
  for (const char* job :
       {"", "TEXT", "\033", "\033Q", "\033Q1;100 ", "\033Q1;100n", "\033Q1;100!n", "\033Q1;100 m",
        "\033Q2;13 n..0......NAME", "\033Q9;1 n.", "\033[1 n", "\034Q1 n", "Q1 n", "\033R Q1 n",
        "\033Q1;5!`", "\033Q1/a", "\033Qn", "\033Q`", "\033Q1 A n"}) {
    EXPECT_FALSE(scan_finds(job)) << encode_escaped_line(job);
  }
}

TEST(OwnConditionsScan, FindsACommandBehindWhatLooksLikeTheBeginOfOne) {
  for (const char* before : {"\033", "\033\033", "\033Q", "\033Q1;", "\033Q\033", "\033Q2;13 n",
                             "\033Q1;1!\x7f", "\033Q2;0!\x7f", "\033[", "\034\033", "\xe3\033"}) {
    EXPECT_TRUE(scan_finds(std::string(before) + "\033Q1;2 n  ")) << encode_escaped_line(before);
    EXPECT_TRUE(scan_finds(std::string(before) + "\033Q0;0000000043/`"))
        << encode_escaped_line(before);
  }
}

TEST(OwnConditionsScan, StaysWithWhatItFound) {
  EXPECT_TRUE(scan_finds("\033Q1;2 n  \033Q2;13 n..0......NAME\033Q1;1!A TEXT"));
}

/// At every division into two portions, and into portions of one size.
void expect_found_in_any_portions(const std::string& job) {
  ASSERT_TRUE(scan_finds(job));
  for (std::size_t portion = 1; portion <= std::min<std::size_t>(job.size(), 9); ++portion) {
    ASSERT_TRUE(scan_finds(job, portion)) << portion;
  }
  const std::size_t step = std::max<std::size_t>(job.size() / 300, 1);
  for (std::size_t cut = 0; cut <= job.size(); cut += step) {
    OwnConditionsScan scan;
    scan.take(as_bytes(std::string_view(job).substr(0, cut)));
    scan.take(as_bytes(std::string_view(job).substr(cut)));
    ASSERT_TRUE(scan.found()) << cut;
  }
}

TEST(OwnConditionsScan, FindsWhatTheFilterFindsInGoldenJobs) {
  std::size_t found = 0;
  std::size_t jobs = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(RLX_CASES_DIRECTORY)) {
    const fs::path& folder = entry.path();
    SCOPED_TRACE(folder.filename());
    // Frames are the affair of other hosts: a queue has no option for them.
    if (folder.filename().string().starts_with("framed") || !fs::exists(folder / "stdin.esc")) {
      continue;
    }
    const std::string job = decode_escaped(read_file(folder / "stdin.esc")).value();
    const std::string options = fs::exists(folder / "options") ? read_file(folder / "options") : "";
    ++jobs;
    if (filter_finds(job, {options.find("-P") != std::string::npos ? "-P" : ""})) {
      ++found;
      ASSERT_NO_FATAL_FAILURE(expect_found_in_any_portions(job));
    }
  }
  EXPECT_GT(jobs, 80U);
  EXPECT_GT(found, 30U);
  EXPECT_LT(found, jobs);
}

class OwnConditionsOfGeneratedJobs : public ::testing::TestWithParam<std::uint64_t> {};

TEST_P(OwnConditionsOfGeneratedJobs, AreFound) {
  constexpr std::size_t kJobs = 2500;
  JobGenerator generator(20261124 + GetParam());
  std::size_t found = 0;
  std::size_t plain = 0;
  for (std::size_t i = 0; i < kJobs;) {
    const GeneratedJob job = generator.next();
    if (std::ranges::find(job.options, "-d") != job.options.end()) {
      continue;
    }
    SCOPED_TRACE(i++);
    if (filter_finds(job.input, job.options)) {
      ++found;
      ASSERT_TRUE(scan_finds(job.input));
      if (i % 20 == 0) {
        ASSERT_NO_FATAL_FAILURE(expect_found_in_any_portions(job.input));
      }
    } else {
      plain += scan_finds(job.input) ? 0U : 1U;
    }
  }
  EXPECT_GT(found, kJobs / 10);
  // Most jobs without one are known to be without one.
  EXPECT_GT(plain, kJobs / 10);
}

INSTANTIATE_TEST_SUITE_P(Seeds, OwnConditionsOfGeneratedJobs,
                         ::testing::Range<std::uint64_t>(0, 4));

}  // namespace
}  // namespace rlx::spooler
