#include "output/job_header.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "support/filter_state.h"
#include "support/header_values.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

/// Values that give every line of the parameter text and every sequence.
constexpr HeaderValues kEverything{.form_name = "OVERLAY8",
                                   .overlays = 2,
                                   .copies = 3,
                                   .form_code = "FORM",
                                   .duplex = "B",
                                   .edge = "U",
                                   .mode = "1",
                                   .margin = 720,
                                   .orientation = "LP",
                                   .paper = "B5",
                                   .form_length = 330,
                                   .tray = "P2",
                                   .first_offset = 1440,
                                   .second_offset = 2880};

std::string parameters_at_job_end() {
  return output_of([] { dtout_pji(the_filter().header, kParameterTextOnly); });
}

using JobHeader = FilterTest;

TEST_F(JobHeader, FirstPageOfAJobWithoutConditions) {
  EXPECT_EQ(next_header(),
            bytes("\x1bQ0;0000000043/`%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\nMAK=UNIX\n"
                  "\x1bQ9;0000000018/a\x1b\x7f\x00\x00\x01\x06"
                  "\x1bQ8;0000000019/a\x1bQ240!A"
                  "\x1bQ9;0000000022/a\x1bQ1;7200!C"));
  EXPECT_EQ(the_filter().job.job_started, 1);
}

TEST_F(JobHeader, SecondPageWithNothingChangedIsTheUnitAlone) {
  next_header();
  EXPECT_EQ(next_header(), "\x1bQ9;0000000022/a\x1bQ1;7200!C");
  EXPECT_EQ(next_header(), "\x1bQ9;0000000022/a\x1bQ1;7200!C");
}

TEST_F(JobHeader, Paper_LTR_IsWritten_LT_WithPaperDigit3) {
  next_header();
  apply({.paper = "LTR"});
  EXPECT_EQ(next_header(),
            "\x1bQ0;0000000042/`%%%=Pji,0101,UNIC\nEMU=RLX\nPSZ=LT\nMAK=UNIX\n"
            "\x1bQ7;0000000021/a\x1bQ3;4;0!F"
            "\x1bQ9;0000000022/a\x1bQ1;7200!C");
}

TEST_F(JobHeader, Tray_P2_IsWritten_2_WithTrayDigit1) {
  next_header();
  apply({.tray = "P2"});
  EXPECT_EQ(next_header(),
            "\x1bQ0;0000000041/`%%%=Pji,0101,UNIC\nEMU=RLX\nBIN=2\nMAK=UNIX\n"
            "\x1bQ7;0000000023/a\x1bQ0;4;1;0!@"
            "\x1bQ9;0000000022/a\x1bQ1;7200!C");
}

TEST_F(JobHeader, Tray_P_IsWritten_A_WithTheShortPaperSequence) {
  next_header();
  apply({.tray = "P"});
  EXPECT_EQ(next_header(),
            "\x1bQ0;0000000041/`%%%=Pji,0101,UNIC\nEMU=RLX\nBIN=A\nMAK=UNIX\n"
            "\x1bQ7;0000000021/a\x1bQ0;4;0!F"
            "\x1bQ9;0000000022/a\x1bQ1;7200!C");
}

TEST_F(JobHeader, NewFormLengthForcesPaper_LP_AndTheFormLengthSequence) {
  next_header();
  apply({.paper = "A4", .form_length = 330});
  EXPECT_EQ(next_header(),
            "\x1bQ0;0000000050/`%%%=Pji,0101,UNIC\nEMU=RLX\nPSZ=LP\nFFL=330\nMAK=UNIX\n"
            "\x1bQ7;0000000035/a\x1bQ0;4;0!F\x1bQ10;;00330;!\\"
            "\x1bQ9;0000000022/a\x1bQ1;7200!C");
}

TEST_F(JobHeader, EverythingAtOnceStandsInItsOrder) {
  the_filter().command_line.resolution = 400;
  apply(kEverything);
  EXPECT_EQ(next_header(),
            parameter_block("DCH=400\nFOV=OVERLAY8\nOVS=2\nCPS=3\nFRM=FORM\nDUP=1\nORT=4\nPSZ=LP\n"
                            "FFL=330\nBIN=2\n") +
                kJobStart + block('8', "\x1bQ400!A") +
                block('7', "\x1bQ100;100!I\x1bQ0;4;1;0!@\x1bQ10;;00330;!\\\x1bQ66;80!I") +
                block('9', "\x1bQ1;7200!C\x1bQ2;2;00720;00000!W\x1bQ1440;2880;;!H"));
  // Two offsets that are both long are deliberately sent again.
  EXPECT_EQ(next_header(), block('9', "\x1bQ1;7200!C\x1bQ1440;2880;;!H"));
}

