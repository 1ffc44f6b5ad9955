// How the main loop moves the paper: with a form, and with page-length emulation without one.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "driver/loop/loop_state.h"
#include "driver/main_loop.h"
#include "job/command_record.h"
#include "job/settings.h"
#include "support/descriptors.h"
#include "support/input_stream.h"
#include "support/main_loop_fixture.h"
#include "support/page_data.h"
#include "support/record_builder.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::CaptureDescriptor;
using testing::end_frame;
using testing::job_pages;
using testing::JobResult;
using testing::kCommandConditions;
using testing::kSixLines;
using testing::kStartConditions;
using testing::Routed;
using testing::run_job;
using testing::StandardInput;

const std::string kFour = "\x1c%!( p";
const std::string kEight = testing::kEightLines;
const std::string kThree = "\x1c%\"$ p";

class MainLoopForms : public testing::MainLoopTest {
 protected:
  MainLoopForms() {
    testing::write_file("forms/fcbe/EGHT", "print 1 7200\nlpi 900 8\n");
    testing::write_file("forms/fcbe/TOP3", "print 3 7200\nlpi 1200 6\n");
    testing::write_file("forms/fcbe/BAD", "lines 6\n");
  }

  static std::string naming(std::string_view form) {
    testing::ConditionColumns columns;
    columns.layout = "2";
    columns.fcb_name = form;
    return testing::condition_sequence(columns);
  }
  static JobResult job(std::string_view input, std::vector<std::string> options = {}) {
    options.insert(options.end(), {"-p", "forms"});
    return run_job(options, input);
  }

 private:
  testing::ScratchDirectory scratch_;
};

// Forms: line feeds

TEST_F(MainLoopForms, FinalLineFeedWithAFormDoesNotAdvanceIt) {
  EXPECT_EQ(job_pages(job("A\nB\n", {"-n", "EGHT"})),
            kStartConditions + kEight + "A\n" + kEight + "B\n\x0c|");
  restart();
  use_form({6, 8}, 1);
  hold_movement("VVV");
  const StandardInput input("");
  const Routed routed = route(CMD_LF, "\n");
  EXPECT_TRUE(routed.goes_on);
  EXPECT_EQ(routed.data, "\n");
  EXPECT_EQ(the_filter().loop.current_store->cur_line, 0);
  EXPECT_EQ(the_filter().loop.end_marker, ST_EOF);
  EXPECT_EQ(held_movement(), "VVV");
  EXPECT_EQ(the_filter().job.page_started, 1);
}

TEST_F(MainLoopForms, LineFeedLeavesTheByteBehindItInTheInput) {
  use_form({6, 8}, 1);
  const StandardInput input("X");
  EXPECT_EQ(route(CMD_LF, "\n").data, "\n" + kEight);
  EXPECT_EQ(the_filter().loop.end_marker, 0);
  EXPECT_EQ(testing::rest_of_input(), "X");
}

TEST_F(MainLoopForms, LoopReadsNoMoreOnceALineFeedWasTheLastByte) {
  const StandardInput input("A");
  the_filter().loop.end_marker = ST_EOF;
  EXPECT_EQ(run_main_loop(the_filter().loop), JobEnd::flush);
  EXPECT_EQ(the_filter().loop.status, 0);
  EXPECT_EQ(testing::rest_of_input(), "A");
}

TEST_F(MainLoopForms, LineFeedOverTheFormsEndBeginsTheNextForm) {
  use_form({6, 4}, 2);
  the_filter().loop.current_store->cur_line = 1;
  hold_movement("VVV");
  const StandardInput input("X");
  // What was held goes out, the line feed is dropped, and the movement to the new form is held.
  EXPECT_EQ(route(CMD_LF, "\n").data, "VVV");
  EXPECT_EQ(held_movement(), "\x0c" + kSixLines + "\n" + kFour);
  EXPECT_EQ(the_filter().loop.current_store->cur_line, 1);
  // A form feed inside a piece ends no page.
  const Routed text = route(CMD_TEXT_ASCII, "A");
  EXPECT_EQ(text.data, "\x0c" + kSixLines + "\n" + kFour + "A");
  EXPECT_EQ(text.pages, 0);
}

TEST_F(MainLoopForms, ReadErrorBehindALineFeedEndsTheJobAsAReadError) {
  use_form({6, 8}, 1);
  const testing::FailingInput input("");
  const CaptureDescriptor messages(2);
  const Routed routed = route(CMD_LF, "\n");
  EXPECT_FALSE(routed.goes_on);
  EXPECT_EQ(the_filter().loop.status, 129);
  EXPECT_EQ(routed.data, "");
  EXPECT_EQ(messages.text(), "filter: Connection reset by peer\n");
}

