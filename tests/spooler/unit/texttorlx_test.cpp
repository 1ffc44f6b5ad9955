// The CUPS filter as CUPS runs it: arguments, environment, messages, exit statuses, signals.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "mapping/condition_command.h"
#include "running/child_process.h"
#include "spooler/unit/small_ppd.h"
#include "spooler/unit/spooler_rig.h"
#include "support/descriptors.h"
#include "texttorlx/messages.h"
#include "tools/read_job.h"
#include "tools/tool_run.h"

namespace rlx::texttorlx {
namespace {

using namespace rlx::testing;
namespace fs = std::filesystem;
using Words = std::vector<std::string>;

std::string job_of_three_pages() {
  return "A\fB\fC\f";
}

class TextToRlx : public ::testing::Test {
 protected:
  /// Runs it on a job from standard input.
  ToolOutcome run(const std::string& options, const std::string& job = job_of_three_pages(),
                  const std::string& copies = "1") {
    return run_arguments({"17", "user", "a title", copies, options}, job);
  }

  ToolOutcome run_arguments(const Words& arguments, const std::string& job = "") {
    const std::map<std::string, std::string> environment{{"PPD", ppd_}, {"CONTENT_TYPE", type_}};
    return run_tool(RLX_TEXTTORLX,
                    {.arguments = arguments, .input = job, .environment = environment});
  }

  void write_ppd(const std::string& lines) {
    write_file("queue.ppd", small_ppd(lines));
    ppd_ = scratch_.path() + "/queue.ppd";
  }

  static std::string by_hand(const std::string& job, const Words& arguments = {}) {
    return run_tool(RLX_SANDBOXED_PROGRAM, {.arguments = arguments, .input = job}).output;
  }

  ScratchDirectory scratch_;
  std::string ppd_;
  std::string type_ = "application/vnd.rlx-lines";
};

/// The lines of one kind, without the prefix; those of the state with their sign.
Words lines_of(const ToolOutcome& outcome, const std::string& prefix) {
  Words all;
  std::istringstream lines(outcome.messages);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(prefix + ": ")) {
      all.push_back(line.substr(prefix.size() + 2));
    }
  }
  return all;
}

/// Nothing is printed, and these are the words.
void expect_error(const ToolOutcome& outcome, const std::string& words) {
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(lines_of(outcome, "ERROR"), Words({words}));
  EXPECT_EQ(lines_of(outcome, "PAGE"), Words());
  EXPECT_EQ(outcome.output, "");
}

TEST_F(TextToRlx, PrintsStandardInput) {
  const ToolOutcome outcome = run("");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, by_hand(job_of_three_pages()));
  EXPECT_EQ(lines_of(outcome, "PAGE"), Words({"1 1", "2 1", "3 1"}));
  EXPECT_EQ(lines_of(outcome, "ERROR"), Words());
  EXPECT_EQ(lines_of(outcome, "STATE"), Words());
  const std::string filter = fs::path(RLX_TEXTTORLX).parent_path() / "zqeuctorlx";
  EXPECT_EQ(lines_of(outcome, "DEBUG"), Words({"running " + filter}));
  const Words info = lines_of(outcome, "INFO");
  ASSERT_EQ(info.size(), 1U);
  const std::string summary =
      "3 pages, " + std::to_string(outcome.output.size()) + " bytes, no form, ";
  EXPECT_EQ(info[0].substr(0, summary.size()), summary);
  EXPECT_EQ(info[0].substr(info[0].size() - 8), " seconds");
}

TEST_F(TextToRlx, PrintsAFile) {
  write_file("job", "A\f");
  const ToolOutcome outcome =
      run_arguments({"17", "user", "title", "1", "", scratch_.path() + "/job"}, "not this");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, by_hand("A\f"));
  const Words info = lines_of(outcome, "INFO");
  ASSERT_EQ(info.size(), 1U);
  EXPECT_EQ(info[0].substr(0, 8), "1 page, ");
}

TEST_F(TextToRlx, TakesOptionsAsCupsWritesThem) {
  const ToolOutcome outcome =
      run("lpi=8 media=iso_a3_297x420mm cpi=12 job-uuid='urn:x y' rlx-extended noCollate "
          "number-up=2");
  EXPECT_EQ(outcome.status, 0);
  spooler::JobSettings settings;
  settings.paper = spooler::Paper::a3;
  EXPECT_EQ(outcome.output, by_hand(condition_command(settings, 1) + job_of_three_pages(),
                                    {"-P", "-c", "12", "-l", "8"}));
}

