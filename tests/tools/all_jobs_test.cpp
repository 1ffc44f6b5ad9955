// The reader on all that the filter writes in the tests: nothing is wrong with it, and no byte is
// lost. The fuzz target of whole jobs does the same with its corpus.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "rlx_reader/job_reader.h"
#include "support/descriptors.h"
#include "support/escaped_bytes.h"
#include "support/filter_state.h"
#include "support/job_generator.h"
#include "tools/dump_job.h"
#include "tools/read_job.h"
#include "tools/sample_streams.h"

namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

struct GoldenJob {
  std::string name;
  std::string output;
  int status = 0;
};

std::vector<GoldenJob> golden_jobs() {
  std::vector<GoldenJob> jobs;
  for (const fs::directory_entry& entry : fs::directory_iterator(RLX_CASES_DIRECTORY)) {
    const fs::path& folder = entry.path();
    GoldenJob job{folder.filename(), "", 0};
    if (fs::exists(folder / "stdout.esc")) {
      job.output = decode_escaped(read_file(folder / "stdout.esc")).value();
    }
    if (fs::exists(folder / "status")) {
      job.status = std::stoi(read_file(folder / "status"));
    }
    jobs.push_back(std::move(job));
  }
  std::ranges::sort(jobs, {}, &GoldenJob::name);
  return jobs;
}

bool is_passed_through(const GoldenJob& job) {
  return job.name.find("pass_through") != std::string::npos;
}

/// The output is read to its last byte, and nothing is wrong with it.
void expect_good(const std::string& output, bool framed) {
  const FoundJob found = read_job(output);
  ASSERT_EQ(shown_faults(found), "");
  ASSERT_EQ(found.misdeed, "");
  ASSERT_TRUE(found.rebuilt == output);
  ASSERT_EQ(found.outside, "");
  ASSERT_EQ(found.blocks.empty() || !framed, true);
  ASSERT_EQ(found.frames.empty() || framed, true);
}

TEST(AllJobs, GoldenOnesAreGood) {
  std::size_t read = 0;
  for (const GoldenJob& job : golden_jobs()) {
    SCOPED_TRACE(job.name);
    if (job.status == 0 && !is_passed_through(job)) {
      ASSERT_NO_FATAL_FAILURE(expect_good(job.output, job.name.starts_with("framed")));
      ++read;
    }
  }
  EXPECT_GT(read, 100U);
}

/// 10,000 jobs, some of them in frames, in as many parts as there are tests.
class GeneratedJobs : public ::testing::TestWithParam<std::uint64_t> {
 protected:
  static constexpr std::size_t kParts = 8;

  static std::size_t jobs() {
    const char* const wanted = std::getenv("RLX_CHECKED_JOBS");
    return (wanted == nullptr ? 10000 : std::strtoul(wanted, nullptr, 10)) / kParts;
  }
};

bool has_option(const GeneratedJob& job, const char* option) {
  return std::ranges::find(job.options, option) != job.options.end();
}

TEST_P(GeneratedJobs, AreGood) {
  const ScratchDirectory scratch;
  write_generator_forms();
  JobGenerator generator(20261121 + GetParam());
  std::size_t framed = 0;
  std::size_t unframed = 0;
  for (std::size_t i = 0; i < jobs(); ++i) {
    const GeneratedJob job = generator.next();
    const JobResult result = run_job(job.options, job.input);
    SCOPED_TRACE(i);
    if (result.passed_through || result.status != 0) {
      // Whatever it is, no byte is lost.
      const FoundJob found = read_job(result.output);
      ASSERT_EQ(found.misdeed, "");
      ASSERT_TRUE(found.rebuilt == result.output);
      continue;
    }
    const bool in_frames = has_option(job, "-d");
    (in_frames ? framed : unframed) += 1;
    ASSERT_NO_FATAL_FAILURE(expect_good(result.output, in_frames));
  }
  EXPECT_GT(framed, jobs() / 10);
  EXPECT_GT(unframed, jobs() / 4);
}