TEST_F(MainLoopForms, LineFeedWithoutAFormDoesNotLookAhead) {
  const testing::FailingInput input("");
  EXPECT_EQ(route(CMD_LF, "\n").data, "\n");
  open_frame(false, "X");
  use_form({6, 8}, 1);
  EXPECT_TRUE(pass(CMD_LF, "\n"));
  EXPECT_EQ(gathered_frame(), "\n");
}

// Forms: form feeds and print-condition commands

TEST_F(MainLoopForms, FormFeedForgetsHeldMovementAndHoldsTheNextForms) {
  use_form({6, 4, 8}, 3);
  hold_movement("VVV");
  the_filter().job.page_started = 1;
  the_filter().loop.line_counter = 5;
  const Routed routed = route(CMD_FF, "\x0c");
  EXPECT_EQ(routed.data, "\x0c");
  EXPECT_EQ(routed.pages, 1);
  // The page's own form feed is the only one.
  EXPECT_EQ(held_movement(), kSixLines + "\n" + kFour + "\n" + kEight);
  EXPECT_EQ(the_filter().loop.line_counter, 0);
}

TEST_F(MainLoopForms, InvalidCharacterAndOtherCommandsLeaveMovementHeld) {
  EXPECT_EQ(job_pages(job("\xff\x1c%!pA", {"-n", "EGHT"})),
            kStartConditions + "\xff\x1c%!p" + kEight + "A\x0c|");
}

TEST_F(MainLoopForms, CommandNamesAForm) {
  EXPECT_EQ(job_pages(job("A" + naming("TOP3") + "B\nC")),
            kStartConditions + "A\x0c|" + kCommandConditions + kSixLines + "\n" + kSixLines + "\n" +
                kSixLines + "B\n" + kSixLines + "C\x0c|");
}

TEST_F(MainLoopForms, CommandWithoutANameGoesBackToTheFormOfTheCommandLine) {
  EXPECT_EQ(job_pages(job("A" + naming("TOP3") + "B" + naming("") + "C", {"-n", "EGHT"})),
            kStartConditions + kEight + "A\x0c|" + kCommandConditions + kSixLines + "\n" +
                kSixLines + "\n" + kSixLines + "B\x0c|" + kCommandConditions + kEight + "C\x0c|");
}

TEST_F(MainLoopForms, CommandWithoutANameSwitchesFormsOffWhenThereIsNone) {
  EXPECT_EQ(job_pages(job("A" + naming("TOP3") + "B" + naming("") + "C\nD")),
            kStartConditions + "A\x0c|" + kCommandConditions + kSixLines + "\n" + kSixLines + "\n" +
                kSixLines + "B\x0c|" + kCommandConditions + "C\nD\x0c|");
}

TEST_F(MainLoopForms, FormNameCommandKeepsTheFormAndGoesToItsTop) {
  EXPECT_EQ(job_pages(job("A\n" + testing::kFormNameCommand + "B", {"-n", "TOP3"})),
            kStartConditions + kSixLines + "\n" + kSixLines + "\n" + kSixLines + "A\n" + kSixLines +
                "\x0c|" + kCommandConditions + kSixLines + "\n" + kSixLines + "\n" + kSixLines +
                "B\x0c|");
}

TEST_F(MainLoopForms, FormThatCannotBeLoadedEndsTheJobBehindThePage) {
  for (const char* form : {"BAD", "NONE"}) {
    const JobResult result = job("A" + naming(form) + "B");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.messages, "filter: FCB data error\n");
    EXPECT_EQ(job_pages(result), kStartConditions + "A\x0c|");
    EXPECT_TRUE(result.output.ends_with(testing::kJobEnd));
  }
  const JobResult result = job("A" + naming("A-B ") + "B");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.messages, "filter: FCB name error\n");
}

TEST_F(MainLoopForms, FramedJobsCarryNoForm) {
  EXPECT_EQ(job(end_frame("A\n" + naming("EGHT") + "B\nC"), {"-d", "-n", "TOP3"}).output,
            end_frame(testing::kFramedReset + "A\n\x0c" + testing::kFramedReset + "B\nC"));
  // The name is looked up all the same.
  EXPECT_EQ(job(end_frame(naming("NONE")), {"-d"}).status, 1);
}