TEST_F(TextToRlx, MakesCopiesByTheirArgument) {
  const ToolOutcome outcome = run("copies=9", job_of_three_pages(), "4");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.output.find("CPS=4\n"), std::string::npos);
  EXPECT_EQ(lines_of(outcome, "PAGE"), Words({"1 4", "2 4", "3 4"}));
  const Words info = lines_of(outcome, "INFO");
  ASSERT_EQ(info.size(), 1U);
  EXPECT_EQ(info[0].substr(0, 10), "12 pages, ");
  expect_error(run("", "A\f", "0"),
               "option copies=0: wanted is a whole number from 1 to 9999; nothing was printed");
  expect_error(run("", "A\f", ""),
               "option copies=: wanted is a whole number from 1 to 9999; nothing was printed");
}

TEST_F(TextToRlx, TakesTheQueueFromItsPpd) {
  write_file("forms/fcbe/THREE", "print 3\n");
  write_ppd("*rlxEmulationMode: \"6\"\n*rlxFormDirectories: \"" + scratch_.path() + "/forms\"\n" +
            ppd_option("form", "THREE", {"None", "THREE"}) +
            ppd_option("lpi", "8", {"Default", "8"}));
  const std::string forms = scratch_.path() + "/forms";
  const ToolOutcome outcome = run("");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output,
            by_hand(job_of_three_pages(), {"-Q", "-l", "8", "-p", forms, "-n", "THREE"}));
  // The state that says that a form is missing is taken away.
  EXPECT_EQ(lines_of(outcome, "STATE"), Words({"-rlx-form-missing-warning"}));
  EXPECT_NE(lines_of(outcome, "INFO").at(0).find(", form THREE, "), std::string::npos);
  // What the job says counts more.
  const ToolOutcome other = run("form=None lpi=Default");
  EXPECT_EQ(other.output, by_hand(job_of_three_pages(), {"-Q", "-p", forms}));
  EXPECT_EQ(lines_of(other, "STATE"), Words());
}

TEST_F(TextToRlx, RefusesAWrongOption) {
  expect_error(run("lpi=5"), "option lpi=5: wanted is 3, 4, 6, 8 or 12; nothing was printed");
  expect_error(run("form=../secret"),
               "option form=../secret: wanted is the name of a form: letters, digits, - and _; "
               "nothing was printed");
}

TEST_F(TextToRlx, RefusesAWrongQueue) {
  write_ppd("*rlxEmulationMode: \"5\"\n");
  expect_error(run(""),
               "the queue is set up wrongly: option rlxEmulationMode=5: wanted is 1, 2, 3, 4, 6 "
               "or 7");
  write_ppd("*rlxResolution: \"fine\"\n");
  expect_error(run(""),
               "the queue is set up wrongly: option rlxResolution=fine: wanted is a whole number");
  write_ppd(ppd_option("lpi", "5", {"5"}));
  expect_error(run(""), "the queue is set up wrongly: option lpi=5: wanted is 3, 4, 6, 8 or 12");
  ppd_ = "/nowhere/queue.ppd";
  expect_error(run(""), "the queue's PPD file /nowhere/queue.ppd: Unable to open PPD file");
}

TEST_F(TextToRlx, TellsOfAMissingForm) {
  const ToolOutcome outcome = run("form=GONE");
  expect_error(outcome,
               "form GONE is missing; it was looked for as /usr/local/lib/PXLQlp/fcbe/GONE; put "
               "it there, then let the job print again");
  EXPECT_EQ(lines_of(outcome, "STATE"), Words({"+rlx-form-missing-warning"}));
}

TEST_F(TextToRlx, TellsOfAWrongForm) {
  write_file("forms/fcbe/WRONG", "lpi 1200 6\nprint 1\nlpi 1 1\n");
  write_ppd("*rlxFormDirectories: \"" + scratch_.path() + "/forms\"\n");
  const ToolOutcome outcome = run("form=WRONG");
  EXPECT_EQ(outcome.status, 1);
  const Words errors = lines_of(outcome, "ERROR");
  ASSERT_EQ(errors.size(), 1U);
  const std::string begin = "form WRONG: " + scratch_.path() + "/forms/fcbe/WRONG:3: ";
  EXPECT_EQ(errors[0].substr(0, begin.size()), begin);
  EXPECT_EQ(lines_of(outcome, "STATE"), Words());
}

TEST_F(TextToRlx, TellsOfAFileThatIsNotThere) {
  expect_error(run_arguments({"17", "user", "title", "1", "", "/nowhere/job"}),
               "the job's file /nowhere/job: No such file or directory");
}