TEST_F(JobHeader, WidestValuesFit) {
  constexpr std::int32_t kLowest = -2147483647 - 1;
  HeaderValues values = kEverything;
  values.overlays = kLowest;
  values.copies = kLowest;
  values.margin = kLowest;
  values.form_length = kLowest;
  values.first_offset = 2147483647;
  values.second_offset = 2147483647;
  next_header();
  apply(values);
  EXPECT_EQ(next_header(),
            header_bytes({"FOV=OVERLAY8\nOVS=-2147483648\nCPS=-2147483648\nFRM=FORM\nDUP=1\n"
                          "ORT=4\nPSZ=LP\nFFL=-2147483648\nBIN=2\n",
                          "\x1bQ100;100!I\x1bQ0;4;1;0!@\x1bQ10;;-2147483648;!\\\x1bQ66;80!I",
                          "\x1bQ2;2;-2147483648;00000!W\x1bQ2147483647;2147483647;;!H"}));
}

TEST_F(JobHeader, TextOf35BytesWritesNoBlock) {
  // Nothing but the lines that are always there: 18, 8 and 9 bytes.
  the_filter().command_line.resolution = 0;
  EXPECT_EQ(next_header(), kJobStart + kNextHeader);
  EXPECT_EQ(parameters_at_job_end(), "");
}

TEST_F(JobHeader, ShortestLineWritesTheBlock) {
  next_header();
  apply({.form_name = "A"});
  EXPECT_EQ(next_header(),
            "\x1bQ0;0000000041/`%%%=Pji,0101,UNIC\nEMU=RLX\nFOV=A\nMAK=UNIX\n" + kNextHeader);
}

TEST_F(JobHeader, DensityFollowsTheResolution) {
  const auto header = [](const std::string& dots) {
    return parameter_block("DCH=" + dots + "\n") + block('8', "\x1bQ" + dots + "!A") + kNextHeader;
  };
  next_header();
  the_filter().command_line.resolution = 400;
  EXPECT_EQ(next_header(), header("400"));
  EXPECT_EQ(next_header(), kNextHeader);
  the_filter().command_line.resolution = 240;
  EXPECT_EQ(next_header(), header("240"));
  the_filter().command_line.resolution = 1200;
  EXPECT_EQ(next_header(), header("1200"));
  the_filter().command_line.resolution = 0;
  EXPECT_EQ(next_header(), header("0"));
  the_filter().command_line.resolution = -240;
  EXPECT_EQ(next_header(), header("-240"));
}

TEST_F(JobHeader, JobStartIsWrittenOncePerJob) {
  next_header();
  the_filter().job.job_started = 0;
  EXPECT_EQ(next_header(), kJobStart + kNextHeader);
  EXPECT_EQ(next_header(), kNextHeader);
}

TEST_F(JobHeader, JobThatIsStartedGetsNoSecondStart) {
  the_filter().job.job_started = 1;
  EXPECT_EQ(next_header(), kFirstParameters + kFirstDensity + kNextHeader);
}

TEST_F(JobHeader, ParameterTextAloneAtTheEndOfTheJob) {
  EXPECT_EQ(parameters_at_job_end(), kFirstParameters);
  EXPECT_EQ(the_filter().job.job_started, 0);
}

TEST_F(JobHeader, ParameterTextAloneLeavesTheCopiesThatWaitForTheirSequences) {
  the_filter().command_line.resolution = 400;
  apply(kEverything);
  EXPECT_EQ(parameters_at_job_end(),
            parameter_block("DCH=400\nFOV=OVERLAY8\nOVS=2\nCPS=3\nFRM=FORM\nDUP=1\nORT=4\nPSZ=LP\n"
                            "FFL=330\nBIN=2\n"));
  const std::string again = "DCH=400\nDUP=1\nORT=4\nPSZ=LP\nFFL=330\nBIN=2\n";
  EXPECT_EQ(parameters_at_job_end(), parameter_block(again));
  EXPECT_EQ(next_header(),
            parameter_block(again) + kJobStart + block('8', "\x1bQ400!A") +
                block('7', "\x1bQ100;100!I\x1bQ0;4;1;0!@\x1bQ10;;00330;!\\\x1bQ66;80!I") +
                block('9', "\x1bQ1;7200!C\x1bQ2;2;00720;00000!W\x1bQ1440;2880;;!H"));
  EXPECT_EQ(parameters_at_job_end(), "");
}

