#include "support/environment_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "job/fixed_paths.h"
#include "support/descriptors.h"
#include "support/odd_files.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::bytes;
using testing::CaptureDescriptor;
using testing::write_file;

class EnvironmentFileTest : public ::testing::Test {
 protected:
  EnvironmentFileTest() { the_filter().environment = {}; }
  ~EnvironmentFileTest() override { the_filter().environment = {}; }

  static void put(const std::string& text) { write_file(fixed_paths::kEnvironmentFile, text); }

  /// The status of reading a file with this text.
  static Status status_of(const std::string& text) {
    put(text);
    the_filter().environment = {};
    const CaptureDescriptor out(STDOUT_FILENO);
    const CaptureDescriptor error(STDERR_FILENO);
    const Status status = tqdxgetenv(the_filter().environment);
    EXPECT_EQ(the_filter().environment.loaded, 1);
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(error.text(), "");
    return status;
  }

  /// The setting that a file with this text gives.
  static int flag_of(const std::string& text) {
    static_cast<void>(status_of(text));
    return the_filter().environment.fcbprint_halfinch;
  }

  /// The setting that these lines give inside *COMMON.
  static int common_flag(const std::string& lines) { return flag_of("*COMMON\n" + lines); }

 private:
  testing::ScratchDirectory scratch_;
};

TEST_F(EnvironmentFileTest, AnyFileCanBeReadByItsPath) {
  EnvironmentFile environment{.loaded = 1, .fcbprint_halfinch = 1};
  EXPECT_EQ(read_environment_file("none", environment), kNoEnvironmentFile);
  EXPECT_EQ(environment.loaded, 1);
  EXPECT_EQ(environment.fcbprint_halfinch, 0);
  write_file("mine", "*COMMON\nFCBPRINT:2\n");
  EXPECT_EQ(read_environment_file("mine", environment), 0);
  EXPECT_EQ(environment.fcbprint_halfinch, 1);
}

TEST_F(EnvironmentFileTest, NoFileGivesMinusOneAndZero) {
  EXPECT_EQ(tqdxgetenv(the_filter().environment), -1);
  EXPECT_EQ(the_filter().environment.fcbprint_halfinch, 0);
  EXPECT_EQ(the_filter().environment.loaded, 1);
}

TEST_F(EnvironmentFileTest, NothingIsLoadedBeforeTheFirstCall) {
  EXPECT_EQ(the_filter().environment.loaded, 0);
  EXPECT_EQ(the_filter().environment.fcbprint_halfinch, 0);
}

TEST_F(EnvironmentFileTest, FileThatAppearsLaterIsNotLookedAt) {
  EXPECT_EQ(tqdxgetenv(the_filter().environment), -1);
  put("*COMMON\nFCBPRINT:2\n");
  EXPECT_EQ(tqdxgetenv(the_filter().environment), 0);
  EXPECT_EQ(the_filter().environment.fcbprint_halfinch, 0);
}

TEST_F(EnvironmentFileTest, FileIsReadOnce) {
  EXPECT_EQ(common_flag("FCBPRINT:2\n"), 1);
  put("*COMMON\nFCBPRINT:1\n");
  EXPECT_EQ(tqdxgetenv(the_filter().environment), 0);
  EXPECT_EQ(the_filter().environment.fcbprint_halfinch, 1);
}

TEST_F(EnvironmentFileTest, ResetForgetsEverything) {
  EXPECT_EQ(common_flag("FCBPRINT:2\n"), 1);
  the_filter().environment = {};
  EXPECT_EQ(the_filter().environment.loaded, 0);
  EXPECT_EQ(the_filter().environment.fcbprint_halfinch, 0);
}

TEST_F(EnvironmentFileTest, WhatIsNoRegularFileCannotBeOpened) {
  testing::for_each_odd_file(fixed_paths::kEnvironmentFile, [] {
    the_filter().environment = {};
    EXPECT_EQ(tqdxgetenv(the_filter().environment), -1);
    EXPECT_EQ(the_filter().environment.fcbprint_halfinch, 0);
  });
}

TEST_F(EnvironmentFileTest, StatusSaysWhetherThereWasACommonSection) {
  EXPECT_EQ(status_of("*COMMON\n"), 0);
  EXPECT_EQ(status_of("*COMMON"), 0);
  EXPECT_EQ(status_of("*OTHER\n*COMMON\n*OTHER\n"), 0);
  EXPECT_EQ(status_of(""), -2);
  EXPECT_EQ(status_of("\n\n"), -2);
  EXPECT_EQ(status_of("*OTHER\nFCBPRINT:2\n"), -2);
  EXPECT_EQ(status_of("COMMON\n"), -2);
}

