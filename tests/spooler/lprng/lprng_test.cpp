#include <gtest/gtest.h>

#include <unistd.h>

#include <csignal>

#include "spooler/lprng/lprng_server.h"
#include "spooler/spooler_test.h"

namespace rlx::testing {
namespace {

/// lpd changes users and groups, which needs root's rights even in a namespace of its own.
class RootsRights : public ::testing::Environment {
 public:
  void SetUp() override {
    if (geteuid() != 0) {
      GTEST_SKIP() << "lpd can be run by root only";
    }
    if (run_command({{"unshare", "--mount", "--uts", "true"}}).status != 0) {
      GTEST_SKIP() << "lpd needs a namespace of its own for its /etc, which this machine does not "
                      "give (in a root made by chroot, for example)";
    }
  }
};

const auto* const roots_rights = ::testing::AddGlobalTestEnvironment(new RootsRights);

/// A print-condition command that names paper A3 and nothing else, of layout 2.
std::string own_conditions() {
  std::string columns(98, ' ');
  columns[0] = '2';
  columns.replace(59, 2, "A3");
  return "\033Q1;100 n  " + columns;
}

/// The one that stands in front of a job for these columns, and its place in them.
std::string conditions(const std::vector<std::pair<std::size_t, std::string>>& at) {
  std::string columns(98, ' ');
  columns[0] = '2';
  for (const auto& [column, text] : at) {
    columns.replace(column, text.size(), text);
  }
  return "\033Q1;100 n  " + columns;
}

std::size_t count_of(const std::string& what, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
    ++count;
  }
  return count;
}

/// An lpd with the queue "q", whose forms are those of the folder.
class LprngTest : public SpoolerTest {
 public:
  explicit LprngTest(const std::string& arguments = "", const std::string& more = "")
      : server_({{"q", printer_.port(), "--forms=" + forms() + ' ' + arguments, more},
                 {"wrong", printer_.port(), "--mode=5"}}) {}

  /// Submits a job and waits until it is printed. @return what reached the printer.
  PrinterJob print(std::string_view job, const std::vector<std::string>& options = {}) {
    const std::size_t before = printer_.jobs().size();
    const std::string number = server_.submit("q", job, options);
    EXPECT_TRUE(server_.wait_for_state("q", number, "done")) << server_.status("q");
    const auto& jobs = printer_.wait_for_jobs(before + 1);
    EXPECT_EQ(jobs.size(), before + 1) << server_.status("q");
    return jobs.size() > before ? jobs[before] : PrinterJob();
  }

  /// Submits a job that is held. @return its number.
  std::string hold(std::string_view job, const std::vector<std::string>& options,
                   const std::string& reason) {
    std::string number = server_.submit("q", job, options);
    EXPECT_TRUE(server_.wait_for_state("q", number, "hold")) << server_.status("q");
    EXPECT_NE(server_.status("q").find("job " + number + " is held: " + reason), std::string::npos)
        << server_.status("q");
    return number;
  }

  void release(const std::string& number) {
    EXPECT_EQ(server_.run({"lpc", "release", "q", number}).status, 0);
  }

  std::vector<std::string> with_form(const std::string& name) const {
    return {"-p", forms(), "-n", name};
  }
  std::vector<std::string> plain() const { return {"-p", forms()}; }