TEST_F(TextToRlx, TellsOfMissingStandardInput) {
  const ToolOutcome outcome = run_tool(
      RLX_TEXTTORLX,
      {.arguments = {"17", "user", "title", "1", ""}, .prepare = [] { close(STDIN_FILENO); }});
  expect_error(outcome, "standard input: Bad file descriptor");
}

TEST_F(TextToRlx, ConvertsText) {
  EXPECT_EQ(run("rlx-charset=Shift_JIS", "\x93\xfa\f").output, by_hand("\xe6\x97\xa5\f"));
  expect_error(run("rlx-charset=Shift_JIS", "A\xff"),
               "byte 1 of the job: this is no character of Shift_JIS; nothing was printed; name "
               "the encoding of the text with the option rlx-charset");
}

TEST_F(TextToRlx, CountsAJobInThePrintersLanguage) {
  const std::string rlx = by_hand(job_of_three_pages());
  type_ = "application/vnd.rlx";
  const ToolOutcome outcome = run("lpi=8 form=GONE", rlx, "2");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, rlx + rlx);
  EXPECT_EQ(lines_of(outcome, "PAGE"), Words({"1 1", "2 1", "3 1", "4 1", "5 1", "6 1"}));
  EXPECT_EQ(lines_of(outcome, "DEBUG"), Words());
  // It was printed without the form, so nothing is known of that.
  EXPECT_EQ(lines_of(outcome, "STATE"), Words());
  const Words info = lines_of(outcome, "INFO");
  ASSERT_EQ(info.size(), 1U);
  EXPECT_NE(info[0].find(" bytes, no form, "), std::string::npos) << info[0];
}

TEST_F(TextToRlx, RefusesBannerPages) {
  for (const char* const type :
       {"application/vnd.cups-banner", "application/vnd.cups-pdf-banner"}) {
    type_ = type;
    expect_error(
        run("job-sheets=standard,none"),
        "the job has a banner page, which the printer cannot print; the rest of the job is "
        "printed without it: cancel the job, and submit the next one with -o "
        "job-sheets=none");
  }
}

TEST_F(TextToRlx, SaysNothingThatATerminalObeys) {
  expect_error(run("form=A\033[31m\377B"),
               "option form=A?[31m?B: wanted is the name of a form: letters, digits, - and _; "
               "nothing was printed");
}

/// As cupsd reads it: what it finds unread when the process has ended comes too late.
TEST_F(TextToRlx, EndsWhenItsErrorIsRead) {
  spooler::Pipe messages = spooler::make_pipe();
  const StandardInput input("A\f");
  const pid_t child = fork();
  if (child == 0) {
    dup2(messages.write_end.number(), STDERR_FILENO);
    execl(RLX_TEXTTORLX, "texttorlx", "1", "user", "title", "1", "lpi=5", nullptr);
    _exit(126);
  }
  messages.write_end.reset();
  pollfd waiting{messages.read_end.number(), POLLIN, 0};
  ASSERT_EQ(poll(&waiting, 1, 20000), 1);
  usleep(200000);
  EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0);
  std::array<std::uint8_t, 1000> room{};
  EXPECT_GT(spooler::read_some(messages.read_end.number(), room, "messages"), 0U);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(WEXITSTATUS(status), 1);
}

TEST_F(TextToRlx, RefusesWhatIsNoJob) {
  write_file("job.gz", "\x1f\x8b\x08");
  expect_error(run_arguments({"17", "user", "title", "1", "", scratch_.path() + "/job.gz"}),
               "the job is compressed with gzip; submit what is in it");
  type_ = "application/octet-stream";
  expect_error(run(""),
               "the job is neither text nor a job with control sequences that is recognised; if "
               "it is for a line printer, submit it with -o "
               "document-format=application/vnd.rlx-lines");
}

