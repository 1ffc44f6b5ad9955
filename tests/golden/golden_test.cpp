// Golden jobs: whole runs of the filter, one folder each under tests/cases/. A folder holds
//
//   about        what the job shows
//   options      arguments, one a line, escaped (absent: none)
//   stdin.esc    the job, escaped (absent: empty)
//   files/       copied into the current directory of the run; a form stands at
//                files/sandbox/usr/local/lib/PXLQlp/fcbe/NAME
//   stdout.esc   expected output, escaped (absent: empty)
//   stderr.esc   expected messages, escaped (absent: empty); the program is called "filter"
//   status       expected exit status (absent: 0)
//
// `golden_tests --update [CASE...]` rewrites the expected files of the named cases, or of all.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/descriptors.h"
#include "support/escaped_bytes.h"
#include "support/tested_filter.h"

namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kTimeLimitSeconds = 30;
constexpr rlim_t kOutputLimitBytes = rlim_t{256} << 20U;
constexpr int kKilledBySignal = 1000;  // added to the signal's number

struct Outcome {
  std::string output;
  std::string messages;
  int status = 0;  ///< exit status, or kKilledBySignal and the signal
};

const std::set<std::string> kCaseFiles{"about",      "options",    "stdin.esc", "files",
                                       "stdout.esc", "stderr.esc", "status"};

std::vector<std::string> all_cases() {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(RLX_CASES_DIRECTORY)) {
    names.push_back(entry.path().filename());
  }
  std::ranges::sort(names);
  return names;
}

fs::path case_file(const std::string& name, const std::string& file) {
  return fs::path(RLX_CASES_DIRECTORY) / name / file;
}

std::string decode_or_throw(const std::string& text, const fs::path& file) {
  std::optional<std::string> bytes = decode_escaped(text);
  if (!bytes) {
    throw std::runtime_error(file.string() + " is no escaped text");
  }
  return std::move(*bytes);
}

/// The bytes of an escaped file of a case; none when the file is absent.
std::string case_bytes(const std::string& name, const std::string& file) {
  const fs::path path = case_file(name, file);
  return fs::exists(path) ? decode_or_throw(read_file(path), path) : "";
}

std::vector<std::string> case_options(const std::string& name) {
  std::vector<std::string> options;
  const fs::path path = case_file(name, "options");
  if (fs::exists(path)) {
    std::istringstream lines(read_file(path));
    for (std::string line; std::getline(lines, line);) {
      options.push_back(decode_or_throw(line, path));
    }
  }
  return options;
}

int case_status(const std::string& name) {
  const fs::path path = case_file(name, "status");
  return fs::exists(path) ? std::stoi(read_file(path)) : 0;
}

/// A malformed file counts as no; the case's own test says so.
bool writes_job_parameter_block(const std::string& name) {
  const fs::path path = case_file(name, "stdout.esc");
  return fs::exists(path) &&
         starts_with_job_parameter_block(decode_escaped(read_file(path)).value_or(""));
}

std::vector<std::string> cases_in_printer_language() {
  std::vector<std::string> names = all_cases();
  std::erase_if(names, [](const std::string& name) { return !writes_job_parameter_block(name); });
  return names;
}

/// The child's side of a run: becomes the filter, with the descriptors' ends in place.
[[noreturn]] void become_filter(const std::vector<std::string>& options) {
  std::vector<char*> arguments;
  std::string name = "filter";
  arguments.push_back(name.data());
  std::vector<std::string> copies = options;
  for (std::string& option : copies) {
    arguments.push_back(option.data());
  }
  arguments.push_back(nullptr);
  const rlimit limit{kOutputLimitBytes, kOutputLimitBytes};
  setrlimit(RLIMIT_FSIZE, &limit);
  alarm(kTimeLimitSeconds);
  execv(tested_filter().c_str(), arguments.data());
  std::abort();
}

int wait_for(pid_t child) {
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : kKilledBySignal + WTERMSIG(status);
}

/// Runs the filter in the current directory.
Outcome run_filter(const std::vector<std::string>& options, const std::string& input) {
  const StandardInput standard_input(input);
  const CaptureDescriptor output(STDOUT_FILENO);
  const CaptureDescriptor messages(STDERR_FILENO);
  const pid_t child = fork();
  if (child == 0) {
    become_filter(options);
  }
  const int status = wait_for(child);
  return {output.text(), messages.text(), status};
}

