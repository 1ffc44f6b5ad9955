#include "rlx-lpd/lpd_job.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

#include "support/descriptors.h"
#include "tools/tool_run.h"

namespace rlx::testing {
namespace {

using lpd::job_end;
using lpd::JobEnd;
using spooler::Problem;

TEST(LpdJobEnd, IsWhatLpdDoesWithTheJob) {
  EXPECT_EQ(job_end(Problem::none, false), JobEnd::printed);
  for (const Problem problem : {Problem::output, Problem::system}) {
    EXPECT_EQ(job_end(problem, false), JobEnd::retry);
  }
  for (const Problem problem : {Problem::wrong_option, Problem::form_missing, Problem::form_wrong,
                                Problem::wrong_text, Problem::job}) {
    EXPECT_EQ(job_end(problem, false), JobEnd::hold);
  }
  EXPECT_EQ(static_cast<int>(JobEnd::printed), 0);
  EXPECT_EQ(static_cast<int>(JobEnd::retry), 32);
  EXPECT_EQ(static_cast<int>(JobEnd::hold), 37);
}

TEST(LpdJobEnd, OfACancelledJobIsNeverPrinted) {
  for (const Problem problem :
       {Problem::none, Problem::wrong_option, Problem::form_missing, Problem::form_wrong,
        Problem::wrong_text, Problem::job, Problem::output, Problem::system}) {
    EXPECT_EQ(job_end(problem, true), JobEnd::retry);
  }
}

bool holds_printer_language(std::string_view job, bool as_pipe = false) {
  const StandardInput input(job, as_pipe);
  return lpd::is_printer_language(STDIN_FILENO);
}

TEST(LpdPrinterLanguage, IsKnownByTheHeadOfAJob) {
  const std::string head = "\033Q0;0000000043/`%%%=Pji";
  EXPECT_TRUE(holds_printer_language(head));
  EXPECT_TRUE(holds_printer_language(head + ",0101,UNIC\nEMU=RLX\n"));
  EXPECT_FALSE(holds_printer_language(""));
  EXPECT_FALSE(holds_printer_language("TEXT\n"));
  EXPECT_FALSE(holds_printer_language(' ' + head));
  // No part of the head may be another one, but for the digits.
  for (std::size_t i = 0; i < head.size(); ++i) {
    std::string other = head;
    other[i] = '!';
    EXPECT_FALSE(holds_printer_language(other)) << i;
    EXPECT_FALSE(holds_printer_language(head.substr(0, i))) << i;
  }
  EXPECT_TRUE(holds_printer_language("\033Q0;9876543210/`%%%=Pji"));
}

TEST(LpdPrinterLanguage, IsLookedForInFilesOnlyAndWithoutReading) {
  const std::string head = "\033Q0;0000000043/`%%%=Pji";
  EXPECT_FALSE(holds_printer_language(head, true));
  const StandardInput input("TEXT\n" + head);
  EXPECT_FALSE(lpd::is_printer_language(STDIN_FILENO));
  EXPECT_EQ(lseek(STDIN_FILENO, 0, SEEK_CUR), 0);
  lseek(STDIN_FILENO, 5, SEEK_SET);
  EXPECT_TRUE(lpd::is_printer_language(STDIN_FILENO));
  EXPECT_EQ(lseek(STDIN_FILENO, 0, SEEK_CUR), 5);
}

/// The program, with messages and output apart.
ToolOutcome run_rlx_lpd(const std::vector<std::string>& arguments, std::string_view job = "TEXT\n",
                        const std::string& ticket = "") {
  ToolRun run;
  run.arguments = arguments;
  run.input = job;
  run.environment["HF"] = ticket;
  return run_tool(RLX_LPD, run);
}

TEST(RlxLpd, SaysHowItIsUsed) {
  const ToolOutcome help = run_rlx_lpd({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.output.find("Usage: rlx-lpd "), std::string::npos);
  EXPECT_EQ(help.messages, "");
  const ToolOutcome version = run_rlx_lpd({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "rlx-lpd " RLX_LPD_VERSION "\n");
}

TEST(RlxLpd, PrintsAndCounts) {
  const ToolOutcome outcome = run_rlx_lpd({"-Plines", "-j442", "-J--mode=9", "-w80", "acct"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output.substr(0, 4), "\033Q0;");
  EXPECT_EQ(outcome.messages.substr(0, outcome.messages.find(", 0.")),
            "1 page, " + std::to_string(outcome.output.size()) + " bytes, no form");
}

TEST(RlxLpd, HoldsWhatSomebodyHasToSeeTo) {
  struct Row {
    std::vector<std::string> arguments;
    std::string reason;
  };
  for (const Row& row :
       {Row{{"--mode=5"}, "the printcap entry is wrong: --mode=5: wanted is 1, 2, 3, 4, 6 or 7"},
        Row{{"--from=/a"}, "the printcap entry is wrong: unknown option --from=/a"},
        Row{{"--options=lpi=5"},
            "the printcap entry is wrong: --options: option lpi=5: wanted is 3, 4, 6, 8 or 12"},
        Row{{"-Zlpi=5"}, "option lpi=5: wanted is 3, 4, 6, 8 or 12"},
        Row{{"-Zfomr=X"}, "there is no option fomr; rlx-lpd(8) lists them"}}) {
    std::vector<std::string> arguments = row.arguments;
    const ToolOutcome without_names = run_rlx_lpd(arguments);
    EXPECT_EQ(without_names.status, 37);
    EXPECT_EQ(without_names.messages,
              "job is held: " + row.reason + "; to print it then: lpc release QUEUE JOB\n");
    arguments.insert(arguments.end(), {"-Plines", "-j442"});
    const ToolOutcome outcome = run_rlx_lpd(arguments);
    EXPECT_EQ(outcome.status, 37);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.messages,
              "job 442 is held: " + row.reason + "; to print it then: lpc release lines 442\n");
  }
}

TEST(RlxLpd, HoldsAJobWithoutItsForm) {
  const ToolOutcome outcome = run_rlx_lpd({"--forms=/nowhere", "-Zform=LATER"});
  EXPECT_EQ(outcome.status, 37);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.messages.find("job is held: form LATER is missing; it was looked for as "
                                  "/nowhere/fcbe/LATER, "),
            0U)
      << outcome.messages;
}

TEST(RlxLpd, LetsAJobsOptionsGoBeforeTheQueues) {
  const ToolOutcome by_queue = run_rlx_lpd({"--options=lpi=8,cpi=12"});
  EXPECT_EQ(by_queue.output, run_rlx_lpd({"-Zlpi=8,cpi=12"}).output);
  EXPECT_EQ(run_rlx_lpd({"--options=lpi=8,cpi=12", "-Zlpi=6"}).output,
            run_rlx_lpd({"-Zlpi=6,cpi=12"}).output);
  EXPECT_NE(by_queue.output, run_rlx_lpd({"-Zlpi=6,cpi=12"}).output);
}

TEST(RlxLpd, HoldsCopiesOfCopies) {
  const std::string ticket =
      "hfdatafiles=copies=0x1\2dftransfername=dfA1\1copies=0x1\2dftransfername=dfA1\1\n";
  EXPECT_EQ(run_rlx_lpd({"-edfA1", "-Zcopies=2"}, "TEXT\n", ticket).status, 37);
  EXPECT_EQ(run_rlx_lpd({"-edfB1", "-Zcopies=2"}, "TEXT\n", ticket).status, 0);
  EXPECT_EQ(run_rlx_lpd({"-edfA1"}, "TEXT\n", ticket).output, run_rlx_lpd({}).output);
}

/// Standard output that nobody reads.
void lose_the_reader() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) {
    _exit(99);
  }
  close(ends[0]);
  close(ends[1]);
}

TEST(RlxLpd, TriesAgainWhenThePrinterWentAway) {
  ToolRun run;
  run.arguments = {"-j442"};
  run.input = "TEXT\n";
  run.prepare = lose_the_reader;
  const ToolOutcome outcome = run_tool(RLX_LPD, run);
  EXPECT_EQ(outcome.status, 32);
  EXPECT_EQ(outcome.messages.find("job 442 is tried again: the output was not taken to its end: "),
            0U)
      << outcome.messages;
}

}  // namespace
}  // namespace rlx::testing
