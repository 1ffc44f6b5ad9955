// The program as a whole: what it writes where, and its exit status.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>

#include "rlxdump/base64.h"
#include "rlxdump/shown_text.h"
#include "support/descriptors.h"
#include "support/escaped_bytes.h"
#include "tools/dump_job.h"
#include "tools/sample_streams.h"
#include "tools/tool_run.h"

namespace rlx::testing {
namespace {

struct ProgramRun {
  int status = 0;
  std::string output;
  std::string messages;
};

/// Runs a command line of the shell, in which rlxdump stands for the program. The current directory
/// holds good, bad, other (jobs) and framed.
class RlxDump : public ::testing::Test {
 protected:
  RlxDump() {
    write_file("good", job_of_two_pages());
    write_file("other", job_of_short_pages());
    write_file("bad", first_header() + rlx_block('2', "A\f", 1) + job_end());
    write_file("framed", rlx_frame("AB\n", false) + rlx_frame("C\f", true));
  }

  static ProgramRun run(const std::string& command) {
    const std::string shell = "rlxdump() { '" RLX_DUMP_PROGRAM "' \"$@\"; }; " + command;
    ProgramRun result;
    write_file("command", shell);
    result.status = std::system("sh command > out 2> err");
    result.status = WIFEXITED(result.status) ? WEXITSTATUS(result.status) : -1;
    result.output = read_file("out");
    result.messages = read_file("err");
    return result;
  }

  const ScratchDirectory scratch_;
};

TEST_F(RlxDump, DumpsAFileOrStandardInput) {
  const std::string expected = text_dump(job_of_two_pages());
  for (const char* const command : {"rlxdump good", "rlxdump < good", "rlxdump - < good",
                                    "cat good | rlxdump", "rlxdump -- good"}) {
    const ProgramRun result = run(command);
    EXPECT_EQ(result.status, 0) << command;
    EXPECT_EQ(result.output, expected);
    EXPECT_EQ(result.messages, "");
  }
}

TEST_F(RlxDump, ShowsAJobInEachWay) {
  EXPECT_EQ(run("rlxdump --pages good").output, page_list(job_of_two_pages()));
  EXPECT_EQ(run("rlxdump --json good").output, json_dump(job_of_two_pages()));
  EXPECT_EQ(run("rlxdump --check good").output, "");
  EXPECT_EQ(run("rlxdump --diff good good").output, "");
  EXPECT_EQ(run("rlxdump --diff good other").output.substr(0, 22), "--- good\n+++ other\n== ");
  EXPECT_EQ(run("rlxdump --diff - other < good").output.substr(0, 21), "--- (standard input)\n");
}

TEST_F(RlxDump, TellsFaultsByItsStatus) {
  const std::string fault =
      "157: wrong count 15: the block has 2 bytes of payload, the count says 3\n";
  const ProgramRun check = run("rlxdump --check bad");
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.output, fault);
  EXPECT_EQ(check.messages, "");
  EXPECT_EQ(run("rlxdump bad").status, 1);
  EXPECT_EQ(run("rlxdump --json bad").status, 1);
  const ProgramRun pages = run("rlxdump --pages bad");
  EXPECT_EQ(pages.status, 1);
  EXPECT_EQ(pages.messages, "rlxdump: bad: " + fault);
  EXPECT_EQ(run("rlxdump --check good").status, 0);
  EXPECT_EQ(run("rlxdump --check framed").status, 0);
  EXPECT_EQ(run("rlxdump --check < /dev/null").status, 0);
  EXPECT_EQ(run("rlxdump --diff good good").status, 0);
  EXPECT_EQ(run("rlxdump --diff good other").status, 1);
}

TEST_F(RlxDump, SaysWhatCannotBeRead) {
  const ProgramRun missing = run("rlxdump --check nowhere");
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.messages, "rlxdump: nowhere: No such file or directory\n");
  const ProgramRun folder = run("rlxdump .");
  EXPECT_EQ(folder.status, 1);
  EXPECT_EQ(folder.messages, "rlxdump: .: byte 0: Is a directory\n");
  EXPECT_EQ(run("rlxdump --diff good nowhere").status, 1);
  EXPECT_EQ(run("rlxdump <&-").status, 1);
}

TEST_F(RlxDump, SaysWhatMustBeConvertedFirst) {
  write_file("report", "TOTAL 12\n");
  const std::string advice =
      ": begins with no block; a line-printer job has to go through zqeuctorlx first\n";
  for (const char* const mode : {"", "--json", "--check"}) {
    const ProgramRun result = run("rlxdump " + std::string(mode) + " report");
    EXPECT_EQ(result.status, 1) << mode;
    EXPECT_EQ(result.messages, "rlxdump: report" + advice) << mode;
  }
  EXPECT_EQ(run("rlxdump --check < report").messages, "rlxdump: (standard input)" + advice);
  EXPECT_EQ(run("rlxdump --check bad").messages, "");
  EXPECT_EQ(run("rlxdump --check framed").messages, "");
}

