#include "forms/fcb.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "job/fixed_paths.h"
#include "support/descriptors.h"
#include "support/environment_file.h"
#include "support/odd_files.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::restart_settings;
using testing::the_filter;

using testing::bytes;
using testing::CaptureDescriptor;
using testing::write_file;

class Fcb : public ::testing::Test {
 protected:
  Fcb() {
    the_filter().messages.program_name = "filter";
    the_filter().environment = {};
  }
  ~Fcb() override {
    restart_settings();
    the_filter().environment = {};
  }

  static ResourceDirectories directory_list(const std::vector<std::string>& names) {
    ResourceDirectories directories;
    for (const std::string& name : names) {
      directories.append(name);
    }
    return directories;
  }

  /// The status of loading a form, whose message it checks.
  Status load_named(const std::string& name, const std::vector<std::string>& directories) {
    const CaptureDescriptor error(STDERR_FILENO);
    const Status status =
        fcb_load(the_filter().forms, name.c_str(), table_, directory_list(directories));
    EXPECT_EQ(error.text(), status == 0 ? "" : "filter: FCB data error\n");
    return status;
  }

  /// The status of loading a form with this text.
  Status load(const std::string& text) {
    write_file("forms/fcbe/FORM", text);
    return load_named("FORM", {"forms"});
  }

  /// Loads a form with this text and expects it to have these lines.
  void expect_lines(const std::string& text, const std::vector<std::uint32_t>& lines) {
    EXPECT_EQ(load(text), 0) << text;
    expect_table(lines, text);
  }

  void expect_table(const std::vector<std::uint32_t>& lines, const std::string& text = "") const {
    std::array<std::uint32_t, 256> expected{};
    std::ranges::copy(lines, expected.begin());
    EXPECT_EQ(table_.lpi, expected) << text;
  }

  void expect_error(const std::string& text) { EXPECT_EQ(load(text), 1) << text; }

  static void round_to_half_inch(bool on) {
    write_file(fixed_paths::kEnvironmentFile, on ? "*COMMON\nFCBPRINT:2\n" : "*COMMON\n");
    the_filter().environment = {};
  }

  FcbTable table_;

 private:
  testing::ScratchDirectory scratch_;
};

std::vector<std::uint32_t> run(std::size_t count, std::uint32_t lines_per_inch) {
  std::vector<std::uint32_t> lines(count, lines_per_inch);
  return lines;
}