TEST_F(TextToRlx, TellsItsUse) {
  for (const Words& arguments : {Words(), Words({"1", "2", "3", "4"}),
                                 Words({"1", "2", "3", "4", "5", "6", "7"}), Words({"--helf"})}) {
    const ToolOutcome outcome = run_arguments(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(lines_of(outcome, "ERROR"), Words({"texttorlx takes five or six arguments, not " +
                                                 std::to_string(arguments.size())}));
    EXPECT_NE(outcome.messages.find("Usage: texttorlx JOB USER TITLE"), std::string::npos);
  }
  EXPECT_EQ(run_arguments({"--version"}).output, "texttorlx " RLX_VERSION "\n");
  const ToolOutcome help = run_arguments({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.output.substr(0, 17), "Usage: texttorlx ");
}

/// How it ends when its output goes to a descriptor.
int status_with_output(int descriptor, std::string& messages) {
  const StandardInput input(std::string(300000, '\f'));
  const CaptureDescriptor caught(STDERR_FILENO);
  const pid_t child = fork();
  if (child == 0) {
    dup2(descriptor, STDOUT_FILENO);
    execl(RLX_TEXTTORLX, "texttorlx", "1", "user", "title", "1", "", nullptr);
    _exit(126);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  messages = caught.text();
  return status;
}

TEST_F(TextToRlx, EndsByTheBrokenPipeOfItsReader) {
  spooler::Pipe gone = spooler::make_pipe();
  gone.read_end.reset();
  std::string messages;
  const int status = status_with_output(gone.write_end.number(), messages);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGPIPE);
  EXPECT_EQ(messages.find("ERROR"), std::string::npos);
}

TEST_F(TextToRlx, TellsThatItsOutputHasNoRoom) {
  const spooler::Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
  std::string messages;
  const int status = status_with_output(full.number(), messages);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_NE(messages.find("ERROR: the output was not taken to its end: No space left on device\n"),
            std::string::npos);
}

/// Whoever starts it may have switched off that the ends of processes can be waited for.
TEST_F(TextToRlx, KnowsTheEndOfTheFilterInAnyCase) {
  const ToolOutcome outcome = run_tool(
      RLX_TEXTTORLX, {.arguments = {"17", "user", "title", "1", ""}, .input = "A\f", .prepare = [] {
                        std::signal(SIGCHLD, SIG_IGN);
                      }});
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
}

/// The processes whose parent is this one.
Words children_of(pid_t parent) {
  Words all;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) {
      continue;
    }
    std::ifstream file(entry.path() / "stat");
    std::string line;
    std::getline(file, line);
    std::istringstream rest(line.substr(std::min(line.rfind(')') + 1, line.size())));
    std::string state;
    pid_t its_parent = 0;
    rest >> state >> its_parent;
    if (its_parent == parent) {
      all.push_back(name);
    }
  }
  return all;
}

/// A host that never ends its job, and a spooler that wants the end: the whole group is signalled,
/// or this process alone.
void expect_end_on_signal(int signal, bool group, const std::string& options) {
  SCOPED_TRACE(std::to_string(signal) + (group ? " group " : " process ") + options);
  const IgnoredBrokenPipe ignored;
  spooler::Pipe job = spooler::make_pipe();
  PipeReader printer;
  const CaptureDescriptor caught(STDERR_FILENO);
  const pid_t child = fork();
  if (child == 0) {
    setpgid(0, 0);
    alarm(30);
    dup2(job.read_end.number(), STDIN_FILENO);
    dup2(printer.descriptor(), STDOUT_FILENO);
    execl(RLX_TEXTTORLX, "texttorlx", "1", "user", "title", "1", options.c_str(), nullptr);
    _exit(126);
  }
  put_bytes(job.write_end.number(), "A\fB\fC");
  EXPECT_TRUE(
      comes_true([child, &options] { return !options.empty() || !children_of(child).empty(); }));
  usleep(100000);
  const Words filters = children_of(child);
  kill(group ? -child : child, signal);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(caught.text().find("ERROR"), std::string::npos) << caught.text();
  for (const std::string& filter : filters) {
    EXPECT_FALSE(is_running(std::stoi(filter)));
  }
  const FoundJob found = read_job(printer.text());
  EXPECT_EQ(shown_faults(found), "");
  if (options.empty()) {
    EXPECT_EQ(found.pages_begun, 3U);
    ASSERT_FALSE(found.blocks.empty());
    EXPECT_EQ(found.blocks.back().block.use, reader::BlockUse::job_end);
  }
}

TEST_F(TextToRlx, EndsThePrintersJobWhenItIsCancelled) {
  for (const bool group : {false, true}) {
    expect_end_on_signal(SIGTERM, group, "");
    // Nothing was sent yet: the whole job is needed first.
    expect_end_on_signal(SIGTERM, group, "rlx-charset=EUC-JP");
  }
  expect_end_on_signal(SIGINT, false, "");
}

TEST(Messages, AreOneLineEach) {
  const CaptureDescriptor caught(STDERR_FILENO);
  error("one\ntwo\n");
  info("");
  debug("d");
  page(12345678901ULL, 9999);
  add_state("a");
  remove_state("b");
  EXPECT_EQ(caught.text(),
            "ERROR: one two \nINFO: \nDEBUG: d\nPAGE: 12345678901 9999\nSTATE: +a\nSTATE: -b\n");
}

}  // namespace
}  // namespace rlx::texttorlx
