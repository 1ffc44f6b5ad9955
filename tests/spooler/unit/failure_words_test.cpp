#include "running/failure_words.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

#include "spooler/unit/spooler_rig.h"
#include "support/descriptors.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;

Failure failure_of_words(const std::string& words, int status = 1) {
  RunReport report;
  report.filter = "zqeuctorlx";
  report.words = words;
  report.end.status = status;
  EXPECT_TRUE(failed(report)) << words;
  return explain_failure(PrintJob(), report);
}

Failure failure_of_end(const ProcessEnd& end) {
  RunReport report;
  report.end = end;
  EXPECT_TRUE(failed(report));
  return explain_failure(PrintJob(), report);
}

TEST(FailureWords, AreThoseOfTheFilterWithTheRemedy) {
  struct Row {
    const char* words;
    Problem problem;
    const char* text;
  };
  const std::vector<Row> rows{
      {"zqeuctorlx: FCB data error\n", Problem::form_wrong,
       "zqeuctorlx: FCB data error: a form, or the print-condition command that names it, cannot "
       "be used: check the form with fcbcheck, and the command in the job"},
      {"zqeuctorlx: FCB name error\n", Problem::form_wrong,
       "zqeuctorlx: FCB name error: the job's print-condition command names a form with other "
       "characters than letters and digits"},
      {"zqeuctorlx: g1gaiji file error\n", Problem::job,
       "zqeuctorlx: g1gaiji file error: /etc/lp/g1gaiji is there and cannot be read: make it a "
       "readable file, or remove it"},
      {"zqeuctorlx: g1gaiji code error\n", Problem::job,
       "zqeuctorlx: g1gaiji code error: /etc/lp/g1gaiji has to hold one line with a range, such "
       "as F5A1-FEFE"},
      {"write error", Problem::output, "write error: the output was not taken to its end"},
      {"zqeuctorlx: illegal option -- x\n", Problem::wrong_option,
       "zqeuctorlx: illegal option -- x: the queue gives the filter an option it has not"},
      {"zqeuctorlx: invalid option -- 'x'\n", Problem::wrong_option,
       "zqeuctorlx: invalid option -- 'x': the queue gives the filter an option it has not"},
      {"zqeuctorlx: option requires an argument -- 'n'\n", Problem::wrong_option,
       "zqeuctorlx: option requires an argument -- 'n': the queue gives the filter an option "
       "without its value"},
      {"zqeuctorlx: undefgaiji pattern error\n", Problem::wrong_option,
       "zqeuctorlx: undefgaiji pattern error: rlx-undefined has to be space or ubar"},
      {"zqeuctorlx: Something else\n", Problem::job,
       "zqeuctorlx: Something else: the manual page zqeuctorlx(8) lists the messages"},
  };
  for (const Row& row : rows) {
    const Failure failure = failure_of_words(row.words);
    EXPECT_EQ(failure.words, row.text);
    EXPECT_EQ(failure.problem, row.problem) << row.words;
  }
}

TEST(FailureWords, OfSeveralLinesAreOneLine) {
  EXPECT_EQ(failure_of_words("one\n\ntwo\n").words,
            "one; two: the manual page zqeuctorlx(8) lists the messages");
}

TEST(FailureWords, OfAStatusAlone) {
  struct Row {
    int status;
    Problem problem;
    const char* text;
  };
  const std::vector<Row> rows{
      {1, Problem::system, "the filter ended with status 1: there may be too little memory"},
      {127, Problem::job,
       "the filter ended with status 127: the font library failed while fonts were opened"},
      {129, Problem::system, "the filter ended with status 129: the job could not be read"},
      {255, Problem::job,
       "the filter ended with status 255: the fonts do not go with the resolution: the queue is "
       "set to 400 dots per inch and the printer or its capabilities say 240"},
      {3, Problem::job, "the filter ended with status 3"},
  };
  for (const Row& row : rows) {
    const Failure failure = failure_of_end({row.status, 0});
    EXPECT_EQ(failure.words, row.text);
    EXPECT_EQ(failure.problem, row.problem) << row.status;
  }
  // Lines without a word say nothing.
  EXPECT_EQ(failure_of_words("\n\n", 3).words, "the filter ended with status 3");
}

TEST(FailureWords, OfASignal) {
  const Failure failure = failure_of_end({0, SIGKILL});
  EXPECT_EQ(failure.words, "the filter was ended by signal 9 (Killed)");
  EXPECT_EQ(failure.problem, Problem::system);
}