TEST_F(EnvironmentFileTest, LineBeforeTheFirstHeaderHasNoEffect) {
  EXPECT_EQ(flag_of("FCBPRINT:2\n*COMMON\n"), 0);
  EXPECT_EQ(flag_of("FCBPRINT:2\n"), 0);
}

TEST_F(EnvironmentFileTest, LineInsideCommonSetsTheFlag) {
  EXPECT_EQ(common_flag("FCBPRINT:2\n"), 1);
}

TEST_F(EnvironmentFileTest, LineInsideAnotherSectionHasNoEffect) {
  EXPECT_EQ(flag_of("*OTHER\nFCBPRINT:2\n"), 0);
  EXPECT_EQ(common_flag("*OTHER\nFCBPRINT:2\n"), 0);
  EXPECT_EQ(common_flag("*\nFCBPRINT:2\n"), 0);
}

TEST_F(EnvironmentFileTest, SecondCommonSectionIsReadLikeTheFirst) {
  EXPECT_EQ(common_flag("*OTHER\n*COMMON\nFCBPRINT:2\n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:2\n*OTHER\n*COMMON\nFCBPRINT:1\n"), 0);
  EXPECT_EQ(common_flag("FCBPRINT:2\n*COMMON\n"), 1);
}

TEST_F(EnvironmentFileTest, OnlyTheFirstCharacterOfTheValueCounts) {
  EXPECT_EQ(common_flag("FCBPRINT:20\n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:2x\n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:2:1\n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:12\n"), 0);
  EXPECT_EQ(common_flag("FCBPRINT:02\n"), 0);
  EXPECT_EQ(common_flag("FCBPRINT::2\n"), 0);
}

TEST_F(EnvironmentFileTest, EveryOtherFirstCharacterClearsTheFlag) {
  for (char byte = '!'; byte <= '~'; ++byte) {
    if (byte == '#') {
      continue;
    }
    EXPECT_EQ(common_flag(std::string("FCBPRINT:2\nFCBPRINT:") + byte + "\n"), byte == '2' ? 1 : 0)
        << byte;
  }
}

TEST_F(EnvironmentFileTest, ValueOneClearsTheFlag) {
  EXPECT_EQ(common_flag("FCBPRINT:2\nFCBPRINT:1\n"), 0);
}

TEST_F(EnvironmentFileTest, EmptyValueLeavesTheFlagAsItWas) {
  EXPECT_EQ(common_flag("FCBPRINT:2\nFCBPRINT:\n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:2\nFCBPRINT:   \n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:2\nFCBPRINT:#1\n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:\n"), 0);
}

TEST_F(EnvironmentFileTest, LineWithoutAColonOrAKeyChangesNothing) {
  EXPECT_EQ(common_flag("FCBPRINT:2\nFCBPRINT\nFCBPRINT1\n:1\n:\n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT2\n:2\n"), 0);
}

TEST_F(EnvironmentFileTest, LastOccurrenceWins) {
  EXPECT_EQ(common_flag("FCBPRINT:1\nFCBPRINT:2\n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:2\nFCBPRINT:1\nFCBPRINT:2\n"), 1);
}

TEST_F(EnvironmentFileTest, OtherKeysAreIgnored) {
  for (const char* const key :
       {"fcbprint", "Fcbprint", "FCBPRIN", "FCBPRINTS", "XFCBPRINT", "FCBPRINT=", "FCB"}) {
    EXPECT_EQ(common_flag(std::string(key) + ":2\n"), 0) << key;
    EXPECT_EQ(common_flag("FCBPRINT:2\n" + std::string(key) + ":1\n"), 1) << key;
  }
}

TEST_F(EnvironmentFileTest, BlanksInsideTheLineAreDropped) {
  EXPECT_EQ(common_flag("FCB PRINT: 2\n"), 1);
  EXPECT_EQ(common_flag("  F C B\tP R I N T \t : \t 2\n"), 1);
  EXPECT_EQ(flag_of(" * COM MON\nFCBPRINT:2\n"), 1);
}

TEST_F(EnvironmentFileTest, AllBytesThatAreNotPrintableAreDropped) {
  for (int byte = 1; byte < 256; ++byte) {
    if (byte == '\n' || (byte >= '!' && byte <= '~')) {
      continue;
    }
    const char junk = static_cast<char>(byte);
    std::string text;
    for (const char character : std::string("*COMMON\nFCBPRINT:2\n")) {
      text += junk;
      text += character;
    }
    EXPECT_EQ(flag_of(text), 1) << byte;
  }
}

