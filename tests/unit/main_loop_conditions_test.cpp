// Print conditions in the main loop: what makes them pending, and what is sent then.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "driver/loop/loop_state.h"
#include "fonts/gaiji.h"
#include "job/command_record.h"
#include "job/print_conditions.h"
#include "job/settings.h"
#include "support/descriptors.h"
#include "support/main_loop_fixture.h"
#include "support/page_data.h"
#include "support/record_builder.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::bytes;
using testing::CaptureDescriptor;
using testing::job_pages;
using testing::kBlankCommand;
using testing::kCommandConditions;
using testing::kFormNameCommand;
using testing::kSetReset;
using testing::kSixLines;
using testing::kSpacing3;
using testing::kSpacing4;
using testing::kStandardState;
using testing::kStartConditions;
using testing::Routed;
using testing::run_job;

using MainLoopConditions = testing::MainLoopTest;

constexpr std::array kModes{kStandardMode, kFineMode, kFormLengthMode,
                            kExtendedMode, kMode6,    kMode7};

// Commands 482 and 483

TEST_F(MainLoopConditions, CommandRightAfterTextYieldsAFormFeedAndASecondOneNone) {
  EXPECT_EQ(job_pages(run_job({}, "A" + kBlankCommand + "B")),
            kStartConditions + "A\x0c|" + kCommandConditions + "B\x0c|");
  // The second command finds conditions pending and sends them; so does the text behind it.
  EXPECT_EQ(job_pages(run_job({}, "A" + kBlankCommand + kBlankCommand + "B")),
            kStartConditions + "A\x0c|" + kCommandConditions + kCommandConditions + "B\x0c|");
}

TEST_F(MainLoopConditions, FormNameCommandEndsThePageLikeAnyCommand) {
  EXPECT_EQ(job_pages(run_job({}, "A" + kFormNameCommand + kFormNameCommand + "B")),
            kStartConditions + "A\x0c|" + kCommandConditions + kCommandConditions + "B\x0c|");
}

TEST_F(MainLoopConditions, CommandWithoutContentBeforeItYieldsNoFormFeed) {
  // A line feed is no content, and a form feed ends it.
  for (const std::string before : {"\n", "A\x0c", ""}) {
    const std::string pages = job_pages(run_job({}, before + kBlankCommand + "B"));
    EXPECT_EQ(pages.find("\x0c|\x0c"), std::string::npos) << before;
    EXPECT_EQ(pages.find("\n\x0c"), std::string::npos) << before;
    EXPECT_TRUE(pages.ends_with(kCommandConditions + "B\x0c|")) << before;
  }
}

TEST_F(MainLoopConditions, CommandAtTheJobStartSendsTheStartConditionsFirst) {
  EXPECT_EQ(job_pages(run_job({}, kBlankCommand + "B")),
            kStartConditions + kCommandConditions + "B\x0c|");
}

TEST_F(MainLoopConditions, CommandForgetsContentWithOneFormFeed) {
  for (const std::uint32_t code : {CMD_Q_NL_SP, CMD_Q_NL_SP2}) {
    restart();
    the_filter().loop.content_since_conditions = true;
    const std::string_view command = testing::bytes_for(code);
    const Routed first = route(code, command);
    EXPECT_EQ(first.data, "\x0c");
    EXPECT_EQ(first.pages, 1);
    EXPECT_FALSE(the_filter().loop.content_since_conditions);
    EXPECT_EQ(the_filter().loop.record.length, 0);
    EXPECT_TRUE(the_filter().loop.conditions_pending);
    EXPECT_EQ(the_filter().loop.last_condition_code, code);
    EXPECT_EQ(the_filter().job.settings_changed, 1);
    EXPECT_EQ(route(code, command).data, kCommandConditions);
  }
}

TEST_F(MainLoopConditions, CommandFillsTheConditionFields) {
  the_filter().conditions.form_code = {'O', 'L', 'D'};
  testing::ConditionColumns columns;
  columns.form_overlay = "OVL";
  columns.paper_size = "A4 ";
  the_filter().loop.record = testing::condition_record(columns);
  EXPECT_TRUE(route_again().goes_on);
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "OVL");
  EXPECT_STREQ(the_filter().conditions.paper_size.data(), "A4");
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "");
}