std::vector<std::uint32_t> operator+(std::vector<std::uint32_t> first,
                                     const std::vector<std::uint32_t>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// What a load begins with.

TEST_F(Fcb, FileWithNeitherLpiNorPrintIsAnElevenInchForm) {
  for (const char* const text : {"", "\n", "# nothing\n", "   \n\t\n"}) {
    expect_lines(text, run(66, 6));
    EXPECT_EQ(table_.top_line, 4);
    EXPECT_EQ(table_.form_halfinch, 22);
  }
}

TEST_F(Fcb, LoadForgetsTheFormBefore) {
  table_.lpi.fill(12);
  table_.top_line = 9;
  table_.form_halfinch = 7;
  expect_lines("lpi 1200 10\n", run(10, 6));
  EXPECT_EQ(table_.top_line, 4);
  EXPECT_EQ(table_.form_halfinch, 22);
}

TEST_F(Fcb, FormThatIsNotFoundLeavesAnEmptyTable) {
  table_.lpi.fill(12);
  table_.top_line = 9;
  table_.form_halfinch = 7;
  EXPECT_EQ(load_named("NONE", {"forms"}), 1);
  expect_table({});
  EXPECT_EQ(table_.top_line, 4);
  EXPECT_EQ(table_.form_halfinch, 22);
}

TEST_F(Fcb, CurrentLineIsNeverTouched) {
  table_.cur_line = 17;
  EXPECT_EQ(load("lpi 1200 10\n"), 0);
  EXPECT_EQ(table_.cur_line, 17);
  EXPECT_EQ(load("nonsense\n"), 1);
  EXPECT_EQ(table_.cur_line, 17);
}

// Finding the file.

TEST_F(Fcb, NameWithASlashIsOpenedAsItStands) {
  write_file("here/FORM", "lpi 1200 10\n");
  write_file("forms/fcbe/here/FORM", "lpi 600 20\n");
  EXPECT_EQ(load_named("here/FORM", {"forms"}), 0);
  expect_table(run(10, 6));
  EXPECT_EQ(load_named("./here/FORM", {}), 0);
  EXPECT_EQ(load_named(std::filesystem::absolute("here/FORM"), {"forms"}), 0);
}

TEST_F(Fcb, NameWithASlashIsNotSearchedInTheDirectories) {
  write_file("forms/fcbe/here/FORM", "lpi 600 20\n");
  EXPECT_EQ(load_named("here/FORM", {"forms"}), 1);
}

TEST_F(Fcb, PathThatIsADirectoryIsAnError) {
  std::filesystem::create_directories("here/FORM");
  EXPECT_EQ(load_named("here/FORM", {"forms"}), 1);
}

TEST_F(Fcb, OnlyARegularFileIsAForm) {
  testing::for_each_odd_file("odd", [this] { EXPECT_EQ(load_named("./odd", {}), 1); });
  write_file("later/fcbe/ODD", "lpi 1200 5\n");
  testing::for_each_odd_file("forms/fcbe/ODD", [this] {
    EXPECT_EQ(load_named("ODD", {"forms", "later"}), 1);
  });
}

TEST_F(Fcb, LinkToAFormIsTheForm) {
  write_file("elsewhere", "lpi 1200 5\n");
  std::filesystem::create_symlink("elsewhere", "link");
  EXPECT_EQ(load_named("./link", {}), 0);
  expect_table(run(5, 6));
}

TEST_F(Fcb, EmptyDirectoryListIsAnError) {
  write_file("fcbe/FORM", "");
  write_file("FORM", "");
  EXPECT_EQ(load_named("FORM", {}), 1);
}

TEST_F(Fcb, DirectoryWithoutTheFormIsSkipped) {
  write_file("b/fcbe/FORM", "lpi 1200 10\n");
  std::filesystem::create_directories("empty/fcbe");
  EXPECT_EQ(load_named("FORM", {"missing", "empty", "b"}), 0);
  expect_table(run(10, 6));
}

TEST_F(Fcb, FirstDirectoryThatHasTheFormWins) {
  write_file("a/fcbe/FORM", "lpi 1200 10\n");
  write_file("b/fcbe/FORM", "lpi 1200 20\n");
  EXPECT_EQ(load_named("FORM", {"a", "b"}), 0);
  expect_table(run(10, 6));
}

TEST_F(Fcb, CandidateThatIsADirectoryEndsTheSearchWithAnError) {
  std::filesystem::create_directories("a/fcbe/FORM");
  write_file("b/fcbe/FORM", "lpi 1200 20\n");
  EXPECT_EQ(load_named("FORM", {"a", "b"}), 1);
}

TEST_F(Fcb, CandidateThatCannotBeOpenedEndsTheSearchWithAnError) {
  // A socket: it can be found but, even by root, not be opened.
  std::filesystem::create_directories("a/fcbe");
  ASSERT_EQ(mknod("a/fcbe/FORM", S_IFSOCK | 0600, 0), 0);
  write_file("b/fcbe/FORM", "lpi 1200 20\n");
  EXPECT_EQ(load_named("FORM", {"a", "b"}), 1);
  EXPECT_EQ(load_named("a/fcbe/FORM", {"b"}), 1);
}

TEST_F(Fcb, SearchStopsAtTheFirstEmptyEntry) {
  write_file("b/fcbe/FORM", "");
  EXPECT_EQ(load_named("FORM", {"a", "", "b"}), 1);
  EXPECT_EQ(load_named("FORM", {"", "b"}), 1);
}

TEST_F(Fcb, OnlyTheFirst128EntriesAreSearched) {
  write_file("last/fcbe/FORM", "");
  std::vector<std::string> names(127, "missing");
  names.emplace_back("last");
  EXPECT_EQ(load_named("FORM", names), 0);
  names.insert(names.begin(), "missing");
  EXPECT_EQ(load_named("FORM", names), 1);
}

TEST_F(Fcb, EmptyNameIsTheFolderItselfAndAnError) {
  std::filesystem::create_directories("a/fcbe");
  EXPECT_EQ(load_named("", {"a"}), 1);
  EXPECT_EQ(load_named("", {"missing"}), 1);
}

TEST_F(Fcb, LongestDirectoryAndLongestName) {
  const std::string directory = std::string(127, 'd') + "/" + std::string(127, 'd');
  const std::string name(255, 'n');
  write_file(directory + "/fcbe/" + name, "lpi 1200 10\n");
  EXPECT_EQ(load_named(name, {directory}), 0);
  expect_table(run(10, 6));
}

TEST_F(Fcb, NameThatIsTooLongForAFileIsNotFound) {
  EXPECT_EQ(load_named(std::string(5000, 'n'), {"a", std::string(255, 'd')}), 1);
  EXPECT_EQ(load_named(std::string(5000, '/'), {"a"}), 1);
}

// Lines and words.

TEST_F(Fcb, BlankLinesAndCommentsAreAccepted) {
  expect_lines("# form\n\n  \t \n   # indented\n#lpi 600 5\nlpi 1200 10\n\n#", run(10, 6));
}

TEST_F(Fcb, TrailingCommentBehindTheNumbersIsAccepted) {
  expect_lines("lpi 1200 10# ten\n", run(10, 6));
  expect_lines("lpi 1200 10 # ten\n", run(10, 6));
  expect_lines("lpi 1200 10\t#\n", run(10, 6));
}

TEST_F(Fcb, CommentHidesTheWordsBehindIt) {
  expect_error("lpi 1200 # 10\n");
  expect_error("lpi 1200# 10\n");
  expect_error("lpi # 1200 10\n");
  expect_error("lpi#1200 10\n");
  expect_error("print#4\n");
  expect_lines("print 4 #1\n", run(66, 6));
  expect_lines("print 4#1\n", run(66, 6));
}

TEST_F(Fcb, WordsAreSeparatedByBlanksAndTabs) {
  expect_lines("  \t lpi\t1200  \t 10\t \n", run(10, 6));
  expect_error("lpi\v1200\v10\n");
  expect_error("\flpi 1200 10\n");
}

TEST_F(Fcb, NothingBehindTheThirdWordIsLookedAt) {
  expect_lines("lpi 1200 10 junk 77 lpi\n", run(10, 6));
  expect_lines("print 4 79200 junk\n", run(66, 6));
}

TEST_F(Fcb, UpperCaseKeywordIsAnError) {
  expect_error("LPI 1200 10\n");
  expect_error("Lpi 1200 10\n");
  expect_error("PRINT 4\n");
  expect_error("Print 4\n");
}

TEST_F(Fcb, UnknownKeywordIsAnErrorWhereverItStands) {
  for (const char* const word :
       {"lp", "lpis", "prin", "prints", "x", "4", "lpi:", "\xef\xbb\xbf"}) {
    expect_error(std::string(word) + " 1200 10\n");
    expect_error(std::string(word) + "\n");
    expect_error("lpi 1200 10\n" + std::string(word) + " 1200 10\n");
  }
}

TEST_F(Fcb, CarriageReturnBelongsToTheLastWord) {
  expect_error("lpi 1200 10\r\n");
  expect_error("print 4\r\n");
  expect_error("print 4 79200\r\n");
  expect_error("print 4 \r\n");
  expect_error("\r\n");
  expect_error("lpi 1200 10\n\r\n");
}

TEST_F(Fcb, CarriageReturnBehindTheThirdWordOrInACommentIsIgnored) {
  expect_lines("lpi 1200 10 \r\n", run(10, 6));
  expect_lines("lpi 1200 10 # ten\r\n", run(10, 6));
  expect_lines("# ten\r\nlpi 1200 10\n", run(10, 6));
}

TEST_F(Fcb, LastLineWithoutANewlineCounts) {
  expect_lines("lpi 1200 10", run(10, 6));
  expect_lines("lpi 1200 10\nlpi 900 1", run(10, 6) + run(1, 8));
  expect_error("lpi 1200 10\nx");
}

TEST_F(Fcb, NulEndsTheLine) {
  expect_lines(bytes("lpi 1200 10\0junk\nlpi 900 1\n"), run(10, 6) + run(1, 8));
  expect_error(bytes("lpi 1200 \0 10\n"));
}

// A line is read in pieces of 511 bytes, each a line of its own. "lpi 1200 10" is 11 bytes.
TEST_F(Fcb, LineOfMoreThan511BytesIsReadAsSeveralLines) {
  for (std::size_t blanks = 490; blanks <= 520; ++blanks) {
    const std::string text = std::string(blanks, ' ') + "lpi 1200 10\n";
    if (blanks <= 500 || blanks >= 511) {
      expect_lines(text, run(10, 6));
    } else {
      expect_error(text);
    }
  }
}

TEST_F(Fcb, RestOfALongCommentIsALineOfItsOwn) {
  expect_lines("#" + std::string(509, 'x') + "\n", run(66, 6));
  expect_lines("#" + std::string(510, 'x') + "\n", run(66, 6));
  expect_error("#" + std::string(511, 'x') + "\n");
  expect_lines("#" + std::string(510, 'x') + "lpi 1200 10\n", run(10, 6));
  expect_lines("#" + std::string(510, 'x') + "# more\n", run(66, 6));
}

TEST_F(Fcb, WordsOfALineAreNeverJoinedOverThePieces) {
  expect_lines("lpi 1200 10" + std::string(500, ' ') + "lpi 900 1\n", run(10, 6) + run(1, 8));
  expect_lines("lpi 1200 10" + std::string(501, ' ') + "lpi 900 1\n", run(10, 6) + run(1, 8));
  expect_error("lpi 1200 10" + std::string(499, ' ') + "lpi 900 1\n");
}

// lpi

TEST_F(Fcb, EveryPitchGivesItsLinesPerInch) {
  expect_lines("lpi 2400 2\nlpi 1800 3\nlpi 1200 4\nlpi 900 5\nlpi 600 6\n",
               run(2, 3) + run(3, 4) + run(4, 6) + run(5, 8) + run(6, 12));
}

TEST_F(Fcb, OtherPitchesAreErrors) {
  for (const int pitch : {0,    1,    300,  599,  601,  720,  899,  901,  1000, 1199,
                          1201, 1440, 1799, 1801, 2399, 2401, 3600, 4800, 7200, 12000}) {
    expect_error("lpi " + std::to_string(pitch) + " 10\n");
  }
}

TEST_F(Fcb, OfAllWholeNumbersOfLinesPerInchOnlyFiveAreAccepted) {
  std::vector<int> accepted;
  for (int pitch = 1; pitch <= 7200; ++pitch) {
    if (7200 % pitch == 0 && load("lpi " + std::to_string(pitch) + " 4\n") == 0) {
      accepted.push_back(pitch);
    }
  }
  EXPECT_EQ(accepted, (std::vector<int>{600, 900, 1200, 1800, 2400}));
}

TEST_F(Fcb, PitchThatWouldWrapAroundIsAnError) {
  expect_error("lpi 4294968496 10\n");            // 2^32 + 1200
  expect_error("lpi 18446744073709552816 10\n");  // 2^64 + 1200
  expect_error("lpi 1" + std::string(400, '0') + " 10\n");
}

TEST_F(Fcb, PitchMayHaveLeadingZeros) {
  expect_lines("lpi 01200 10\n", run(10, 6));
}

TEST_F(Fcb, NumbersConsistOfDigits) {
  for (const char* const word :
       {"x", "1200x", "x1200", "-1200", "+1200", "0x4b0", "1200.", "12,00"}) {
    expect_error("lpi " + std::string(word) + " 10\n");
  }
  for (const char* const word : {"x", "10x", "x10", "-10", "+10", "0x0a", "10.", "1,0"}) {
    expect_error("lpi 1200 " + std::string(word) + "\n");
    expect_error("print " + std::string(word) + "\n");
    expect_error("print 4 " + std::string(word) + "\n");
  }
}

TEST_F(Fcb, BothNumbersOfLpiMustBeThere) {
  expect_error("lpi\n");
  expect_error("lpi 1200\n");
  expect_error("lpi 1200 \t\n");
}

TEST_F(Fcb, CountZeroAddsNothing) {
  expect_lines("lpi 1200 0\n", run(66, 6));
  expect_lines("lpi 900 0\nlpi 1200 10\nlpi 600 0\n", run(10, 6));
  expect_error("lpi 1000 0\n");
}

TEST_F(Fcb, CountMayHaveLeadingZeros) {
  expect_lines("lpi 1200 0010\n", run(10, 6));
  expect_lines("lpi 1200 " + std::string(300, '0') + "10\n", run(10, 6));
}

TEST_F(Fcb, CountAbove255IsAnError) {
  expect_error("lpi 600 256\n");
  expect_error("lpi 600 0256\n");
  expect_error("lpi 600 1000\n");
  expect_error("lpi 600 4294967297\n");  // 2^32 + 1
  expect_error("lpi 600 18446744073709551617\n");
}

TEST_F(Fcb, Pitch600WithCount255IsRefused) {
  expect_error("print 4 144000\nlpi 600 255\n");
  expect_error("lpi 600 255\n");
}

TEST_F(Fcb, LinesMayNotGoBehindTheTable) {
  expect_error("print 4 144000\nlpi 600 255\nlpi 600 255\nlpi 600 255\n");
  expect_error("print 4 144000\nlpi 600 240\nlpi 600 240\n");
}

TEST_F(Fcb, LongestForm) {
  expect_lines("print 4 144000\nlpi 600 240\n", run(240, 12));
  expect_error("print 4 144000\nlpi 600 241\n");
}

TEST_F(Fcb, LinesMayFillTheFormButNotMore) {
  expect_lines("lpi 1200 66\n", run(66, 6));
  expect_error("lpi 1200 67\n");
  expect_lines("lpi 600 132\n", run(132, 12));
  expect_error("lpi 600 133\n");
  expect_lines("lpi 2400 33\n", run(33, 3));
  expect_error("lpi 2400 34\n");
}

TEST_F(Fcb, SixtySixLinesAndOneOfPitch600AreTallerThanElevenInches) {
  expect_error("lpi 1200 66\nlpi 600 1\n");
  expect_lines("lpi 1200 65\nlpi 600 2\n", run(65, 6) + run(2, 12));
}

TEST_F(Fcb, LpiMayStandBeforeAndBehindPrint) {
  expect_lines("lpi 1200 66\nprint 2 86400\nlpi 1200 6\n", run(72, 6));
  EXPECT_EQ(table_.top_line, 2);
  EXPECT_EQ(table_.form_halfinch, 24);
}

// print

TEST_F(Fcb, PrintWithLengthAndNoLpiIsFilledAtSixLinesPerInch) {
  expect_lines("print 1 79200\n", run(66, 6));
  EXPECT_EQ(table_.top_line, 1);
  EXPECT_EQ(table_.form_halfinch, 22);
  expect_lines("print 1 86400\n", run(72, 6));
  EXPECT_EQ(table_.form_halfinch, 24);
}

TEST_F(Fcb, PrintWithoutALengthIsElevenInches) {
  expect_lines("print 7\n", run(66, 6));
  EXPECT_EQ(table_.top_line, 7);
  EXPECT_EQ(table_.form_halfinch, 22);
  expect_error("print 7\nlpi 1200 67\n");
}

TEST_F(Fcb, SecondPrintIsAnError) {
  expect_error("print 4\nprint 4\n");
  expect_error("print 4 79200\nlpi 1200 10\nprint 4 79200\n");
}

TEST_F(Fcb, TopLineMustBeThere) {
  expect_error("print\n");
  expect_error("print # 4\n");
}

TEST_F(Fcb, TopLineZeroIsAnError) {
  expect_error("print 0\n");
  expect_error("print 000\n");
  expect_error("print 0 79200\n");
}

TEST_F(Fcb, TopLineMayHaveLeadingZeros) {
  expect_lines("print 00004\n", run(66, 6));
  EXPECT_EQ(table_.top_line, 4);
}

TEST_F(Fcb, TopLineOf70WithTheDefault66LinesIsAnError) {
  expect_error("print 70\n");
}

TEST_F(Fcb, TopLineMayBeTheLastLineButNotBehindIt) {
  for (int top_line = 1; top_line <= 300; ++top_line) {
    EXPECT_EQ(load("print " + std::to_string(top_line) + "\n"), top_line <= 66 ? 0 : 1) << top_line;
    EXPECT_EQ(load("print " + std::to_string(top_line) + " 144000\nlpi 600 240\n"),
              top_line <= 240 ? 0 : 1)
        << top_line;
  }
}

TEST_F(Fcb, DefaultTopLineNeedsFourLines) {
  expect_error("lpi 1200 3\n");
  expect_lines("lpi 1200 4\n", run(4, 6));
  expect_lines("print 3\nlpi 1200 3\n", run(3, 6));
}

TEST_F(Fcb, TopLineThatWouldWrapAroundIsAnError) {
  expect_error("print 257\n");
  expect_error("print 4294967300\n");
}

// Form lengths. `whole` is the form length in half inches when lengths are rounded up to the inch,
// `half` when they are rounded down to the half inch.

struct LengthCase {
  const char* length;
  std::int32_t whole;
  std::int32_t half;
};

constexpr std::array<LengthCase, 35> kLengthCases{{
    {"0", 2, 2},
    {"1", 2, 2},
    {"5000", 2, 2},
    {"7199", 2, 2},
    {"7200", 2, 2},
    {"7201", 4, 2},
    {"10799", 4, 2},
    {"10800", 4, 3},
    {"14399", 4, 3},
    {"14400", 4, 4},
    {"14401", 6, 4},
    {"25199", 8, 6},
    {"25200", 8, 7},
    {"25201", 8, 7},
    {"28799", 8, 7},
    {"28800", 8, 8},
    {"28801", 10, 8},
    {"30000", 10, 8},
    {"32399", 10, 8},
    {"32400", 10, 9},
    {"79199", 22, 21},
    {"79200", 22, 22},
    {"79201", 24, 22},
    {"86400", 24, 24},
    {"100799", 28, 27},
    {"100800", 28, 28},
    {"100801", 30, 28},
    {"104400", 30, 29},
    {"140400", 40, 39},
    {"143999", 40, 39},
    {"144000", 40, 40},
    {"144001", 40, 40},
    {"150000", 40, 40},
    {"00144000", 40, 40},
    {"99999999999999999999", 40, 40},
}};

constexpr std::array<LengthCase, 26> kShortFormCases{{
    {"0", 8, 7},        {"1", 8, 7},
    {"5000", 8, 7},     {"7199", 8, 7},
    {"7200", 8, 7},     {"14400", 8, 7},
    {"21600", 8, 7},    {"25199", 8, 7},
    {"25200", 8, 7},    {"25201", 8, 7},
    {"28799", 8, 7},    {"28800", 8, 8},
    {"28801", 10, 8},   {"30000", 10, 8},
    {"32399", 10, 8},   {"32400", 10, 9},
    {"79200", 22, 22},  {"79201", 24, 22},
    {"97200", 28, 27},  {"100799", 28, 27},
    {"100800", 28, 28}, {"100801", 28, 28},
    {"104400", 28, 28}, {"144000", 28, 28},
    {"144001", 28, 28}, {"99999999999999999999", 28, 28},
}};

class FcbLength : public Fcb {
 protected:
  template <std::size_t N>
  void expect_lengths(int stream_variant, const std::array<LengthCase, N>& cases) {
    the_filter().command_line.stream_variant = stream_variant;
    for (const LengthCase& one : cases) {
      round_to_half_inch(false);
      expect_length(one.length, one.whole);
      round_to_half_inch(true);
      expect_length(one.length, one.half);
    }
  }

  /// A form without lpi lines has three lines in each half inch.
  void expect_length(const std::string& length, std::int32_t halfinch) {
    expect_lines("print 1 " + length + "\n", run(3 * static_cast<std::size_t>(halfinch), 6));
    EXPECT_EQ(table_.form_halfinch, halfinch) << length;
  }
};

TEST_F(FcbLength, RoundingAtEveryBorder) {
  expect_lengths(kPlainStream, kLengthCases);
}

TEST_F(FcbLength, RoundingOfStreamVariant3IsTheOrdinaryOne) {
  expect_lengths(kSentLengthStream, kLengthCases);
}

TEST_F(FcbLength, RoundingOfStreamVariant4AtEveryBorder) {
  expect_lengths(kShortFormStream, kShortFormCases);
}

TEST_F(FcbLength, Length30000IsTenHalfInchesByDefaultAndEightWithTheEnvironmentFile) {
  expect_length("30000", 10);
  round_to_half_inch(true);
  expect_length("30000", 8);
}

TEST_F(FcbLength, NoEnvironmentFileRoundsUpToTheInch) {
  expect_length("14401", 6);
  the_filter().command_line.stream_variant = kShortFormStream;
  the_filter().environment = {};
  expect_length("5000", 8);
}

TEST_F(FcbLength, EnvironmentFileIsLookedAtOnlyWhenALengthIsNotWholeInches) {
  for (const char* const text : {"", "lpi 1200 10\n", "print 1\n", "print 1 79200\n",
                                 "print 1 5000\n", "print 1 200000\n"}) {
    EXPECT_EQ(load(text), 0);
    EXPECT_EQ(the_filter().environment.loaded, 0) << text;
  }
  EXPECT_EQ(load("print 1 79201\n"), 0);
  EXPECT_EQ(the_filter().environment.loaded, 1);
}

TEST_F(FcbLength, OneFreeDescriptorIsEnough) {
  round_to_half_inch(true);
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  write_file("forms/fcbe/FORM", "print 1 30000\n");
  const int next_descriptor = dup(0);
  close(next_descriptor);
  // Two more are what catching the messages takes.
  const rlimit just_one{static_cast<rlim_t>(next_descriptor) + 3, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &just_one), 0);
  const Status status = load_named("FORM", {"forms"});
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(table_.form_halfinch, 8);
}

