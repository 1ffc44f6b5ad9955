#include "rlx-lpd/lpd_arguments.h"

#include <gtest/gtest.h>

namespace rlx::testing {
namespace {

using lpd::LpdArguments;
using lpd::read_arguments;
using Words = std::vector<std::string>;

LpdArguments good(const Words& words) {
  LpdArguments arguments = read_arguments(words);
  EXPECT_EQ(arguments.fault, "");
  return arguments;
}

TEST(LpdArguments, AreAPlainQueueWithoutAny) {
  const LpdArguments arguments = good({});
  EXPECT_EQ(arguments.task, LpdArguments::Task::print);
  EXPECT_EQ(arguments.queue.emulation_mode, 1U);
  EXPECT_EQ(arguments.queue.resolution, 0U);
  EXPECT_EQ(arguments.queue.capabilities, "");
  EXPECT_EQ(arguments.queue.filter_flags, "");
  EXPECT_TRUE(arguments.queue.form_directories.empty());
  EXPECT_EQ(arguments.queue_options, "");
  EXPECT_EQ(arguments.job_options, "");
  EXPECT_EQ(arguments.cancel_time, std::chrono::seconds(30));
  EXPECT_FALSE(arguments.verbose);
}

TEST(LpdArguments, DescribeAQueue) {
  for (const Words& words :
       {Words{"--mode=7", "--resolution=400", "--capabilities=D240!D400", "--flags=Aq",
              "--forms=/a", "--forms=/b", "--options=form=X,lpi=8", "--cancel-seconds=5",
              "--verbose"},
        Words{"--mode", "7", "--resolution", "400", "--capabilities", "D240!D400", "--flags", "Aq",
              "--forms", "/a", "--forms", "/b", "--options", "form=X,lpi=8", "--cancel-seconds",
              "5", "--verbose"}}) {
    const LpdArguments arguments = good(words);
    EXPECT_EQ(arguments.queue.emulation_mode, 7U);
    EXPECT_EQ(arguments.queue.resolution, 400U);
    EXPECT_EQ(arguments.queue.capabilities, "D240!D400");
    EXPECT_EQ(arguments.queue.filter_flags, "Aq");
    EXPECT_EQ(arguments.queue.form_directories, (Words{"/a", "/b"}));
    EXPECT_EQ(arguments.queue_options, "form=X,lpi=8");
    EXPECT_EQ(arguments.cancel_time, std::chrono::seconds(5));
    EXPECT_TRUE(arguments.verbose);
  }
}

/// What lpd 3.8.B puts behind an entry without a dollar sign.
const Words& usual_letters() {
  static const Words words{"-Aroot@localhost+442",
                           "-CA",
                           "-D2026-11-21-20:35:14.076",
                           "-Fl",
                           "-Hhost",
                           "-J--mode=9",
                           "-Lroot",
                           "-Nbills.txt",
                           "-Plines",
                           "-Qlines",
                           "-Zform=INVOICE,lpi=8",
                           "-aacct",
                           "-b6",
                           "-c",
                           "-d/var/spool/lpd/lines",
                           "-edfA442host",
                           "-fbills.txt",
                           "-hhost",
                           "-j442",
                           "-l66",
                           "-nroot",
                           "-sstatus",
                           "-t2026-11-21-20:35:14.000",
                           "-w80",
                           "-x0",
                           "-y0",
                           "acct"};
  return words;
}

TEST(LpdArguments, TakeFourOfLprngsLetters) {
  Words words{"--forms=/a"};
  words.insert(words.end(), usual_letters().begin(), usual_letters().end());
  const LpdArguments arguments = good(words);
  EXPECT_EQ(arguments.job_options, "form=INVOICE,lpi=8");
  EXPECT_EQ(arguments.data_file, "dfA442host");
  EXPECT_EQ(arguments.printer, "lines");
  EXPECT_EQ(arguments.job_number, "442");
  EXPECT_EQ(arguments.queue.form_directories, Words{"/a"});
  EXPECT_EQ(arguments.queue.emulation_mode, 1U);
}

TEST(LpdArguments, DropAllOtherLetters) {
  for (char letter = 'A'; letter <= 'z'; ++letter) {
    if (letter == 'Z' || letter == 'P' || letter == 'e' || letter == 'j') {
      continue;
    }
    const std::string word{'-', letter, 'v'};
    const LpdArguments arguments = good({word, "--mode=2"});
    EXPECT_EQ(arguments.queue.emulation_mode, 2U) << word;
    EXPECT_EQ(
        arguments.job_options + arguments.data_file + arguments.printer + arguments.job_number, "");
  }
}

TEST(LpdArguments, MayHaveALettersValueInTheNextWord) {
  // A value is one whatever it looks like: users choose some of them.
  const LpdArguments arguments = good(
      {"-J", "--mode=9", "-n", "--help", "-Z", "lpi=8", "-c", "--mode=2", "-P", "lines", "-j"});
  EXPECT_EQ(arguments.task, LpdArguments::Task::print);
  EXPECT_EQ(arguments.queue.emulation_mode, 2U);
  EXPECT_EQ(arguments.job_options, "lpi=8");
  EXPECT_EQ(arguments.printer, "lines");
  EXPECT_EQ(arguments.job_number, "");
}

TEST(LpdArguments, AskForHelpAndVersion) {
  EXPECT_EQ(read_arguments({"--help"}).task, LpdArguments::Task::help);
  EXPECT_EQ(read_arguments({"--version"}).task, LpdArguments::Task::version);
}

TEST(LpdArguments, ThatAreWrongAreNamed) {
  EXPECT_EQ(read_arguments({"--from=/a"}).fault, "unknown option --from=/a");
  EXPECT_EQ(read_arguments({"--"}).fault, "unknown option --");
  EXPECT_EQ(read_arguments({"--verbose=1"}).fault, "unknown option --verbose=1");
  EXPECT_EQ(read_arguments({"--forms"}).fault, "--forms needs a value");
  EXPECT_EQ(read_arguments({"--mode=x", "--from"}).fault, "--mode=x: wanted is a whole number");
  EXPECT_EQ(read_arguments({"--resolution="}).fault, "--resolution=: wanted is a whole number");
  EXPECT_EQ(read_arguments({"--cancel-seconds", "-1"}).fault,
            "--cancel-seconds=-1: wanted is a whole number");
  EXPECT_EQ(read_arguments({"--cancel-seconds=86400"}).fault, "");
  EXPECT_EQ(read_arguments({"--cancel-seconds=86401"}).fault,
            "--cancel-seconds=86401: wanted is a whole number");
}

TEST(LpdArguments, ThatAQueueCannotHaveAreNamedAsTheyAreWritten) {
  EXPECT_EQ(read_arguments({"--mode=5"}).fault, "--mode=5: wanted is 1, 2, 3, 4, 6 or 7");
  EXPECT_EQ(read_arguments({"--flags=x"}).fault, "--flags=x: wanted is letters of A, D, f and q");
  EXPECT_EQ(read_arguments({"--forms=a"}).fault,
            "--forms=a: wanted is absolute paths, without a colon in one");
  EXPECT_EQ(read_arguments({"--resolution=300"}).fault,
            "--resolution=300: wanted is one of --capabilities (D240, D400); without such a list "
            "240, or 400 in the emulation modes 1 and 2");
}

}  // namespace
}  // namespace rlx::testing