TEST_F(MainLoopConditions, FormNameCommandLeavesTheConditionFieldsAlone) {
  the_filter().conditions.form_code = {'O', 'L', 'D'};
  the_filter().conditions.copies = 7;
  EXPECT_TRUE(route(CMD_Q_NL_SP2, kFormNameCommand).goes_on);
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "OLD");
  EXPECT_EQ(the_filter().conditions.copies, 7);
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "");
}

TEST_F(MainLoopConditions, UnreadableCommandEndsTheJobWithTheFieldsCleared) {
  for (const std::string_view command : {"\x1bQ1; n0000", "\x1bQ1;16 n  0AAAABBBBCCCCC"}) {
    restart();
    the_filter().conditions.form_code = {'O', 'L', 'D'};
    the_filter().loop.content_since_conditions = true;
    Routed routed;
    const CaptureDescriptor messages(2);
    routed = route(CMD_Q_NL_SP, command);
    EXPECT_FALSE(routed.goes_on);
    EXPECT_EQ(the_filter().loop.status, 1);
    EXPECT_EQ(routed.data, "\x0c");
    EXPECT_STREQ(the_filter().conditions.form_code.data(), "");
    const bool blank = command[4] == ' ';
    const std::string line = "filter: FCB data error\n";
    EXPECT_EQ(messages.text(), blank ? line + line : line);
  }
}

TEST_F(MainLoopConditions, CommandTakesSpacingFourWithOutputVariantTwoAndAbove) {
  for (const std::string option : {"-f", "-R"}) {
    EXPECT_EQ(job_pages(run_job({option}, kBlankCommand + "B")),
              kStartConditions + kSetReset + kSpacing4 + "B\x0c|")
        << option;
  }
  EXPECT_EQ(job_pages(run_job({"-A"}, kBlankCommand + "B")),
            kStartConditions + kCommandConditions + "B\x0c|");
  // With -E no spacing is sent at all.
  EXPECT_EQ(job_pages(run_job({"-E"}, kBlankCommand + "B")),
            kStandardState + kSetReset + kSixLines + kSetReset + "B\x0c|");
}

TEST_F(MainLoopConditions, CommandBytesNeverReachTheOutputButItsPendingDataDoes) {
  for (const std::uint32_t code : {CMD_Q_NL_SP, CMD_Q_NL_SP2}) {
    const testing::StandardInput input(
        "ab\x0c"
        "d");
    restart();
    the_filter().loop.record = testing::make_record(code, testing::bytes_for(code));
    the_filter().loop.record.pending = 4;
    const Routed routed = route_again();
    EXPECT_EQ(routed.data,
              "ab\x0c"
              "d");
    EXPECT_EQ(routed.pages, 1);
  }
}

TEST_F(MainLoopConditions, NothingIsSentWithOptionQ) {
  EXPECT_EQ(job_pages(run_job({"-q"}, "A" + kBlankCommand + "B\x1bQ!IC")), "A\x0c|B\x1bQ!IC\x0c|");
}

TEST_F(MainLoopConditions, LinePitchAndCharacterPitchOfTheCommandLineAreSent) {
  const std::string pitch = "\x1bQ0;0720/G\x1c$!$$p";
  EXPECT_EQ(job_pages(run_job({"-c", "10", "-l", "8"}, "A" + kBlankCommand + "B")),
            kStandardState + kSetReset + kSpacing3 + pitch + testing::kEightLines + "A\x0c|" +
                kSetReset + kSpacing3 + pitch + testing::kEightLines + "B\x0c|");
}

// Command 479

