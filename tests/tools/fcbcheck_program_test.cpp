// The program as it is used.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "fcbcheck/arguments.h"
#include "support/descriptors.h"
#include "tools/tool_run.h"

namespace rlx::fcbcheck {
namespace {

using testing::ToolOutcome;
using testing::ToolRun;
using testing::write_file;

constexpr const char* kEscape = "\x1b[";
constexpr const char* kTry = "Try 'fcbcheck --help'.\n";

/// For ToolRun::prepare: makes a file a standard stream.
void reopen(const char* file, const char* mode, std::FILE* stream) {
  if (std::freopen(file, mode, stream) == nullptr) {
    _exit(1);
  }
}

class FcbcheckProgram : public ::testing::Test {
 protected:
  FcbcheckProgram() {
    write_file("GOOD", "print 2 7200\nlpi 1200 6\n");
    write_file("BAD", "print 300\n");
    write_file("env", "*COMMON\nFCBPRINT:2\n");
  }

  static ToolOutcome run(const ToolRun& how) { return testing::run_tool(RLX_FCBCHECK, how); }
  static ToolOutcome run(std::vector<std::string> arguments, std::string_view input = "") {
    return run(ToolRun{.arguments = std::move(arguments), .input = input});
  }

  static void expect_outcome(const ToolOutcome& outcome, int status, const std::string& output,
                             const std::string& messages) {
    EXPECT_EQ(outcome.status, status);
    EXPECT_EQ(outcome.output, output);
    EXPECT_EQ(outcome.messages, messages);
  }