TEST_F(EnvironmentFileTest, EveryPrintableCharacterIsKept) {
  for (char byte = '!'; byte <= '~'; ++byte) {
    if (byte == '#' || byte == ':') {  // a comment; an empty value or key
      continue;
    }
    EXPECT_EQ(common_flag(std::string("FCB") + byte + "PRINT:2\n"), 0) << byte;
  }
}

TEST_F(EnvironmentFileTest, DosLineEndsMakeNoDifference) {
  EXPECT_EQ(flag_of("*COMMON\r\nFCBPRINT:2\r\n"), 1);
}

TEST_F(EnvironmentFileTest, CommentBehindTheSettingSetsTheFlag) {
  EXPECT_EQ(common_flag("FCBPRINT:2# comment\n"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:2 # :1 FCBPRINT:1\n"), 1);
}

TEST_F(EnvironmentFileTest, SettingBehindALeadingCommentSignDoesNothing) {
  EXPECT_EQ(common_flag("#FCBPRINT:2\n"), 0);
  EXPECT_EQ(common_flag(" # FCBPRINT:2\n"), 0);
  EXPECT_EQ(common_flag("FCB#PRINT:2\n"), 0);
}

TEST_F(EnvironmentFileTest, CommentEndsWithItsLine) {
  EXPECT_EQ(common_flag("# comment\nFCBPRINT:2\n"), 1);
}

TEST_F(EnvironmentFileTest, HeaderWithAComment) {
  EXPECT_EQ(flag_of("*COMMON # site\nFCBPRINT:2\n"), 1);
  EXPECT_EQ(flag_of("*COM#MON\nFCBPRINT:2\n"), 0);
  EXPECT_EQ(flag_of("#*COMMON\nFCBPRINT:2\n"), 0);
}

TEST_F(EnvironmentFileTest, HeaderCommonsOpensTheSection) {
  EXPECT_EQ(flag_of("*COMMONS\nFCBPRINT:2\n"), 1);
  EXPECT_EQ(flag_of("*COMMON:FCBPRINT:1\nFCBPRINT:2\n"), 1);
}

TEST_F(EnvironmentFileTest, LowerCaseHeaderDoesNotOpenTheSection) {
  EXPECT_EQ(flag_of("*common\nFCBPRINT:2\n"), 0);
  EXPECT_EQ(flag_of("*COMMOn\nFCBPRINT:2\n"), 0);
  EXPECT_EQ(flag_of("*COMMO\nFCBPRINT:2\n"), 0);
  EXPECT_EQ(flag_of("**COMMON\nFCBPRINT:2\n"), 0);
  EXPECT_EQ(flag_of("x*COMMON\nFCBPRINT:2\n"), 0);
}

TEST_F(EnvironmentFileTest, EmptyLinesMakeNoDifference) {
  EXPECT_EQ(flag_of("\n\n*COMMON\n\n   \n\t\nFCBPRINT:2\n\n"), 1);
}

TEST_F(EnvironmentFileTest, LastLineWithoutANewlineCounts) {
  EXPECT_EQ(common_flag("FCBPRINT:2"), 1);
  EXPECT_EQ(common_flag("FCBPRINT:2\nFCBPRINT:1"), 0);
}

// The file is read in pieces of 511 bytes; the border may stand anywhere.

TEST_F(EnvironmentFileTest, SettingMayCrossAChunkBorderAnywhere) {
  for (std::size_t blanks = 498; blanks <= 514; ++blanks) {
    EXPECT_EQ(common_flag(std::string(blanks, ' ') + "FCBPRINT:2\n"), 1) << blanks;
    EXPECT_EQ(common_flag(std::string(blanks, ' ') + "FCBPRINT:2"), 1) << blanks;
    EXPECT_EQ(common_flag("FCBPRINT:" + std::string(blanks, ' ') + "2\n"), 1) << blanks;
    EXPECT_EQ(common_flag(std::string(511 + blanks, ' ') + "FCBPRINT:2\n"), 1) << blanks;
    EXPECT_EQ(flag_of(std::string(blanks, ' ') + "*COMMON\nFCBPRINT:2\n"), 1) << blanks;
  }
}

TEST_F(EnvironmentFileTest, LineAfterAChunkBorderIsALineOfItsOwn) {
  for (std::size_t blanks = 498; blanks <= 514; ++blanks) {
    EXPECT_EQ(common_flag("FCBPRINT:1" + std::string(blanks, ' ') + "\nFCBPRINT:2\n"), 1) << blanks;
    EXPECT_EQ(common_flag("FCBPRINT:2" + std::string(blanks, ' ') + "\n*OTHER\nFCBPRINT:1\n"), 1)
        << blanks;
  }
}

TEST_F(EnvironmentFileTest, CommentReachesOverChunkBorders) {
  for (std::size_t junk = 498; junk <= 514; ++junk) {
    EXPECT_EQ(common_flag("#" + std::string(junk, 'x') + "FCBPRINT:2\n"), 0) << junk;
    EXPECT_EQ(common_flag("#" + std::string(junk, ' ') + "FCBPRINT:2\n"), 0) << junk;
    EXPECT_EQ(common_flag("#" + std::string(junk, ' ') + "\nFCBPRINT:2\n"), 1) << junk;
    EXPECT_EQ(common_flag("FCBPRINT:2#" + std::string(junk + 600, 'x') + "\n"), 1) << junk;
  }
}

TEST_F(EnvironmentFileTest, LineOfMoreThan512SignificantCharactersIsDropped) {
  for (std::size_t length = 509; length <= 515; ++length) {
    const std::string line = "FCBPRINT:2" + std::string(length - 10, 'x') + "\n";
    EXPECT_EQ(common_flag(line), length <= 512 ? 1 : 0) << length;
  }
}

TEST_F(EnvironmentFileTest, LineFarAbove512SignificantCharactersIsDropped) {
  EXPECT_EQ(common_flag("FCBPRINT:2" + std::string(100000, 'x') + "\n"), 0);
  EXPECT_EQ(common_flag(std::string(100000, 'x') + "\nFCBPRINT:2\n"), 1);
}

TEST_F(EnvironmentFileTest, BlanksAndCommentsDoNotCountAsSignificant) {
  const std::string full = "FCBPRINT:2" + std::string(502, 'x');
  EXPECT_EQ(common_flag(full + std::string(600, ' ') + "\n"), 1);
  EXPECT_EQ(common_flag(full + "#" + std::string(600, 'y') + "\n"), 1);
  EXPECT_EQ(common_flag(full + "x#" + std::string(600, 'y') + "\n"), 0);
}

TEST_F(EnvironmentFileTest, LineBehindADroppedOneIsRead) {
  EXPECT_EQ(common_flag(std::string(513, 'x') + "\nFCBPRINT:2\n"), 1);
}

TEST_F(EnvironmentFileTest, HeaderThatIsTooLongNeitherOpensNorCloses) {
  EXPECT_EQ(flag_of("*COMMON" + std::string(505, 'x') + "\nFCBPRINT:2\n"), 1);
  EXPECT_EQ(flag_of("*COMMON" + std::string(506, 'x') + "\nFCBPRINT:2\n"), 0);
  EXPECT_EQ(status_of("*COMMON" + std::string(506, 'x') + "\n"), -2);
  EXPECT_EQ(common_flag("*" + std::string(511, 'x') + "\nFCBPRINT:2\n"), 0);
  EXPECT_EQ(common_flag("*" + std::string(512, 'x') + "\nFCBPRINT:2\n"), 1);
}

TEST_F(EnvironmentFileTest, KeysAroundTheLimitOf255AreOtherKeys) {
  for (std::size_t length = 253; length <= 258; ++length) {
    EXPECT_EQ(common_flag("FCBPRINT" + std::string(length - 8, 'T') + ":2\n"), 0) << length;
  }
}

TEST_F(EnvironmentFileTest, ValuesAroundTheLimitOf255Count) {
  for (std::size_t length = 253; length <= 258; ++length) {
    EXPECT_EQ(common_flag("FCBPRINT:2" + std::string(length - 1, '1') + "\n"), 1) << length;
    EXPECT_EQ(common_flag("FCBPRINT:1" + std::string(length - 1, '2') + "\n"), 0) << length;
  }
}

TEST_F(EnvironmentFileTest, NulEndsItsChunkButNotTheLine) {
  EXPECT_EQ(common_flag(bytes("FCBPRINT:2\0 1\n")), 1);
  EXPECT_EQ(common_flag(bytes("FCBPRINT:\0 1\n2\n")), 1);
  EXPECT_EQ(common_flag(bytes("\0\nFCBPRINT:2\n")), 1);
  EXPECT_EQ(common_flag(bytes("A\0\nFCBPRINT:2\n")), 0);
}

}  // namespace
}  // namespace rlx