TEST(FailureWords, OfAnEndThatNobodyCouldWaitFor) {
  const Failure failure = failure_of_end({ProcessEnd::kUnknownStatus, 0});
  EXPECT_EQ(failure.words, "nobody knows how the filter ended");
  EXPECT_EQ(failure.problem, Problem::system);
}

TEST(FailureWords, OfTheSystemComeBeforeThoseOfTheFilter) {
  RunReport report;
  report.words = "write error";
  report.end.status = 1;
  report.job_error = "the job: Input/output error";
  EXPECT_EQ(explain_failure(PrintJob(), report).words, "the job: Input/output error");
  EXPECT_EQ(explain_failure(PrintJob(), report).problem, Problem::system);
  report.output_error = ENOSPC;
  EXPECT_EQ(explain_failure(PrintJob(), report).words,
            "the output was not taken to its end: No space left on device");
  EXPECT_EQ(explain_failure(PrintJob(), report).problem, Problem::output);
}

TEST(FailureWords, ArePartOfAFailureOnlyWhenTheyAreTheFilters) {
  RunReport report;
  EXPECT_FALSE(failed(report));
  report.filter = "zqeuctorlx";
  report.words = "a warning of the system\n";
  EXPECT_FALSE(failed(report));
  report.words += "zqeuctorlx: Input/output error\n";
  EXPECT_TRUE(failed(report));
  EXPECT_EQ(explain_failure(PrintJob(), report).problem, Problem::job);
}

/// A job with a form at forms/fcbe, and the checker of forms.
PrintJob job_with_form(const std::string& directory) {
  PrintJob job;
  job.settings.form = "WRONG";
  job.queue.form_directories = {"/nowhere", directory};
  job.form_checker = RLX_FCBCHECK;
  return job;
}

std::string words_about_form(const PrintJob& job) {
  RunReport report;
  report.words = "zqeuctorlx: FCB data error\n";
  report.end.status = 1;
  return explain_failure(job, report).words;
}

TEST(FailureWords, OfAFormNameItsLine) {
  const ScratchDirectory scratch;
  write_file("fcbe/WRONG", "# wrong\nprint 300\n");
  const PrintJob job = job_with_form(scratch.path());
  EXPECT_EQ(words_about_form(job),
            "form WRONG: " + scratch.path() +
                "/fcbe/WRONG:2: print: first line 300 is above 255 (zqeuctorlx: FCB data error); "
                "mend the form, then let the job print again");
}

TEST(FailureWords, OfAFormAreThoseOfItsMode) {
  const ScratchDirectory scratch;
  // In mode 7 a form has at most 14 inches, and its lines do not fit.
  write_file("fcbe/WRONG", "print 1 108000\nlpi 1200 90\n");
  PrintJob job = job_with_form(scratch.path());
  EXPECT_EQ(words_about_form(job).substr(0, 26), "zqeuctorlx: FCB data error");
  job.queue.emulation_mode = 7;
  EXPECT_EQ(words_about_form(job).substr(0, 12), "form WRONG: ");
}

TEST(FailureWords, OfAFormAreGeneralWhenTheCheckerHasNone) {
  const ScratchDirectory scratch;
  const std::string general = "zqeuctorlx: FCB data error: a form, or";
  write_file("fcbe/WRONG", "print 3\n");
  PrintJob job = job_with_form(scratch.path());
  EXPECT_EQ(words_about_form(job).substr(0, general.size()), general);
  write_file("fcbe/WRONG", "print 300\n");
  job.form_checker = "/nowhere/fcbcheck";
  EXPECT_EQ(words_about_form(job).substr(0, general.size()), general);
  job.form_checker = "";
  EXPECT_EQ(words_about_form(job).substr(0, general.size()), general);
}

TEST(CommandLine, CanBeTypedIntoAShell) {
  EXPECT_EQ(command_line({"/usr/libexec/zqeuctorlx", {}}), "/usr/libexec/zqeuctorlx");
  EXPECT_EQ(command_line({"zqeuctorlx", {"-n", "IN-VOICE_1", "-p", "/a:/b", "-G", "D240!f1"}}),
            "zqeuctorlx -n IN-VOICE_1 -p /a:/b -G 'D240!f1'");
  EXPECT_EQ(command_line({"a b", {"", "it's", "$x", "*"}}), "'a b' '' 'it'\\''s' '$x' '*'");
}

}  // namespace
}  // namespace rlx::spooler
