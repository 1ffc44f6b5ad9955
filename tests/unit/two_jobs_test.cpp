// Two jobs after one another in one process, each with a filter of its own in the same memory: what
// comes of them is what two processes make. So nothing of a job stands outside its filter.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <map>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "driver/filter.h"
#include "driver/job_end.h"
#include "driver/main_loop.h"
#include "driver/start_up.h"
#include "job/exit_status.h"
#include "support/descriptors.h"
#include "support/input_stream.h"
#include "support/main_loop_fixture.h"
#include "support/record_builder.h"
#include "support/standin_font_library.h"
#include "support/tested_filter.h"

namespace rlx::testing {
namespace {

/// A job, and how it ends.
struct Job {
  const char* name;
  std::vector<std::string> options;
  std::string input;
  int status = 0;
};

std::ostream& operator<<(std::ostream& stream, const Job& job) {
  return stream << job.name;
}

std::string long_text() {
  std::string text;
  for (int line = 0; line < 600; ++line) {
    text += std::to_string(line) + " \xe3\x81\x82\xe3\x81\x84 and \x1bQ1;7200!C so on\n";
  }
  return text;
}

std::string duplex_record() {
  ConditionColumns columns;
  columns.form_overlay = "OVERLAY";
  columns.layout = "2";
  columns.orientation = "L ";
  columns.paper_size = "A4 ";
  columns.tray = "P2";
  columns.binding_edge = "U";
  columns.first_offset = "00500";
  return condition_sequence(columns);
}

std::string form_record(const std::string& form) {
  ConditionColumns columns;
  columns.layout = "2";
  columns.fcb_name = form;
  return condition_sequence(columns);
}

const std::vector<Job>& jobs() {
  static const std::vector<Job> jobs{
      {"PlainText",
       {},
       "Hello\nworld\x0c"
       "second page\n"},
      {"LongText", {"-c", "12", "-l", "8"}, long_text()},
      {"Nothing", {}, ""},
      {"Form",
       {"-p", "forms", "-n", "FORM"},
       "one\ntwo\nthree\x0c"
       "four\n"},
      {"FormByRecord", {"-p", "forms"}, "A\n" + form_record("FORM") + "B\nC\n"},
      {"Framed",
       {"-d"},
       cnt_frame("AB\n") + cnt_frame(std::string(5000, 'x')) + end_frame("C\x0c")},
      {"ConditionRecords",
       {},
       "front\x0c" + duplex_record() + "back\x0c" + kBlankCommand + kFormNameCommand + "last"},
      {"HeldSettings", {"-q"}, "A\x1bQ;!f\x1bQ1 y\x1bQ!I"},
      {"CutSequence", {}, "A\xe3\x81\x82\x1bQ1;5!ab"},
      {"PassedThrough", {}, kParameterBlock + "rest\x0c"},
      {"OptionThatFails", {"-p", "forms", "-n", "FORM", "-r", "Space"}, "A", 1},
      {"UnknownOption", {"-Bz", "-d"}, "A", 1},
      {"FormThatFails", {"-p", "forms", "-n", "NONE"}, "A", 1},
      {"FormByRecordThatFails", {"-p", "forms"}, "A\n" + form_record("NONE") + "B\n", 1},
      {"FontsThatFail", {"-B", "-G", "D240"}, "A" + kBlankCommand + "B", 255},
  };
  return jobs;
}

/// The arguments of a process.
class Arguments {
 public:
  explicit Arguments(const Job& job) : words_{"filter"} {
    words_.insert(words_.end(), job.options.begin(), job.options.end());
    for (std::string& word : words_) {
      pointers_.push_back(word.data());
    }
    pointers_.push_back(nullptr);
  }

  int count() const { return static_cast<int>(words_.size()); }
  char** pointers() { return pointers_.data(); }

 private:
  std::vector<std::string> words_;
  std::vector<char*> pointers_;
};

/// Runs a job with the descriptors in place, and tells its exit status.
using Runner = int (*)(Arguments& arguments);

JobResult run(Runner runner, const Job& job) {
  const StandardInput input(job.input);
  const CaptureDescriptor output(STDOUT_FILENO);
  const CaptureDescriptor messages(STDERR_FILENO);
  Arguments arguments(job);
  const int status = runner(arguments);
  return {status, output.text(), messages.text(), false};
}

int run_as_process(Arguments& arguments) {
  const pid_t child = fork();
  if (child == 0) {
    execv(tested_filter().c_str(), arguments.pointers());
    _exit(99);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  return WEXITSTATUS(status);
}

/// As in the program.
alignas(Filter) std::byte storage[sizeof(Filter)];

/// A job as the program does it, but that standard output stays open, and that what a failed start
/// leaves to the system is released here.
int run_in(void* memory, Arguments& arguments) {
  Filter& filter = *new (memory) Filter;
  Status status = start_up(filter, arguments.count(), arguments.pointers());
  if (status == ST_OK) {
    const JobEnd end = run_main_loop(filter.loop);
    status = end_job(filter, end, filter.loop.status);
  }
  fal_unload(filter.library);
  free_page_buffers(filter.page);
  filter.~Filter();
  return exit_status_of(status);
}

constexpr int kPattern = 0xa5;

/// In memory as a process has it at its start.
int run_in_fresh_memory(Arguments& arguments) {
  std::memset(storage, kPattern, sizeof storage);
  std::memset(storage, 0, sizeof storage);
  return run_in(storage, arguments);
}

/// In memory that holds something, as no process has it.
int run_in_used_memory(Arguments& arguments) {
  std::memset(storage, kPattern, sizeof storage);
  return run_in(storage, arguments);
}

void expect_same(const JobResult& expected, const JobResult& actual) {
  EXPECT_EQ(actual.status, expected.status);
  EXPECT_EQ(actual.messages, expected.messages);
  EXPECT_TRUE(actual.output == expected.output);
}

class TwoJobs : public ::testing::TestWithParam<Job> {
 protected:
  TwoJobs() {
    write_file("forms/fcbe/FORM", "print 3 7200\nlpi 900 8\n");
    install_font_library();
    describe_fonts("every-font\n");
  }

  /// What processes make of the jobs.
  static std::map<std::string, JobResult> processes() {
    std::map<std::string, JobResult> results;
    for (const Job& job : jobs()) {
      results[job.name] = run(run_as_process, job);
      EXPECT_EQ(results[job.name].status, job.status) << job.name;
    }
    return results;
  }

  static void expect_as_processes(Runner runner, const Job& first) {
    const std::map<std::string, JobResult> expected = processes();
    for (const Job& second : jobs()) {
      SCOPED_TRACE(std::string(first.name) + ", then " + second.name);
      const JobResult result = run(runner, first);
      const JobResult next_result = run(runner, second);
      expect_same(expected.at(first.name), result);
      expect_same(expected.at(second.name), next_result);
    }
  }

 private:
  ScratchDirectory scratch_;
};

TEST_P(TwoJobs, AfterOneAnotherAreAsTwoProcesses) {
  expect_as_processes(run_in_fresh_memory, GetParam());
}

TEST_P(TwoJobs, DoNotReadWhatTheMemoryHeldBefore) {
  expect_as_processes(run_in_used_memory, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Jobs, TwoJobs, ::testing::ValuesIn(jobs()),
                         [](const auto& job) { return std::string(job.param.name); });

}  // namespace
}  // namespace rlx::testing