TEST_F(MainLoopConditions, Command479JudgesItsParameterInModes6And7Alone) {
  for (const int mode : kModes) {
    for (const bool before : {false, true}) {
      for (const bool resets : {false, true}) {
        restart();
        the_filter().command_line.emulation_mode = mode;
        the_filter().job.line_unit = 99;
        the_filter().loop.spacing_reset = before;
        const std::string_view command = resets ? "\x1bQ004!J" : "\x1bQ5!J";
        EXPECT_EQ(route(CMD_LINE_UNIT_479, command).data, command);
        const bool expected =
            mode == kStandardMode || (mode == kMode6 || mode == kMode7 ? resets : before);
        EXPECT_EQ(the_filter().loop.spacing_reset, expected) << mode << before << resets;
        EXPECT_EQ(the_filter().job.line_unit, expected ? 180 : 99) << mode << before << resets;
        EXPECT_EQ(the_filter().loop.conditions_pending, expected);
        EXPECT_EQ(the_filter().loop.last_condition_code, expected ? CMD_LINE_UNIT_479 : CMD_NONE);
        EXPECT_EQ(the_filter().job.settings_changed, expected ? 1 : 0);
      }
    }
  }
}

TEST_F(MainLoopConditions, Command479SendsPendingConditionsOnlyWhenItDoesNotReset) {
  the_filter().command_line.emulation_mode = kMode6;
  pend_conditions();
  EXPECT_EQ(route(CMD_LINE_UNIT_479, "\x1bQ5!J").data, kStartConditions + "\x1bQ5!J");
  pend_conditions();
  EXPECT_EQ(route(CMD_LINE_UNIT_479, "\x1bQ4!J").data, "\x1bQ4!J");
  EXPECT_EQ(route(CMD_TEXT_ASCII, "A").data, kStartConditions + "A");
}

// Command 478

TEST_F(MainLoopConditions, Command478ResetsTheLineUnitButInModes2To4) {
  for (const int mode : kModes) {
    restart();
    the_filter().command_line.emulation_mode = mode;
    the_filter().job.line_unit = 99;
    hold_command("HELD");
    const bool resets = mode != kFineMode && mode != kFormLengthMode && mode != kExtendedMode;
    EXPECT_EQ(route(CMD_Q_I_EX, "\x1bQ!I").data, resets ? "\x1bQ!I" : "HELD\x1bQ!I") << mode;
    EXPECT_EQ(the_filter().job.line_unit, resets ? 180 : 99) << mode;
    EXPECT_EQ(the_filter().loop.conditions_pending, resets) << mode;
    EXPECT_EQ(the_filter().loop.last_condition_code, resets ? CMD_Q_I_EX : CMD_NONE) << mode;
    EXPECT_EQ(the_filter().job.settings_changed, resets ? 1 : 0) << mode;
  }
}

TEST_F(MainLoopConditions, Command478IsSentBeforePendingConditionsInEveryMode) {
  for (const std::string option : {"-q", "-C", "-B", "-Q", "-A"}) {
    const std::string pages = job_pages(run_job({option}, "\x1bQ!IA"));
    EXPECT_TRUE(pages.starts_with("\x1bQ!I")) << option;
    EXPECT_EQ(pages, "\x1bQ!I" + (option == "-q" ? "" : kStartConditions) + "A\x0c|") << option;
  }
}

// Command 446

TEST_F(MainLoopConditions, Command446IsSentBeforePendingConditions) {
  EXPECT_EQ(job_pages(run_job({}, "\x1bQ!AA")), "\x1bQ!A" + kStartConditions + "A\x0c|");
}

// Command 500

std::string form_parameter(char kind, std::string_view data) {
  return "\x1bQ6;" + std::to_string(data.size() + 5) + " o" + kind + bytes("\0\0\0") +
         static_cast<char>(data.size()) + std::string(data);
}

TEST_F(MainLoopConditions, FormParameterBecomesPartOfTheConditions) {
  EXPECT_EQ(job_pages(run_job({}, "A" + form_parameter(1, "FORM") + "B")),
            kStartConditions + "A" + kStandardState + kSetReset + "FORM" + kSpacing3 + kSixLines +
                "B\x0c|");
}

TEST_F(MainLoopConditions, FormParameterOfKind3SelectsSpacingFour) {
  EXPECT_EQ(job_pages(run_job({}, form_parameter(3, "FORM") + "B")),
            kStandardState + kSetReset + "FORM" + kSpacing4 + kSixLines + "B\x0c|");
}