TEST_F(JobHeader, ParameterTextAloneReplacesThePaperSizeOfANewForm) {
  apply({.paper = "A4", .form_length = 330});
  parameters_at_job_end();
  EXPECT_STREQ(the_filter().conditions.paper_size.data(), "LP");
}

TEST_F(JobHeader, ResetForgetsAllCopies) {
  apply({.form_name = "A", .copies = 2, .orientation = "P"});
  const std::string first = next_header();
  next_header();
  the_filter().header.sent = {};
  the_filter().job.job_started = 0;
  EXPECT_EQ(next_header(), first);
}

/// Form overlay, counts and form code: lines of the text, nothing else.
TEST_F(JobHeader, LinesWithoutSequences) {
  const std::array rows{
      sent_once({.form_name = "A"}, {.form_name = "FORM0008"}, {.lines = "FOV=A\n"},
                {.lines = "FOV=FORM0008\n"}),
      sent_once({.form_code = "A"}, {.form_code = "CODE"}, {.lines = "FRM=A\n"},
                {.lines = "FRM=CODE\n"}),
      sent_once({.overlays = 1}, {.overlays = 999}, {.lines = "OVS=1\n"}, {.lines = "OVS=999\n"}),
      sent_once({.overlays = -1}, {.overlays = 1}, {.lines = "OVS=-1\n"}, {.lines = "OVS=1\n"}),
      sent_once({.copies = 1}, {.copies = 999}, {.lines = "CPS=1\n"}, {.lines = "CPS=999\n"}),
      sent_once({.copies = -1}, {.copies = 1}, {.lines = "CPS=-1\n"}, {.lines = "CPS=1\n"}),
  };
  for (const HeaderRow& row : rows) {
    SCOPED_TRACE(row.first.lines);
    reset_filter();
    expect_pages(row);
  }
}

TEST_F(JobHeader, CopiesOfZeroAreAChangeLikeAnyOther) {
  expect_pages(sent_once({.copies = 2}, {}, {.lines = "CPS=2\n"}, {.lines = "CPS=0\n"}));
}

/// What is no longer given is not sent, and its copy stays: the same value is no change afterwards.
TEST_F(JobHeader, ValuesThatAreNoLongerGivenLeaveTheirCopies) {
  const std::array rows{
      HeaderRow{{.form_name = "A"}, {}, {.lines = "FOV=A\n"}, {}, {}, {}},
      HeaderRow{{.form_code = "A"}, {}, {.lines = "FRM=A\n"}, {}, {}, {}},
      HeaderRow{{.overlays = 3}, {}, {.lines = "OVS=3\n"}, {}, {}, {}},
      HeaderRow{
          {.duplex = "B"}, {}, {.lines = "DUP=1\n", .setup = "\x1bQ2;0;00000;00000!W"}, {}, {}, {}},
      HeaderRow{{.orientation = "L"},
                {},
                {.lines = "ORT=1\n", .format = "\x1bQ100;100!I\x1bQ0;4;1!F"},
                {},
                {},
                {}},
      HeaderRow{{.paper = "A4"}, {}, {.lines = "PSZ=A4\n", .format = "\x1bQ0;4;0!F"}, {}, {}, {}},
      HeaderRow{{.form_length = 330},
                {},
                {.lines = "PSZ=LP\nFFL=330\n", .format = "\x1bQ0;4;0!F\x1bQ10;;00330;!\\"},
                {},
                {},
                {}},
      HeaderRow{{.tray = "P3"}, {}, {.lines = "BIN=3\n", .format = "\x1bQ0;4;3;0!@"}, {}, {}, {}},
  };
  for (const HeaderRow& row : rows) {
    SCOPED_TRACE(row.first.lines);
    reset_filter();
    expect_pages(row);
  }
}

}  // namespace
}  // namespace rlx::testing