  const testing::ScratchDirectory scratch_;
};

TEST_F(FcbcheckProgram, SaysNothingAboutAGoodForm) {
  expect_outcome(run({"GOOD"}), 0, "", "");
  expect_outcome(run({"./GOOD"}), 0, "", "");
}

TEST_F(FcbcheckProgram, SaysWhatIsWrong) {
  expect_outcome(run({"BAD"}), 1, "", "BAD:1: print: first line 300 is above 255\n");
}

TEST_F(FcbcheckProgram, GoesOnBehindAWrongForm) {
  expect_outcome(run({"none", "GOOD", "./BAD", "GOOD"}), 1, "",
                 "none:0: No such file or directory\n"
                 "./BAD:1: print: first line 300 is above 255\n");
}

TEST_F(FcbcheckProgram, ReadsStandardInput) {
  expect_outcome(run({}, "lpi 1200 66\n"), 0, "", "");
  expect_outcome(run({}, ""), 0, "", "");
  const std::string fault = "(standard input):1: lpi: no pitch\n";
  expect_outcome(run({}, "lpi"), 1, "", fault);
  expect_outcome(run({"-"}, "lpi"), 1, "", fault);
  expect_outcome(run({"BAD", "-"}, "lpi"), 1, "",
                 "BAD:1: print: first line 300 is above 255\n" + fault);
}

TEST_F(FcbcheckProgram, StandardInputThatCannotBeRead) {
  expect_outcome(run({.prepare = [] { close(STDIN_FILENO); }}), 1, "",
                 "(standard input):0: Bad file descriptor\n");
  write_file("large", "");
  std::filesystem::resize_file("large", (64U << 20U) + 1);
  expect_outcome(run({.prepare = [] { reopen("large", "r", stdin); }}), 1, "",
                 "(standard input):0: File too large\n");
}

TEST_F(FcbcheckProgram, FileWithoutPermission) {
  ASSERT_EQ(chmod("GOOD", 0), 0);
  expect_outcome(run({.arguments = {"GOOD"}, .prepare = testing::obey_file_permissions}), 1, "",
                 "GOOD:0: Permission denied\n");
}

TEST_F(FcbcheckProgram, DirectoryAndFifo) {
  ASSERT_EQ(mkfifo("fifo", 0600), 0);
  expect_outcome(run({".", "fifo"}), 1, "",
                 ".:0: Is a directory\nfifo:0: Not a regular file (FIFO)\n");
}

// Options.

TEST_F(FcbcheckProgram, WrongUse) {
  expect_outcome(run({"--none"}), 2, "",
                 "tool: unrecognized option '--none'\n" + std::string(kTry));
  expect_outcome(run({"-x", "GOOD"}), 2, "", "tool: invalid option -- 'x'\n" + std::string(kTry));
  expect_outcome(run({"--svg"}), 2, "",
                 "tool: option '--svg' requires an argument\n" + std::string(kTry));
  expect_outcome(run({"--svg", "x.svg", "GOOD", "GOOD"}), 2, "",
                 "fcbcheck: --svg makes a picture of one form\n" + std::string(kTry));
  for (const char* const option : {"--show", "--explain"}) {
    expect_outcome(run({"--svg", "-", option, "GOOD"}), 2, "",
                   "fcbcheck: --svg - leaves standard output to the picture\n" + std::string(kTry));
  }
  EXPECT_FALSE(std::filesystem::exists("x.svg"));
}

TEST_F(FcbcheckProgram, HelpAndVersion) {
  expect_outcome(run({"--help", "BAD"}), 0, kHelp, "");
  expect_outcome(run({"--version"}), 0, "fcbcheck " RLX_VERSION "\n", "");
}

TEST_F(FcbcheckProgram, HelpFitsOnAScreen) {
  const std::string help = kHelp;
  EXPECT_LE(std::count(help.begin(), help.end(), '\n'), 24);
}

TEST_F(FcbcheckProgram, OptionsMayFollowTheForms) {
  expect_outcome(run({"GOOD", "--explain"}), 0,
                 "GOOD: length 7200/7200 in = 1 in\n"
                 "GOOD: 6 lines, 1 in: 6 at 6 lines per inch\n"
                 "GOOD: printing starts on line 2, 0.17 in below the top\n",
                 "");
  expect_outcome(run({"--", "--help"}), 1, "", "--help:0: No such file or directory\n");
}

/// The first line of what --explain says of a form of standard input.
std::string explained_length(std::vector<std::string> options, std::string_view form) {
  options.emplace_back("--explain");
  const std::string text =
      testing::run_tool(RLX_FCBCHECK, {.arguments = options, .input = form}).output;
  return text.substr(0, text.find('\n'));
}

TEST_F(FcbcheckProgram, OptionsThatChangeTheReading) {
  const std::string form = "print 1 7200\n";
  const std::string plain = "(standard input): length 7200/7200 in = 1 in";
  const std::string raised = plain +
                             ", raised to the shortest, 25200/7200 in = 3.5 in, whole half inches "
                             "stay: 3.5 in (environment file: half inches on); sent to the printer";
  EXPECT_EQ(explained_length({"--environment", "env"}, form), plain);
  EXPECT_EQ(explained_length({"-E"}, form), plain + "; sent to the printer");
  EXPECT_EQ(explained_length({"-N"}, form), plain + "; sent to the printer");
  EXPECT_EQ(explained_length({"-R", "--environment", "env"}, form), raised);
  EXPECT_EQ(explained_length({"-ER", "--environment=env"}, form), raised);
  EXPECT_EQ(explained_length({"-RE"}, form), plain + "; sent to the printer");
}

TEST_F(FcbcheckProgram, EnvironmentFileThatIsNotThere) {
  expect_outcome(run({"--environment", "none", "GOOD"}), 1, "",
                 "none:0: No such file or directory\n");
}

// Drawings.

TEST_F(FcbcheckProgram, DrawsAsTheLocaleSays) {
  const ToolOutcome utf8 =
      run({.arguments = {"--show", "GOOD"}, .environment = {{"LC_ALL", "C.UTF-8"}}});
  EXPECT_EQ(utf8.status, 0);
  EXPECT_NE(utf8.output.find("│▶   2"), std::string::npos);
  const ToolOutcome ascii =
      run({.arguments = {"--show", "GOOD"}, .environment = {{"LC_ALL", "C"}}});
  EXPECT_EQ(ascii.status, 0);
  EXPECT_NE(ascii.output.find("|>   2"), std::string::npos);
  for (const char byte : ascii.output) {
    EXPECT_TRUE(byte == '\n' || (byte >= ' ' && byte <= '~'));
  }
}

TEST_F(FcbcheckProgram, DrawsSeveralForms) {
  const std::string one =
      run({.arguments = {"--show", "GOOD"}, .environment = {{"LC_ALL", "C"}}}).output;
  expect_outcome(
      run({.arguments = {"--show", "GOOD", "BAD", "GOOD"}, .environment = {{"LC_ALL", "C"}}}), 1,
      one + "\n" + one, "BAD:1: print: first line 300 is above 255\n");
}

TEST_F(FcbcheckProgram, ColoursAreForTerminals) {
  const auto draw = [](const std::map<std::string, std::string>& environment) {
    ToolRun how{.arguments = {"--show", "GOOD"}, .environment = environment};
    how.environment.insert({{"LC_ALL", "C"}, {"TERM", "xterm"}});
    how.prepare = [] {
      if (std::getenv("NO_COLOR") != nullptr && *std::getenv("NO_COLOR") == '-') {
        unsetenv("NO_COLOR");
      }
    };
    return how;
  };
  const auto is_coloured = [](const ToolOutcome& outcome) {
    EXPECT_EQ(outcome.status, 0);
    return outcome.output.find(kEscape) != std::string::npos;
  };
  const auto on_terminal = [&](const std::map<std::string, std::string>& environment) {
    return is_coloured(testing::run_tool_on_terminal(RLX_FCBCHECK, draw(environment)));
  };
  EXPECT_FALSE(is_coloured(run(draw({{"NO_COLOR", "-"}}))));
  if (!testing::has_terminals()) {
    GTEST_SKIP() << "no pseudo terminals here: /dev/pts is not mounted";
  }
  EXPECT_TRUE(on_terminal({{"NO_COLOR", "-"}}));
  EXPECT_TRUE(on_terminal({{"NO_COLOR", ""}}));
  EXPECT_FALSE(on_terminal({{"NO_COLOR", "1"}}));
  EXPECT_FALSE(on_terminal({{"NO_COLOR", "-"}, {"TERM", "dumb"}}));
}

// Pictures.

TEST_F(FcbcheckProgram, WritesAPicture) {
  expect_outcome(run({"--svg", "good.svg", "GOOD"}), 0, "", "");
  const std::string picture = testing::read_file("good.svg");
  EXPECT_TRUE(picture.starts_with("<?xml"));
  EXPECT_NE(picture.find(">GOOD</text>"), std::string::npos);
  expect_outcome(run({"--svg", "-", "GOOD"}), 0, picture, "");
  expect_outcome(run({"--svg", "good.svg", "GOOD"}), 0, "", "");
}

TEST_F(FcbcheckProgram, WritesNoPictureOfAWrongForm) {
  expect_outcome(run({"--svg", "bad.svg", "BAD"}), 1, "",
                 "BAD:1: print: first line 300 is above 255\n");
  EXPECT_FALSE(std::filesystem::exists("bad.svg"));
}

TEST_F(FcbcheckProgram, DoesNotWriteAPictureOverAForm) {
  const std::string before = testing::read_file("GOOD");
  expect_outcome(run({"--svg", "GOOD"}), 1, "",
                 "fcbcheck: GOOD: exists and is no picture; not written over\n");
  EXPECT_EQ(testing::read_file("GOOD"), before);
  write_file("empty", "");
  expect_outcome(run({"--svg", "empty", "GOOD"}), 0, "", "");
}

TEST_F(FcbcheckProgram, OutputThatCannotBeWritten) {
  expect_outcome(run({"--svg", "none/x.svg", "GOOD"}), 1, "",
                 "fcbcheck: none/x.svg: No such file or directory\n");
  expect_outcome(run({"--svg", "/dev/full", "GOOD"}), 1, "",
                 "fcbcheck: /dev/full: No space left on device\n");
  const ToolOutcome full =
      run({.arguments = {"--show", "GOOD"}, .prepare = [] { reopen("/dev/full", "w", stdout); }});
  expect_outcome(full, 1, "", "fcbcheck: standard output: No space left on device\n");
  const ToolOutcome closed =
      run({.arguments = {"--help"}, .prepare = [] { close(STDOUT_FILENO); }});
  expect_outcome(closed, 1, "", "fcbcheck: standard output: Bad file descriptor\n");
}

}  // namespace
}  // namespace rlx::fcbcheck