TEST_F(MainLoopConditions, FormParameterOfKind2DropsTheSpacingOnPrintersWithG) {
  EXPECT_EQ(job_pages(run_job({"-G", "g"}, form_parameter(2, "FORM") + "B")),
            kStandardState + kSetReset + "FORM" + kSixLines + "B\x0c|");
  EXPECT_EQ(job_pages(run_job({}, form_parameter(2, "FORM") + "B")),
            kStandardState + kSetReset + "FORM" + kSpacing3 + kSixLines + "B\x0c|");
}

TEST_F(MainLoopConditions, FormDataThatEndsThePageForgetsTheDownloadSize) {
  for (const bool ends_page : {false, true}) {
    restart();
    the_filter().gaiji.cur_dl_size = 2;
    EXPECT_TRUE(pass(CMD_Q_OL_SP, form_parameter(1, ends_page ? "FORM\x0c" : "FORM")));
    EXPECT_TRUE(pass(CMD_TEXT_ASCII, "A"));
    EXPECT_EQ(the_filter().gaiji.cur_dl_size, ends_page ? kUnknownSize : 2);
  }
}

TEST_F(MainLoopConditions, RefusedFormParameterIsConsumedAndChangesNothing) {
  EXPECT_EQ(job_pages(run_job({}, "A" + form_parameter(4, "FORM") + "B")),
            kStartConditions + "AB\x0c|");
  EXPECT_EQ(job_pages(run_job({}, "A" + form_parameter(1, std::string(101, 'x')) + "B")),
            kStartConditions + "AB\x0c|");
}

TEST_F(MainLoopConditions, RefusedFormParameterDoesNotSendWhatIsPending) {
  pend_conditions();
  EXPECT_EQ(route(CMD_Q_OL_SP, form_parameter(0, "FORM")).data, "");
  EXPECT_TRUE(the_filter().loop.conditions_pending);
  EXPECT_EQ(the_filter().loop.last_condition_code, CMD_NONE);
  EXPECT_EQ(the_filter().loop.record.length, 0);
}

TEST_F(MainLoopConditions, FormParameterWithMoreDataThanARecordHoldsPassesItThrough) {
  const std::string data(4095, 'x');
  EXPECT_EQ(job_pages(run_job({}, "\x1bQ6;4095 o" + data + "B")),
            data + kStartConditions + "B\x0c|");
}

// Commands 492, 333 and 489

TEST_F(MainLoopConditions, Command492SendsConditionsWhenItSwitchesOff) {
  the_filter().command_line.capability_F = 1;
  EXPECT_EQ(route(CMD_SECOND_VARIANT_492, "\x1bQ1!S").data, "\x1bQ1!S");
  EXPECT_EQ(the_filter().loop.command_492_state, 1);
  EXPECT_EQ(the_filter().loop.command_492_result, 1);
  EXPECT_EQ(route(CMD_SECOND_VARIANT_492, "\x1bQ0!S").data, "\x1bQ0!S" + kSixLines);
  EXPECT_EQ(the_filter().loop.command_492_state, 0);
  // Off again is no change, but is sent all the same.
  EXPECT_EQ(route(CMD_SECOND_VARIANT_492, "\x1bQ!S").data, "\x1bQ!S" + kSixLines);
  EXPECT_EQ(the_filter().loop.command_492_result, 0);
  EXPECT_EQ(route(CMD_SECOND_VARIANT_492, "\x1bQ2!S").data, "\x1bQ2!S");
  EXPECT_EQ(the_filter().loop.command_492_result, -1);
}

TEST_F(MainLoopConditions, Command492SendsThePitchesOfTheCommandLineUnkept) {
  the_filter().command_line.capability_F = 1;
  the_filter().settings.line_pitch_source = kFromCommandLine;
  the_filter().settings.line_pitch_text = "8";
  EXPECT_EQ(route(CMD_SECOND_VARIANT_492, "\x1bQ0!S").data, "\x1bQ0!S" + testing::kEightLines);
  EXPECT_EQ(testing::take_kept_settings(), "");
}