/// Runs a case in a fresh directory that holds the case's files.
Outcome run_case(const std::string& name) {
  const ScratchDirectory scratch;
  if (fs::exists(case_file(name, "files"))) {
    fs::copy(case_file(name, "files"), scratch.path(), fs::copy_options::recursive);
  }
  return run_filter(case_options(name), case_bytes(name, "stdin.esc"));
}

void expect_same(const std::string& what, const std::string& expected, const std::string& actual) {
  if (expected != actual) {
    ADD_FAILURE() << what << " " << describe_difference(expected, actual);
  }
}

class GoldenCase : public ::testing::TestWithParam<std::string> {};

TEST_P(GoldenCase, PrintsWhatIsExpected) {
  const Outcome outcome = run_case(GetParam());
  expect_same("standard output", case_bytes(GetParam(), "stdout.esc"), outcome.output);
  expect_same("standard error", case_bytes(GetParam(), "stderr.esc"), outcome.messages);
  EXPECT_EQ(outcome.status, case_status(GetParam()))
      << "exit status (" << kKilledBySignal << " + n: ended by signal n)";
}

TEST_P(GoldenCase, FolderHoldsKnownFilesAndSaysWhatItShows) {
  for (const fs::directory_entry& entry : fs::directory_iterator(case_file(GetParam(), ""))) {
    EXPECT_TRUE(kCaseFiles.contains(entry.path().filename())) << entry.path();
  }
  EXPECT_FALSE(read_file(case_file(GetParam(), "about")).empty());
}

class PrinterLanguageJob : public ::testing::TestWithParam<std::string> {};

TEST_P(PrinterLanguageJob, PassesThroughUnchanged) {
  const ScratchDirectory scratch;
  const std::string job = case_bytes(GetParam(), "stdout.esc");
  const Outcome outcome = run_filter({}, job);
  expect_same("standard output", job, outcome.output);
  expect_same("standard error", "", outcome.messages);
  EXPECT_EQ(outcome.status, 0);
}

std::string test_name(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::ranges::replace_if(
      name,
      [](char c) {
        return !((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'));
      },
      '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Cases, GoldenCase, ::testing::ValuesIn(all_cases()), test_name);
INSTANTIATE_TEST_SUITE_P(Cases, PrinterLanguageJob,
                         ::testing::ValuesIn(cases_in_printer_language()), test_name);

TEST(GoldenCases, AreFound) {
  EXPECT_FALSE(all_cases().empty());
  EXPECT_FALSE(cases_in_printer_language().empty());
}

/// Rewrites an expected file; an empty content is an absent file.
void update_file(const std::string& name, const std::string& file, const std::string& content) {
  const fs::path path = case_file(name, file);
  if (content.empty()) {
    fs::remove(path);
  } else {
    write_file(path, content);
  }
}

/// Makes what the filter does now the expectation of a case.
bool update_case(const std::string& name) {
  if (!fs::is_directory(case_file(name, ""))) {
    std::fprintf(stderr, "%s: no such case\n", name.c_str());
    return false;
  }
  const Outcome outcome = run_case(name);
  if (outcome.status >= kKilledBySignal) {
    std::fprintf(stderr, "%s: the filter did not run to its end (%d), nothing changed\n",
                 name.c_str(), outcome.status);
    return false;
  }
  update_file(name, "stdout.esc", encode_escaped(outcome.output));
  update_file(name, "stderr.esc", encode_escaped(outcome.messages));
  update_file(name, "status", outcome.status == 0 ? "" : std::to_string(outcome.status) + "\n");
  std::printf("%s: updated\n", name.c_str());
  return true;
}

int update_cases(std::vector<std::string> names) {
  if (names.empty()) {
    names = all_cases();
  }
  bool all_updated = true;
  for (const std::string& name : names) {
    all_updated = update_case(name) && all_updated;
  }
  return all_updated ? 0 : 1;
}

}  // namespace
}  // namespace rlx::testing

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (!arguments.empty() && arguments.front() == "--update") {
    return rlx::testing::update_cases({arguments.begin() + 1, arguments.end()});
  }
  return RUN_ALL_TESTS();
}