  LprngServer server_;
};

class LongLprngTest : public LprngTest {};

TEST_F(LprngTest, PrintsText) {
  const std::string text = numbered_pages("TEXT", 3);
  const PrinterJob job = print(text);
  expect_same_job(filtered(plain(), text), job);
  EXPECT_EQ(job.pages, 3U);
  EXPECT_NE(server_.status("q").find("filter msg - '3 pages, " + std::to_string(job.bytes.size()) +
                                     " bytes, no form, "),
            std::string::npos)
      << server_.status("q");
}

TEST_F(LprngTest, PrintsALargeJob) {
  const std::string text = numbered_pages("LARGE", 2000, 60);
  expect_same_job(filtered(plain(), text), print(text));
}

TEST_F(LprngTest, PrintsOnAForm) {
  const std::string text = numbered_pages("FORM", 2);
  expect_same_job(filtered(with_form("INVOICE"), text), print(text, {"-Z", "form=INVOICE"}));
}

TEST_F(LprngTest, TurnsOptionsIntoThoseOfTheFilter) {
  const std::string text = numbered_pages("OPTIONS", 2);
  expect_same_job(
      filtered({"-P", "-L", "44", "-c", "12", "-l", "8", "-r", "ubar", "-p", forms()}, text),
      print(text, {"-Z", "lpi=8,cpi=12", "-Z",
                   "lines-per-page=44 rlx-extended,"
                   "rlx-undefined=ubar"}));
}

TEST_F(LprngTest, PutsWhatTheFilterHasNoOptionForInFront) {
  const std::string text = numbered_pages("CONDITIONS", 2);
  const std::string front = conditions(
      {{57, "L"}, {59, "B4"}, {62, "P2"}, {66, "B"}, {71, "U"}, {89, "1440"}, {94, "2880"}});
  expect_same_job(filtered(plain(), front + text),
                  print(text, {"-Z",
                               "media=B4,tray-2,sides=two-sided-long-edge,orientation-requested=4,"
                               "page-offset-x=1440,page-offset-y=2880"}));
}

TEST_F(LprngTest, ConvertsText) {
  // Two kanji in EUC-JP and in UTF-8.
  expect_same_job(filtered(plain(), "\xe6\xbc\xa2\xe5\xad\x97\n"),
                  print("\xb4\xc1\xbb\xfa\n", {"-Z", "rlx-charset=EUC-JP"}));
}

TEST_F(LprngTest, KeepsLprngsLettersToItself) {
  const std::string text = numbered_pages("LETTERS", 1);
  expect_same_job(filtered(plain(), text), print(text, {"-J-n NO", "-CZ", "-T-l8", "-R-c12", "-i4",
                                                        "-w100", "-Usomebody", "-b"}));
}

TEST_F(LprngTest, PrintsSeveralFilesAsOneJob) {
  const std::string one = numbered_pages("ONE", 1);
  const std::string two = numbered_pages("TWO", 2);
  const std::string number = server_.submit_files("q", {one, two}, {"-Z", "form=LABEL"});
  EXPECT_TRUE(server_.wait_for_state("q", number, "done")) << server_.status("q");
  const auto& jobs = printer_.wait_for_jobs(1);
  ASSERT_EQ(jobs.size(), 1U);
  const std::vector<std::string> options = with_form("LABEL");
  expect_same_job(filtered(options, one) + filtered(options, two), jobs[0]);
}

TEST_F(LprngTest, SendsAJobInThePrintersLanguageAsItIs) {
  const std::string text = numbered_pages("RLX", 2);
  const std::string job = filtered({"-L", "50"}, text);
  expect_same_job(job, print(job, {"-Z", "form=INVOICE"}));
  expect_same_job(job + job, print(job, {"-Z", "copies=2"}));
}

TEST_F(LprngTest, LetsThePrinterMakeCopies) {
  const std::string text = numbered_pages("COPIES", 2);
  const PrinterJob job = print(text, {"-Z", "copies=4"});
  expect_same_job(filtered(plain(), conditions({{14, "4"}}) + text), job);
  EXPECT_EQ(job.impressions, 8U);
  EXPECT_NE(server_.status("q").find("'8 pages, "), std::string::npos) << server_.status("q");
}

TEST_F(LprngTest, SendsAJobWithConditionsOfItsOwnAsOftenAsItIsWanted) {
  const std::string text = own_conditions() + numbered_pages("COPIES", 2);
  const std::string once = filtered(plain(), text);
  const PrinterJob job = print(text, {"-Z", "copies=4", "-b"});
  expect_same_job(once + once + once + once, job);
  EXPECT_EQ(job.impressions, 8U);
}

TEST_F(LprngTest, LetsLprngMakeCopies) {
  const std::string text = numbered_pages("COPIES", 2);
  const std::string once = filtered(plain(), text);
  const PrinterJob job = print(text, {"-K3"});
  expect_same_job(once + once + once, job);
  EXPECT_EQ(job.impressions, 6U);
}

TEST_F(LprngTest, HoldsAJobThatWantsCopiesOfCopies) {
  hold("TEXT\n", {"-K3", "-Z", "copies=2"},
       "option copies=2 and lpr -K 3 ask for copies of copies: use one of them");
  EXPECT_TRUE(printer_.wait_for_jobs(1, Seconds(0.3)).empty());
}

TEST_F(LprngTest, HoldsAJobWhoseFormIsMissing) {
  const std::string text = numbered_pages("WAITS", 2);
  const std::string number =
      hold(text, {"-Z", "form=LATER"},
           "form LATER is missing; it was looked for as " + forms() + "/fcbe/LATER");
  // The queue goes on.
  expect_same_job(filtered(plain(), "NEXT\n"), print("NEXT\n"));
  EXPECT_EQ(server_.job("q", number).state, "hold");
  EXPECT_EQ(count_of("job " + number + " is held", server_.status("q")), 1U);
  put_form("LATER", "print 2 28800\nlpi 900 32\n");
  release(number);
  EXPECT_TRUE(server_.wait_for_state("q", number, "done")) << server_.status("q");
  const auto& jobs = printer_.wait_for_jobs(2);
  ASSERT_EQ(jobs.size(), 2U);
  expect_same_job(filtered(with_form("LATER"), text), jobs[1]);
}

TEST_F(LprngTest, HoldsAJobWhoseFormIsWrong) {
  put_form("BAD", "print 2 28800\nlpi 900 nonsense\n");
  const std::string text = numbered_pages("MENDED", 2);
  const std::string number = hold(text, {"-Z", "form=BAD"}, "form BAD: ");
  EXPECT_NE(server_.status("q").find("/fcbe/BAD:2:"), std::string::npos) << server_.status("q");
  expect_same_job(filtered(plain(), "NEXT\n"), print("NEXT\n"));
  put_form("BAD", "print 2 28800\nlpi 900 32\n");
  release(number);
  EXPECT_TRUE(server_.wait_for_state("q", number, "done")) << server_.status("q");
  const auto& jobs = printer_.wait_for_jobs(2);
  ASSERT_EQ(jobs.size(), 2U);
  expect_same_job(filtered(with_form("BAD"), text), jobs[1]);
}

TEST_F(LprngTest, HoldsJobsThatAskForWhatCannotBe) {
  hold("TEXT\n", {"-Z", "lpi=5"}, "option lpi=5: wanted is 3, 4, 6, 8 or 12");
  hold("TEXT\n", {"-Z", "form=../etc/passwd"}, "option form=../etc/passwd: wanted is the name");
  hold("TEXT\n", {"-Z", "fomr=INVOICE"}, "there is no option fomr; rlx-lpd(8) lists them");
  hold("\xb4\xff\n", {"-Z", "rlx-charset=EUC-JP", "-b"},
       "byte 0 of the job: this is no character of EUC-JP");
  EXPECT_TRUE(printer_.jobs().empty());
  expect_same_job(filtered(plain(), "NEXT\n"), print("NEXT\n"));
}

TEST_F(LprngTest, HoldsJobsOfAQueueThatIsSetUpWrongly) {
  const std::string number = server_.submit("wrong", "TEXT\n");
  EXPECT_TRUE(server_.wait_for_state("wrong", number, "hold"));
  EXPECT_NE(
      server_.status("wrong").find("the printcap entry is wrong: --mode=5: wanted is 1, 2, 3, "
                                   "4, 6 or 7"),
      std::string::npos)
      << server_.status("wrong");
  EXPECT_TRUE(printer_.jobs().empty());
}

/// A queue that says what its printer is.
class LprngSettingsTest : public LprngTest {
 protected:
  LprngSettingsTest()
      : LprngTest(
            "--mode 3 --capabilities=D240!D400 --resolution=400 --flags=D "
            "--options=form=INVOICE,lpi=8 --verbose") {}
};

TEST_F(LprngSettingsTest, SettingsOfTheQueueComeFirst) {
  const std::string text = numbered_pages("QUEUE", 2);
  const std::vector<std::string> queue{"-E", "-D", "-G", "D240!D400", "-e", "400"};
  std::vector<std::string> options = queue;
  options.insert(options.end(), {"-l", "8", "-p", forms(), "-n", "INVOICE"});
  expect_same_job(filtered(options, text), print(text));
  EXPECT_NE(server_.status("q").find("zqeuctorlx -E -D -G 'D240!D400' -e 400 -l 8 -p "),
            std::string::npos)
      << server_.status("q");
  options = queue;
  options.insert(options.end(), {"-l", "6", "-p", forms()});
  expect_same_job(filtered(options, text), print(text, {"-Z", "lpi=6,form=None"}));
}

/// Waits until a job's filter has ended: lpd has forgotten it then.
bool filters_end(LprngServer& server, Seconds patience) {
  return comes_true(patience, [&server] {
    return server.processes_of("rlx-lpd").empty() && server.processes_of("zqeuctorlx").empty();
  });
}

TEST_F(LprngTest, EndsACancelledJobInThePrinter) {
  const std::string text = numbered_pages("CANCELLED", 20000, 60);
  for (const std::uint64_t bytes : {1U, 100U, 5000U, 100000U, 1000000U}) {
    const std::size_t before = printer_.jobs().size();
    printer_.tell("stall " + std::to_string(bytes));
    const std::string number = server_.submit("q", text);
    ASSERT_TRUE(printer_.wait_for_stall()) << server_.status("q");
    const Outcome outcome = server_.run({"lprm", "-Pq", number});
    EXPECT_NE(outcome.output.find("dequeued"), std::string::npos) << outcome.output;
    printer_.tell("go");
    EXPECT_TRUE(filters_end(server_, Seconds(10)));
    const auto& jobs = printer_.wait_for_jobs(before + 1);
    ASSERT_EQ(jobs.size(), before + 1);
    EXPECT_TRUE(jobs[before].is_whole()) << bytes;
    EXPECT_GT(jobs[before].pages, 0U);
    EXPECT_LT(jobs[before].pages, 20000U);
    EXPECT_EQ(server_.job("q", number).state, "");
  }
  expect_same_job(filtered(plain(), "NEXT\n"), print("NEXT\n"));
}

class LongLprngImpatientTest : public LprngTest {
 protected:
  LongLprngImpatientTest() : LprngTest("--cancel-seconds=1") {}
};

TEST_F(LongLprngImpatientTest, LeavesNoProcessWhenThePrinterTakesNothingMore) {
  printer_.tell("stall 1000");
  const std::string number = server_.submit("q", numbered_pages("STUCK", 20000, 60));
  ASSERT_TRUE(printer_.wait_for_stall());
  server_.run({"lprm", "-Pq", number});
  EXPECT_TRUE(filters_end(server_, Seconds(5)));
  printer_.tell("go");
  expect_same_job(filtered(plain(), "NEXT\n"), [this] {
    const std::string next = server_.submit("q", "NEXT\n");
    EXPECT_TRUE(server_.wait_for_state("q", next, "done")) << server_.status("q");
    const auto& jobs = printer_.wait_for_jobs(2);
    return jobs.size() < 2 ? PrinterJob() : jobs[1];
  }());
}

/// A queue that forgets jobs that are printed, as lpd does by itself.
class LongLprngForgetfulTest : public LprngTest {
 protected:
  LongLprngForgetfulTest() : LprngTest("", " :done_jobs#0\n") {}
};

TEST_F(LongLprngForgetfulTest, KeepsAJobWhoseFilterWasKilled) {
  const std::string text = numbered_pages("KILLED", 20000, 60);
  printer_.tell("stall 100000");
  const std::string number = server_.submit("q", text);
  ASSERT_TRUE(printer_.wait_for_stall());
  for (const pid_t filter : server_.processes_of("rlx-lpd")) {
    kill(filter, SIGKILL);
  }
  EXPECT_TRUE(filters_end(server_, Seconds(5)));
  printer_.tell("go");
  EXPECT_TRUE(server_.wait_for_state("q", number, "error")) << server_.status("q");
  EXPECT_EQ(server_.run({"lpc", "redo", "q", number}).status, 0);
  const auto& jobs = printer_.wait_for_jobs(2);
  ASSERT_EQ(jobs.size(), 2U) << server_.status("q");
  EXPECT_FALSE(jobs[0].is_whole());
  expect_same_job(filtered(plain(), text), jobs[1]);
  EXPECT_TRUE(server_.wait_for_state("q", number, "")) << server_.status("q");
}

TEST_F(LongLprngTest, PrintsAJobAgainWhoseFilterWasToldToEnd) {
  const std::string text = numbered_pages("ENDED", 20000, 60);
  printer_.tell("stall 100000");
  const std::string number = server_.submit("q", text);
  ASSERT_TRUE(printer_.wait_for_stall());
  for (const pid_t filter : server_.processes_of("rlx-lpd")) {
    kill(filter, SIGTERM);
  }
  printer_.tell("go");
  EXPECT_TRUE(server_.wait_for_state("q", number, "done")) << server_.status("q");
  const auto& jobs = printer_.wait_for_jobs(2);
  ASSERT_EQ(jobs.size(), 2U) << server_.status("q");
  EXPECT_TRUE(jobs[0].is_whole());
  EXPECT_LT(jobs[0].pages, 20000U);
  expect_same_job(filtered(plain(), text), jobs[1]);
}

TEST_F(LprngTest, WaitsForAPrinterThatIsAway) {
  printer_.tell("away");
  const std::string text = numbered_pages("AWAY", 2);
  const std::string number = server_.submit("q", text);
  EXPECT_TRUE(comes_true(Seconds(20), [this] {
    return server_.status("q").find("Connection refused") != std::string::npos;
  })) << server_.status("q");
  EXPECT_TRUE(printer_.jobs().empty());
  printer_.tell("back");
  EXPECT_TRUE(server_.wait_for_state("q", number, "done", Seconds(30))) << server_.status("q");
  const auto& jobs = printer_.wait_for_jobs(1);
  ASSERT_EQ(jobs.size(), 1U);
  expect_same_job(filtered(plain(), text), jobs[0]);
}

TEST_F(LongLprngTest, PrintsAgainWhenThePrinterWentAwayInTheMiddle) {
  const std::string text = numbered_pages("AGAIN", 20000, 60);
  for (const std::uint64_t bytes : {1U, 70000U, 2000000U}) {
    const std::size_t before = printer_.jobs().size();
    printer_.tell("close " + std::to_string(bytes));
    const std::string number = server_.submit("q", text);
    EXPECT_TRUE(server_.wait_for_state("q", number, "done", Seconds(30))) << server_.status("q");
    EXPECT_NE(server_.status("q").find("job " + number +
                                       " is tried again: the output was not taken "
                                       "to its end: "),
              std::string::npos)
        << server_.status("q");
    const auto& jobs = printer_.wait_for_jobs(before + 2);
    ASSERT_EQ(jobs.size(), before + 2);
    EXPECT_EQ(jobs[before].end, "closed by the printer");
    expect_same_job(filtered(plain(), text), jobs[before + 1]);
  }
}

}  // namespace
}  // namespace rlx::testing