TEST_F(MainLoopConditions, Command492IsOrdinaryWithoutCapabilityF) {
  the_filter().command_line.printer_class = kPrinterClassF1;
  EXPECT_EQ(route(CMD_SECOND_VARIANT_492, "\x1bQ1!S").data, "\x1bQ1!S");
  EXPECT_EQ(the_filter().loop.command_492_state, 0);
  EXPECT_EQ(the_filter().loop.command_492_result, 0);
  EXPECT_EQ(route(CMD_SECOND_VARIANT_492, "\x1bQ0!S").data, "\x1bQ0!S");
  EXPECT_EQ(the_filter().job.settings_changed, 0);
}

TEST_F(MainLoopConditions, Command492SendsNothingWithOptionQOrInFrames) {
  the_filter().command_line.capability_F = 1;
  the_filter().command_line.print_conditions_enabled = 0;
  EXPECT_EQ(route(CMD_SECOND_VARIANT_492, "\x1bQ0!S").data, "\x1bQ0!S");
  the_filter().command_line.print_conditions_enabled = 1;
  open_frame(false, "X");
  EXPECT_EQ(route(CMD_SECOND_VARIANT_492, "\x1bQ0!S").data, "");
  EXPECT_EQ(gathered_frame(), "\x1bQ0!S");
}

TEST_F(MainLoopConditions, Command492MarksAChangeOnPrintersOfClassF1Alone) {
  for (const std::uint32_t printer : {kPrinterClassF0, kPrinterClassF1, kPrinterClassF2}) {
    for (const std::string_view command : {"\x1bQ1!S", "\x1bQ0!S", "\x1bQ11!S"}) {
      restart();
      the_filter().command_line.capability_F = 1;
      the_filter().command_line.printer_class = printer;
      EXPECT_TRUE(pass(CMD_SECOND_VARIANT_492, command));
      const int expected = printer == kPrinterClassF1 && command == "\x1bQ1!S" ? 1 : 0;
      EXPECT_EQ(the_filter().job.settings_changed, expected);
      EXPECT_EQ(the_filter().job.fonts_reloaded, expected);
    }
  }
}

TEST_F(MainLoopConditions, Command489SwitchesFontsOnPrintersOfClassF1Alone) {
  for (const std::uint32_t printer : {kPrinterClassF0, kPrinterClassF1, kPrinterClassF2}) {
    restart();
    the_filter().command_line.printer_class = printer;
    EXPECT_EQ(route(CMD_RESOLUTION_489, "\x1bQ400!P").data, "\x1bQ400!P");
    const int expected = printer == kPrinterClassF1 ? 1 : 0;
    EXPECT_EQ(the_filter().job.high_resolution_fonts, expected);
    EXPECT_EQ(the_filter().job.fonts_reloaded, expected);
    EXPECT_EQ(the_filter().job.settings_changed, expected);
  }
}

TEST_F(MainLoopConditions, Command489MarksAChangeOfSettingsEvenWhenTheFontsStay) {
  the_filter().command_line.printer_class = kPrinterClassF1;
  for (const std::string_view command : {"\x1bQ240!P", "\x1bQ300!P", "\x1bQx!P"}) {
    the_filter().job.settings_changed = 0;
    EXPECT_EQ(route(CMD_RESOLUTION_489, command).data, command);
    EXPECT_EQ(the_filter().job.fonts_reloaded, 0);
    EXPECT_EQ(the_filter().job.settings_changed, 1);
  }
}

TEST_F(MainLoopConditions, FontsThatCannotBeSetUpEndTheJob) {
  the_filter().command_line.printer_class = kPrinterClassF1;
  the_filter().command_line.font_variant = kFineFonts;
  the_filter().job.high_resolution_fonts = 1;
  EXPECT_FALSE(route(CMD_RESOLUTION_489, "\x1bQ240!P").goes_on);
  EXPECT_EQ(the_filter().loop.status, -1);
  EXPECT_EQ(run_job({"-B", "-G", "D240"}, "A" + kBlankCommand + "B").status, 255);
  EXPECT_EQ(run_job({"-B", "-G", "D400"}, "A" + kBlankCommand + "B").status, 0);
}

}  // namespace
}  // namespace rlx