// Forms: commands 397 and 421

TEST_F(MainLoopForms, Commands397And421SendThePitchOfTheCurrentLine) {
  for (const std::uint32_t code : {CMD_FORM_PITCH_397, CMD_FORM_PITCH_421}) {
    restart();
    use_form({3, 4, 6, 8, 12}, 1);
    const std::vector<std::string> pitches{kThree, kFour, kSixLines, kEight, "\x1c%& p", ""};
    for (std::size_t line = 0; line < pitches.size(); ++line) {
      the_filter().loop.current_store->cur_line = static_cast<std::int32_t>(line);
      EXPECT_EQ(route(code, "\x1b[xz").data, "\x1b[xz" + pitches[line]) << line;
    }
    the_filter().loop.current_store->cur_line = 0;
    the_filter().loop.fcb_active = false;
    EXPECT_EQ(route(code, "\x1b[xz").data, "\x1b[xz");
  }
}

TEST_F(MainLoopForms, ThePitchOfTheCurrentLineIsCarried) {
  use_form({4, 6}, 1);
  route(CMD_FORM_PITCH_397, "\x1b[xz");
  EXPECT_EQ(testing::take_kept_settings(), testing::block('6', kFour));
}

TEST_F(MainLoopForms, OtherCommandsSendNoPitchOfTheForm) {
  testing::for_each_code([](std::uint32_t code) {
    if (testing::is_one_of(code, {CMD_FORM_PITCH_397, CMD_FORM_PITCH_421, CMD_LF, CMD_Q_BQ_SL})) {
      return;
    }
    const StandardInput input("");
    restart();
    use_form({12, 12}, 1);
    EXPECT_EQ(route(code, testing::bytes_for(code)).data.find("\x1c%&"), std::string::npos) << code;
  });
}

// Page-length emulation

TEST_F(MainLoopForms, WithLEveryThirdLineFeedIsFollowedByAFormFeed) {
  EXPECT_EQ(job_pages(run_job({"-L", "3"}, "1\n2\n3\n4\n5\n6\n7\n")),
            kStartConditions + "1\n2\n3\n\x0c|4\n5\n6\n\x0c|7\n\x0c|");
  EXPECT_EQ(job_pages(run_job({"-L", "1"}, "1\n2\n")), kStartConditions + "1\n\x0c|2\n\x0c|");
}

TEST_F(MainLoopForms, LineFeedOfLAndItsFormFeedAreOnePieceThatEndsThePage) {
  the_filter().command_line.lines_per_page = 2;
  EXPECT_EQ(route(CMD_LF, "\n").pages, 0);
  const Routed routed = route(CMD_LF, "\n");
  EXPECT_EQ(routed.data, "\n\x0c");
  EXPECT_EQ(routed.pages, 1);
  EXPECT_EQ(the_filter().loop.line_counter, 0);
}

TEST_F(MainLoopForms, NoLineFeedEndsAPageOfNegativeLengthHoweverManyCame) {
  the_filter().command_line.lines_per_page = -1;
  // From where a counter of 32 bits would go on at a negative number, and come to -1.
  for (const std::int64_t counted : {2147483646LL, 2147483647LL, 4294967294LL, 4294967295LL}) {
    the_filter().loop.line_counter = counted;
    const Routed routed = route(CMD_LF, "\n");
    EXPECT_EQ(routed.data, "\n") << counted;
    EXPECT_EQ(routed.pages, 0) << counted;
    EXPECT_EQ(the_filter().loop.line_counter, counted + 1);
  }
}

TEST_F(MainLoopForms, GreatestPageLengthIsReached) {
  the_filter().command_line.lines_per_page = 2147483647;
  the_filter().loop.line_counter = 2147483645;
  EXPECT_EQ(route(CMD_LF, "\n").pages, 0);
  EXPECT_EQ(route(CMD_LF, "\n").data, "\n\x0c");
  EXPECT_EQ(the_filter().loop.line_counter, 0);
}

struct PitchOption {
  const char* text;
  const char* pitch;
};