/// The tokens of a job are the same however it is divided; every fiftieth of them, for time.
TEST_P(GeneratedJobs, HaveTheSameTokensInAnyPortions) {
  const ScratchDirectory scratch;
  write_generator_forms();
  JobGenerator generator(20261122 + GetParam());
  for (std::size_t i = 0; i < jobs() / 50; ++i) {
    const GeneratedJob job = generator.next();
    const std::string tokens = shown_tokens(job.input);
    for (const std::size_t portion : {1U, 2U, 3U, 7U, 64U, 70U, 4095U}) {
      ASSERT_TRUE(tokens == shown_tokens(job.input, portion)) << i << ' ' << portion;
    }
  }
}

TEST_P(GeneratedJobs, AreRebuiltFromJson) {
  const ScratchDirectory scratch;
  write_generator_forms();
  JobGenerator generator(20261123 + GetParam());
  for (std::size_t i = 0; i < jobs() / 50; ++i) {
    const GeneratedJob job = generator.next();
    const std::string output = run_job(job.options, job.input).output;
    ASSERT_TRUE(rebuilt_from_json(json_dump(output)) == output) << i;
    // What never was a job, too.
    ASSERT_TRUE(rebuilt_from_json(json_dump(job.input)) == job.input) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, GeneratedJobs, ::testing::Range<std::uint64_t>(0, 8));

/// Each line is an object with a type and an offset, and no offset of a block or of bytes goes
/// back.
void expect_good_json(const std::string& dump) {
  std::istringstream lines(dump);
  std::string type;
  std::uint64_t end = 0;
  for (std::string line; std::getline(lines, line);) {
    const auto object = nlohmann::json::parse(line);
    type = object.at("type").get<std::string>();
    if (object.contains("header") || object.contains("bytes")) {
      EXPECT_EQ(object.at("offset").get<std::uint64_t>(), end);
      end += rebuilt_from_json(line).size();
    }
    EXPECT_TRUE(object.contains("offset") || type == "summary");
  }
  EXPECT_EQ(type, "summary");
}

TEST(AllJobs, GoldenOnesAreRebuiltFromJson) {
  for (const GoldenJob& job : golden_jobs()) {
    const std::string dump = json_dump(job.output);
    EXPECT_TRUE(rebuilt_from_json(dump) == job.output) << job.name;
    expect_good_json(dump);
  }
}

TEST(AllJobs, BrokenOnesAreRebuiltFromJson) {
  const std::string job = job_of_two_pages();
  for (std::size_t length = 0; length < job.size(); ++length) {
    const std::string cut = job.substr(0, length);
    ASSERT_TRUE(rebuilt_from_json(json_dump(cut)) == cut) << length;
    std::string changed = job;
    changed[length] = static_cast<char>(changed[length] ^ 0x11);
    ASSERT_TRUE(rebuilt_from_json(json_dump(changed)) == changed) << length;
  }
}

/// The dumps that are kept were read by a person. RLX_UPDATE_DUMPS=1 writes them anew.
TEST(AllJobs, GoldenOnesAreDumpedAsKept) {
  const bool update = std::getenv("RLX_UPDATE_DUMPS") != nullptr;
  std::set<fs::path> kept;
  for (const GoldenJob& job : golden_jobs()) {
    const fs::path file = fs::path(RLX_DUMPS_DIRECTORY) / (job.name + ".txt");
    const std::string dump = text_dump(job.output);
    kept.insert(file);
    if (update) {
      write_file(file, dump);
      continue;
    }
    ASSERT_TRUE(fs::exists(file)) << file << " is missing: tools/update-dumps.sh";
    EXPECT_EQ(describe_difference(read_file(file), dump), "") << job.name;
  }
  for (const fs::directory_entry& entry : fs::directory_iterator(RLX_DUMPS_DIRECTORY)) {
    EXPECT_TRUE(kept.contains(entry.path())) << entry.path() << " is of no golden job";
  }
}

}  // namespace
}  // namespace rlx::testing