TEST_F(RlxDump, SaysWhatCannotBeWritten) {
  for (const char* const mode : {"", "--pages", "--json", "--help", "--version"}) {
    const ProgramRun full = run("rlxdump " + std::string(mode) + " good > /dev/full");
    EXPECT_EQ(full.status, 1) << mode;
    EXPECT_EQ(full.messages, "rlxdump: cannot write: No space left on device\n");
  }
  EXPECT_EQ(run("rlxdump --check bad > /dev/full").status, 1);
  EXPECT_EQ(run("rlxdump --diff good other > /dev/full").status, 1);
  EXPECT_EQ(run("rlxdump good >&-").status, 1);
  write_file("long", first_header() + rlx_block('2', std::string(3000000, 'x') + "\f") + job_end());
  const ProgramRun closed = run("{ rlxdump long; echo $? >&2; } | head -c 10");
  // Who reads has seen enough, as in less(1): that is no news to them.
  EXPECT_EQ(closed.messages, "1\n");
}

TEST_F(RlxDump, SaysWhatIsWrongUse) {
  const ProgramRun unknown = run("rlxdump --jsn good");
  EXPECT_EQ(unknown.status, 2);
  EXPECT_EQ(unknown.output, "");
  EXPECT_EQ(unknown.messages, "rlxdump: unknown option --jsn; rlxdump --help tells more\n");
  EXPECT_EQ(run("rlxdump good other").status, 2);
  EXPECT_EQ(run("rlxdump --diff good").status, 2);
}

TEST_F(RlxDump, HelpsAndHasAVersion) {
  const ProgramRun help = run("rlxdump --help");
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.output.substr(0, 30), "usage: rlxdump [OPTION] [FILE]");
  EXPECT_EQ(run("rlxdump --version").output, "rlxdump " RLX_VERSION "\n");
}

TEST_F(RlxDump, PaintsOnATerminalOnly) {
  const auto painted = [](const std::string& output) {
    return output.find("\x1b[") != std::string::npos;
  };
  EXPECT_FALSE(painted(run("rlxdump good").output));
  EXPECT_FALSE(painted(run("rlxdump --color=auto good").output));
  EXPECT_TRUE(painted(run("rlxdump --color=always good").output));
  EXPECT_TRUE(painted(run("NO_COLOR=1 rlxdump --color=always good").output));
  EXPECT_TRUE(painted(run("rlxdump --color=always --diff good other").output));
  // On a terminal, which script(1) makes where it is installed.
  const std::string terminal = "TERM=xterm script -qec '" RLX_DUMP_PROGRAM " good' /dev/null";
  if (!testing::has_terminals()) {
    GTEST_SKIP() << "no pseudo terminals here: /dev/pts is not mounted";
  }
  if (run("command -v script").status == 0) {
    EXPECT_TRUE(painted(run("unset NO_COLOR; " + terminal).output));
    EXPECT_FALSE(painted(run("NO_COLOR=1 " + terminal).output));
  }
}

TEST(TextDumps, SayWhatIsWrongWhereItLies) {
  const std::string dump = text_dump(first_header() + rlx_block('2', "A\f") + "junk" + job_end());
  EXPECT_NE(dump.find("       175  !! data outside blocks\n"
                      "       175  outside                 6a 75 6e 6b\n"),
            std::string::npos)
      << dump;
  EXPECT_NE(dump.find("1 page, 7 blocks, 203 bytes, 1 fault\n"), std::string::npos) << dump;
}

TEST(TextDumps, ShowACutPieceInFrontOfTheFinalFormFeed) {
  for (const std::string_view cut : {"\xe3\x81", "\x1bQ1"}) {
    const std::string dump = text_dump(first_header() + rlx_block('2', "A" + std::string(cut)) +
                                       rlx_block('0', "\f") + job_end());
    const std::size_t piece = dump.find("\n       174    ");
    const std::size_t form_feed = dump.find("  form feed               kind 0");
    ASSERT_NE(piece, std::string::npos) << dump;
    ASSERT_NE(form_feed, std::string::npos) << dump;
    EXPECT_LT(piece, form_feed) << dump;
  }
}

/// The last line of a dump.
std::string summary_of(const std::string& stream) {
  const std::string dump = text_dump(stream);
  return dump.substr(dump.rfind('\n', dump.size() - 2) + 1);
}