TEST_F(MainLoopForms, WithLowerLAndUpperLEachLineFeedGetsItsPitchInTheNumericForm) {
  const std::string six = "\x1c%!\" p";
  for (const PitchOption& option : std::vector<PitchOption>{{"6", "\x1c%!\" p"},
                                                            {"4", "\x1c%!( p"},
                                                            {"3", "\x1c%\"$ p"},
                                                            {" 6", "\x1c%!\" p"},
                                                            {"06", "\x1c%!\" p"},
                                                            {"6.5", "\x1c%!\" p"},
                                                            {"2", ""},
                                                            {"5", ""},
                                                            {"7", ""},
                                                            {"8", ""},
                                                            {"12", ""},
                                                            {"0", ""},
                                                            {"-6", ""},
                                                            {"x6", ""},
                                                            {"", ""}}) {
    restart();
    the_filter().command_line.lines_per_page = 3;
    the_filter().settings.line_pitch_source = kFromCommandLine;
    the_filter().settings.line_pitch_text = option.text;
    const std::string line = "\n" + std::string(option.pitch);
    EXPECT_EQ(route(CMD_LF, "\n").data, line) << option.text;
    EXPECT_EQ(route(CMD_LF, "\n").data, line) << option.text;
    EXPECT_EQ(route(CMD_LF, "\n").data, line + "\x0c") << option.text;
    EXPECT_EQ(route(CMD_LF, "\n").data, line) << option.text;
  }
}

TEST_F(MainLoopForms, LowerLWithoutUpperLAppendsNothing) {
  EXPECT_EQ(job_pages(run_job({"-l", "6"}, "1\n2\n")), kStartConditions + "1\n2\n\x0c|");
  EXPECT_EQ(job_pages(run_job({"-l", "6", "-L", "0"}, "1\n2\n")), kStartConditions + "1\n2\n\x0c|");
}

TEST_F(MainLoopForms, NegativeUpperLNeverBreaksAPage) {
  std::string lines;
  std::string pitched;
  for (int i = 0; i < 300; ++i) {
    lines += "\n";
    pitched += "\n" + kSixLines;
  }
  EXPECT_EQ(job_pages(run_job({"-L", "-3"}, "A" + lines)),
            kStartConditions + "A" + lines + "\x0c|");
  EXPECT_EQ(job_pages(run_job({"-L", "-3", "-l", "6"}, "A" + lines)),
            kStartConditions + "A" + pitched + "\x0c|");
}

TEST_F(MainLoopForms, FormFeedStartsTheCountAgain) {
  EXPECT_EQ(job_pages(run_job({"-L", "3"},
                              "1\n2\n\x0c"
                              "1\n2\n3\n4")),
            kStartConditions + "1\n2\n\x0c|1\n2\n3\n\x0c|4\x0c|");
}

TEST_F(MainLoopForms, FormFeedBecomesOnePlainByteInEveryMode) {
  for (const int lines : {0, 3, -3}) {
    for (const bool form : {false, true}) {
      restart();
      the_filter().command_line.lines_per_page = lines;
      the_filter().loop.line_counter = 2;
      if (form) {
        use_form({6}, 1);
      }
      const Routed routed = route(CMD_FF, "\x1b*f");
      EXPECT_EQ(routed.data, "\x0c");
      EXPECT_EQ(routed.pages, 1);
      EXPECT_EQ(the_filter().loop.line_counter, 0);
    }
  }
  open_frame(false, "X");
  the_filter().loop.line_counter = 2;
  EXPECT_TRUE(pass(CMD_FF, "\x1b*f"));
  EXPECT_EQ(gathered_frame(), "\x0c");
  EXPECT_EQ(the_filter().loop.line_counter, 0);
}

TEST_F(MainLoopForms, LinesAreNotCountedWithAFormNorInFrames) {
  the_filter().command_line.lines_per_page = 1;
  the_filter().loop.line_counter = 0;
  const StandardInput input("X");
  use_form({6, 6, 6}, 1);
  EXPECT_EQ(route(CMD_LF, "\n").data, "\n" + kSixLines);
  EXPECT_EQ(the_filter().loop.line_counter, 0);
  the_filter().loop.fcb_active = false;
  open_frame(false, "X");
  EXPECT_TRUE(pass(CMD_LF, "\n"));
  EXPECT_EQ(gathered_frame(), "\n");
  EXPECT_EQ(the_filter().loop.line_counter, 0);
}

TEST_F(MainLoopForms, CommandsDoNotStartTheCountAgain) {
  the_filter().command_line.lines_per_page = 3;
  the_filter().loop.line_counter = 2;
  EXPECT_TRUE(pass(CMD_Q_NL_SP, testing::kBlankCommand));
  EXPECT_EQ(the_filter().loop.line_counter, 2);
  EXPECT_EQ(route(CMD_LF, "\n").data, kCommandConditions + "\n\x0c");
}

}  // namespace
}  // namespace rlx