TEST_F(FcbLength, RaisedLengthOfStreamVariant4LooksAtTheEnvironmentFile) {
  the_filter().command_line.stream_variant = kShortFormStream;
  EXPECT_EQ(load("print 1 7200\n"), 0);
  EXPECT_EQ(the_filter().environment.loaded, 1);
}

TEST_F(FcbLength, EnvironmentFileIsReadOncePerProcess) {
  round_to_half_inch(true);
  expect_length("30000", 8);
  write_file(fixed_paths::kEnvironmentFile, "*COMMON\nFCBPRINT:1\n");
  expect_length("30000", 8);
}

TEST_F(FcbLength, DigitsBehindTheOneThatPassesTheCeilingAreNotLookedAt) {
  expect_length("144001x", 40);
  expect_length("1440000x", 40);
  expect_length("999999-+", 40);
  expect_error("print 1 144000x\n");
  expect_error("print 1 14400x\n");
  the_filter().command_line.stream_variant = kShortFormStream;
  expect_length("100801x", 28);
  expect_error("print 1 100800x\n");
}

TEST_F(FcbLength, HeightCheckTakesTheLengthBeforeRounding) {
  for (const bool half : {false, true}) {
    round_to_half_inch(half);
    expect_lines("print 1 30000\nlpi 1200 25\n", run(25, 6));
    expect_error("print 1 30000\nlpi 1200 25\nlpi 600 1\n");
    expect_error("print 1 29999\nlpi 1200 25\n");
  }
}

TEST_F(FcbLength, HeightCheckTakesTheRaisedLength) {
  expect_lines("print 1 5000\nlpi 1200 6\n", run(6, 6));
  expect_error("print 1 5000\nlpi 1200 6\nlpi 600 1\n");
  the_filter().command_line.stream_variant = kShortFormStream;
  expect_lines("print 1 5000\nlpi 1200 21\n", run(21, 6));
  EXPECT_EQ(table_.form_halfinch, 8);
  expect_error("print 1 5000\nlpi 1200 21\nlpi 600 1\n");
}

TEST_F(FcbLength, HeightCheckTakesTheCutLength) {
  expect_lines("print 1 200000\nlpi 2400 60\n", run(60, 3));
  expect_error("print 1 200000\nlpi 2400 61\n");
  the_filter().command_line.stream_variant = kShortFormStream;
  expect_lines("print 1 200000\nlpi 2400 42\n", run(42, 3));
  expect_error("print 1 200000\nlpi 2400 43\n");
}

TEST_F(FcbLength, OneInchFormHasSixLinesAndNeedsATopLineInsideThem) {
  expect_lines("print 6 5000\n", run(6, 6));
  expect_error("print 7 5000\n");
}

}  // namespace
}  // namespace rlx