TEST(TextDumps, CountPagesThatHaveData) {
  const std::string page = first_header() + rlx_block('2', "A\f");
  EXPECT_EQ(summary_of(page + rlx_parameters(kFixedText)).substr(0, 18), "1 page, 7 blocks, ");
  EXPECT_EQ(summary_of(rlx_frame("", true)), "0 pages, 1 frame, 16 bytes, no faults\n");
  EXPECT_EQ(summary_of(rlx_frame("A\f", false) + rlx_frame("", true)),
            "1 page, 2 frames, 34 bytes, no faults\n");
  EXPECT_EQ(summary_of(rlx_frame("", false) + rlx_frame("A\f", false) + rlx_frame("B", true)),
            "2 pages, 3 frames, 51 bytes, no faults\n");
}

TEST(TextDumps, DataThatAJobLeavesOpenEndsWithItsFollower) {
  // The first job has no end, and 97 bytes are missing behind its last sequence.
  const std::string open = first_header() + rlx_block('2', "\x1bQ1;100!aABC");
  const std::string dump = text_dump(open + first_header() + rlx_block('2', "TEXT\f") + job_end());
  EXPECT_NE(dump.find("data                  41 42 43\n"), std::string::npos) << dump;
  EXPECT_NE(dump.find("text                  \"TEXT\"\n"), std::string::npos) << dump;
}

TEST(TextDumps, ShowGlyphs) {
  const std::string download =
      "\x1c"
      "0\"r\x1c"
      "21u!" +
      std::string(132, '0');
  const std::string dump = text_dump(rlx_frame(download + "u!\f", true));
  EXPECT_NE(
      dump.find("20    glyph                 FS \"21u!\" ...               code \"u!\", 22 x 22 "
                "dots, 132 bytes\n"),
      std::string::npos)
      << dump;
}

TEST(PageLists, HaveALineForEachPage) {
  EXPECT_EQ(page_list(job_of_two_pages()),
            "page      1         31 bytes      2 lines  FIRST MORE\n"
            "page      2          8 bytes      1 lines  SECOND\n");
  EXPECT_EQ(page_list(""), "");
  EXPECT_EQ(page_list(rlx_frame("", true)), "");
  EXPECT_EQ(page_list(first_header()), "");
  EXPECT_EQ(page_list(rlx_frame("A\n\f\nB", false) + rlx_frame("C\f\f", true)),
            "page      1          3 bytes      1 lines  A\n"
            "page      2          4 bytes      1 lines  BC\n"
            "page      3          1 bytes      0 lines  (no text)\n");
}

TEST(PageLists, CutTheFirstWordsBetweenCharacters) {
  std::string text;
  for (int i = 0; i < 60; ++i) {
    text += "\xe3\x81\x82";
  }
  const std::string list = page_list(rlx_frame(text, true));
  EXPECT_EQ(list.substr(list.find("lines  ") + 7), text.substr(0, 3 * 48) + " ...\n");
}

TEST(ShownText, KeepsAJobFromTheTerminal) {
  const auto quoted = [](std::string_view escaped) {
    return dump::quoted(reader_bytes(decode_escaped(escaped).value()));
  };
  EXPECT_EQ(quoted("AB\\\\\""), R"("AB\\\"")");
  EXPECT_EQ(quoted(R"(\xe3\x81\x82\xc3\xa4)"), "\"\xe3\x81\x82\xc3\xa4\"");
  EXPECT_EQ(quoted(R"(\e\n\x7f)"), R"("\x1b\x0a\x7f")");
  EXPECT_EQ(quoted(R"(\xc2\x9b)"), R"("\xc2\x9b")");          // a control character
  EXPECT_EQ(quoted(R"(\xe2\x80\xae)"), R"("\xe2\x80\xae")");  // turns the text around
  EXPECT_EQ(quoted(R"(\xed\xa0\x80)"), R"("\xed\xa0\x80")");  // half of a pair
  EXPECT_EQ(quoted(R"(\xc0\xaf\xf8A)"), R"("\xc0\xaf\xf8A")");
  EXPECT_EQ(quoted(R"(\xf4\x90\x80\x80)"), R"("\xf4\x90\x80\x80")");
  EXPECT_EQ(quoted(R"(\xe3\x81)"), R"("\xe3\x81")");
}

TEST(Base64, IsThereAndBack) {
  EXPECT_EQ(dump::base64(reader_bytes("")), "");
  EXPECT_EQ(dump::base64(reader_bytes("f")), "Zg==");
  EXPECT_EQ(dump::base64(reader_bytes("fo")), "Zm8=");
  EXPECT_EQ(dump::base64(reader_bytes("foobar")), "Zm9vYmFy");
  std::string bytes;
  for (int i = 0; i < 600; ++i) {
    bytes += static_cast<char>(i * 7);
    EXPECT_EQ(dump::from_base64(dump::base64(reader_bytes(bytes))), bytes);
  }
  for (const char* const malformed : {"Zg", "Zg=", "Z===", "Zg=a", "Z*==", "===="}) {
    EXPECT_FALSE(dump::from_base64(malformed).has_value()) << malformed;
  }
}

}  // namespace
}  // namespace rlx::testing
