// Text, user-defined characters, held commands and set switches in the main loop.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "driver/fast_road/text_run.h"
#include "driver/loop/loop_state.h"
#include "driver/main_loop.h"
#include "fonts/fal_library.h"
#include "fonts/font_sets.h"
#include "fonts/gaiji.h"
#include "input/raw_input.h"
#include "job/command_record.h"
#include "job/settings.h"
#include "support/descriptors.h"
#include "support/font_sets_fixture.h"
#include "support/input_stream.h"
#include "support/main_loop_fixture.h"
#include "support/page_data.h"
#include "support/record_builder.h"
#include "support/standin_font_library.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::restart_raw_input;
using testing::the_filter;

using testing::bytes;
using testing::cnt_frame;
using testing::end_frame;
using testing::kFramedReset;
using testing::Routed;
using testing::run_job;
using testing::take_font_calls;

using MainLoopText = testing::MainLoopTest;

// Text

TEST_F(MainLoopText, TextIsConvertedAndItsOwnBytesAreNotWritten) {
  EXPECT_EQ(route(CMD_TEXT_ASCII, "A").data, "A");
  EXPECT_EQ(route(CMD_TEXT_MB, "\xe3\x81\x82").data, "\x1bQ2 y\x1b$@\xe3\x81\x82");
  EXPECT_EQ(route(CMD_TEXT_MB, "\xe3\x81\x84").data, "\xe3\x81\x84");
  EXPECT_EQ(route(CMD_TEXT_SS2, "\x8e\xb1").data, "\x1bQ1 y\x1b(H\xb1");
  EXPECT_EQ(route(CMD_TEXT_SS2, "\x8e").data, "");
  EXPECT_EQ(route(CMD_TEXT_MB, "\xe3\x81\x82").data, "\x1bQ2 y\x1b$@\xe3\x81\x82");
  EXPECT_EQ(route(CMD_TEXT_BAD, "\xff").data, "\x1b(H\xff");
  EXPECT_EQ(route(CMD_SO, "xy").data, bytes("\0"));
  EXPECT_EQ(route(CMD_SI, "xy").data, bytes("\0"));
}

TEST_F(MainLoopText, FramedTextGoesIntoTheFrame) {
  open_frame(false, "X");
  EXPECT_EQ(route(CMD_TEXT_MB, "\xe3\x81\x82").data, "");
  EXPECT_EQ(gathered_frame(), "\x1bQ2 y\x1b$@\xe3\x81\x82");
}

TEST_F(MainLoopText, FramedCommandsAreNotKeptForTheCarriedSettings) {
  open_frame(false, "X");
  EXPECT_TRUE(pass(CMD_FS_DOLLAR, "\x1c$!p"));
  EXPECT_EQ(gathered_frame(), "\x1c$!p");
  EXPECT_EQ(testing::take_kept_settings(), "");
}

// User-defined characters without the font library

TEST_F(MainLoopText, UndefinedCharacterFollowsTheRuleOfTheCommandLine) {
  EXPECT_EQ(route(CMD_TEXT_GAIJI, "\xf5\xa1").data, "\x1b$D!!");
  EXPECT_EQ(route(CMD_TEXT_GAIJI, "\xf5\xa1").data, "!!");
  the_filter().command_line.undefined_gaiji_pattern = 1;
  EXPECT_EQ(route(CMD_TEXT_GAIJI, "\xf5\xa1").data, "\x1b$B\x1b(H_");
  EXPECT_EQ(the_filter().loop.character_set.set, 1);
  EXPECT_EQ(route(CMD_TEXT_GAIJI, "\xf5\xa1").data, "\x1b$D\x1b$B\x1b(H_");
}

TEST_F(MainLoopText, SecondConverterTakesTheSpaceRule) {
  for (const std::uint32_t printer : {kPrinterClassF0, kPrinterClassF1, kPrinterClassF2}) {
    for (const int state : {0, 1}) {
      restart();
      the_filter().command_line.undefined_gaiji_pattern = 1;
      the_filter().command_line.printer_class = printer;
      the_filter().loop.command_492_state = state;
      const bool second = printer == kPrinterClassF1 && state == 1;
      EXPECT_EQ(route(CMD_TEXT_GAIJI, "\xf5\xa1").data,
                second ? "\x1b$D!!" : "\x1b$D\x1b$B\x1b(H_");
    }
  }
}

TEST_F(MainLoopText, TextBehindAUserDefinedCharacterSwitchesBack) {
  EXPECT_EQ(route(CMD_TEXT_GAIJI, "\xf5\xa1").data, "\x1b$D!!");
  // The state of the download set is the double-byte one.
  EXPECT_EQ(route(CMD_TEXT_MB, "\xe3\x81\x82").data, "\xe3\x81\x82");
  EXPECT_EQ(route(CMD_TEXT_ASCII, "A").data, "\x1bQ1 y\x1b(HA");
}

TEST_F(MainLoopText, SwitchToTheSingleByteSetEndsTheDownloadSet) {
  const auto put_gaiji = [] { return route(CMD_TEXT_GAIJI, "\xf5\xa1").data; };
  EXPECT_EQ(put_gaiji(), "\x1b$D!!");
  EXPECT_TRUE(pass(CMD_SINGLE_BYTE_481, "\x1bQ1~"));
  EXPECT_TRUE(pass(CMD_TEXT_MB, "\xe3\x81\x82"));
  EXPECT_TRUE(put_gaiji().ends_with("\x1b$@\xe3\x81\x82\x1b$D!!"));
  // The same along the fast road, in a burst and in single steps.
  for (const std::size_t spaces : {0U, 200U}) {
    EXPECT_EQ(put_gaiji(), "!!");
    const testing::StandardInput input("A\xe3\x81\x82" + std::string(spaces, ' ') + "\x1b");
    restart_raw_input();
    ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
    write_text_run(the_filter().loop);
    EXPECT_EQ(the_filter().source.raw.window.size(), 1U);
    restart_raw_input();
    EXPECT_TRUE(put_gaiji().ends_with("\x1b$D!!"));
  }
}

// Command 481

TEST_F(MainLoopText, Command481LeavesTheDoubleByteSetFirst) {
  EXPECT_EQ(route(CMD_SINGLE_BYTE_481, "\x1bQ1~").data, "\x1bQ1~");
  EXPECT_TRUE(pass(CMD_TEXT_MB, "\xe3\x81\x82"));
  testing::take_kept_settings();
  EXPECT_EQ(route(CMD_SINGLE_BYTE_481, "\x1bQ1~").data, "\x1bQ2 y\x1b$@\xe3\x81\x82\x1b(H\x1bQ1~");
  EXPECT_EQ(the_filter().loop.character_set.set, 1);
  EXPECT_EQ(testing::take_kept_settings(), "");
  EXPECT_EQ(route(CMD_SINGLE_BYTE_481, "\x1bQ1~").data, "\x1bQ1~");
  EXPECT_EQ(route(CMD_TEXT_MB, "\xe3\x81\x82").data, "\x1bQ2 y\x1b$@\xe3\x81\x82");
}

TEST_F(MainLoopText, OnlyCommand481LeavesTheDoubleByteSet) {
  testing::for_each_code([](std::uint32_t code) {
    if (testing::is_one_of(
            code, {CMD_SINGLE_BYTE_481, CMD_TEXT_ASCII, CMD_TEXT_SS2, CMD_TEXT_BAD, CMD_Q_BQ_SL})) {
      return;
    }
    const testing::StandardInput input(bytes("\0"));
    restart();
    the_filter().loop.character_set.select_double_byte();
    EXPECT_EQ(route(code, testing::bytes_for(code)).data.find("\x1b(H"), std::string::npos) << code;
    EXPECT_EQ(the_filter().loop.character_set.set, 2) << code;
  });
}

// Command 488

TEST_F(MainLoopText, Command488IsHeldUntilTheNextCommand) {
  the_filter().command_line.printer_class = kPrinterClassF1;
  EXPECT_EQ(route(CMD_HOLD_488, "\x1bQ1!O").data, "");
  EXPECT_EQ(route(CMD_HOLD_488, "\x1bQ2!O").data, "\x1bQ1!O");
  EXPECT_EQ(route(CMD_TEXT_ASCII, "A").data, "\x1bQ2!OA");
  EXPECT_EQ(route(CMD_TEXT_ASCII, "A").data, "A");
}

TEST_F(MainLoopText, Command488IsWrittenAtOnceOnOtherPrinters) {
  for (const std::uint32_t printer : {kPrinterClassF0, kPrinterClassF2}) {
    the_filter().command_line.printer_class = printer;
    EXPECT_EQ(route(CMD_HOLD_488, "\x1bQ1!O").data, "\x1bQ1!O");
    EXPECT_EQ(the_filter().loop.held_command.length, 0);
  }
}

TEST_F(MainLoopText, HeldCommandOfTheLongestRecordIsWrittenWhole) {
  the_filter().command_line.printer_class = kPrinterClassF1;
  const std::string longest(kRecordCapacity, 'x');
  EXPECT_EQ(route(CMD_HOLD_488, longest).data, "");
  EXPECT_EQ(route(CMD_TEXT_ASCII, "A").data, longest + "A");
}

TEST_F(MainLoopText, HeldCommandIsDroppedByItsCounterparts) {
  the_filter().command_line.printer_class = kPrinterClassF1;
  for (const std::uint32_t code : {CMD_DROP_HELD_334, CMD_DROP_HELD_335, CMD_DROP_HELD_487}) {
    EXPECT_EQ(route(CMD_HOLD_488, "\x1bQ1!O").data, "");
    EXPECT_EQ(route(code, "zz").data, "zz");
    EXPECT_EQ(route(CMD_TEXT_ASCII, "A").data, "A");
  }
}

TEST_F(MainLoopText, PendingDataOfAHeldCommandIsLeftInTheInput) {
  the_filter().command_line.printer_class = kPrinterClassF1;
  const testing::StandardInput input("DATA");
  the_filter().loop.record = testing::make_record(CMD_HOLD_488, "\x1bQ1!O");
  the_filter().loop.record.pending = 2;
  EXPECT_EQ(route_again().data, "");
  EXPECT_EQ(testing::rest_of_input(), "DATA");
}

// Frames

TEST_F(MainLoopText, CutSequenceAtTheEndOfTheEndFrameIsWritten) {
  EXPECT_EQ(run_job({"-d"}, end_frame("A\x1bQ1")).output, end_frame(kFramedReset + "A\x1bQ1"));
  EXPECT_EQ(run_job({"-d"}, end_frame("A\x1bQ1;9!aDA")).output,
            end_frame(kFramedReset + "A\x1bQ1;9!aDA"));
}

TEST_F(MainLoopText, IgnoredSequenceInsideAFrameIsSkipped) {
  EXPECT_EQ(run_job({"-d"}, end_frame("A\x1bxB")).output, end_frame(kFramedReset + "AB"));
  // At its end the frame is written with what it has.
  EXPECT_EQ(run_job({"-d"}, end_frame("A\x1bx")).output, end_frame(kFramedReset + "A"));
  EXPECT_EQ(run_job({"-d"}, cnt_frame("\x1bx") + end_frame("")).output,
            cnt_frame(kFramedReset) + cnt_frame("") + end_frame(""));
}

TEST_F(MainLoopText, OneRecordAtTheFramesEndMayMakeTwoFrames) {
  EXPECT_EQ(run_job({"-d"}, end_frame("A")).output, end_frame(kFramedReset) + end_frame("A"));
  EXPECT_EQ(run_job({"-d"}, end_frame(testing::kBlankCommand)).output,
            end_frame(kFramedReset) + end_frame(""));
  EXPECT_EQ(run_job({"-d", "-q"}, end_frame("A" + testing::kBlankCommand)).output,
            end_frame("A\x0c") + end_frame(""));
}

TEST_F(MainLoopText, FrameOfOutputMirrorsTheFrameOfInput) {
  EXPECT_EQ(run_job({"-d"}, cnt_frame("AB") + cnt_frame("C\n") + end_frame("D\x0c")).output,
            cnt_frame(kFramedReset + "AB") + cnt_frame("C\n") + end_frame("D\x0c"));
}

// User-defined characters with the font library

class MainLoopGaiji : public testing::FontLibraryTest {
 protected:
  MainLoopGaiji() {
    testing::reset_filter();
    the_filter().loop.conditions_pending = false;
  }
  ~MainLoopGaiji() override { testing::reset_filter(); }

  static void start(std::string_view description = "every-font\n") {
    load(description);
    ASSERT_EQ(fonts_open(the_filter().fonts, 1, 0, 1, 0), 0);
    take_font_calls();
  }
  static Routed route(std::uint32_t code, std::string_view record) {
    return Driver::route(code, record);
  }

 private:
  struct Driver : testing::MainLoopTest {
    using testing::MainLoopTest::route;
    void TestBody() override {}
  };
};

constexpr std::string_view kG1 = "\xf5\xa1";

TEST_F(MainLoopGaiji, NewCharacterIsDownloadedAndAKnownOneIsPrintedByItsCode) {
  start();
  const std::string first = route(CMD_TEXT_GAIJI, kG1).data;
  EXPECT_TRUE(
      first.starts_with("\x1b$D\x1c"
                        "0\"r\x1c"
                        "21u!"))
      << ::testing::PrintToString(first);
  EXPECT_EQ(first.size(), 3 + 4 + 5 + 132 + 2);
  EXPECT_EQ(take_font_calls(), std::vector<std::string>{"read 122422 f5a1 24x24"});
  EXPECT_EQ(route(CMD_TEXT_GAIJI, kG1).data, "u!");
  EXPECT_EQ(take_font_calls(), std::vector<std::string>{});
}

TEST_F(MainLoopGaiji, DownloadSizeIsForgottenWhenAPageEndsOrAConditionCommandComes) {
  start();
  EXPECT_NE(route(CMD_TEXT_GAIJI, kG1)
                .data.find("\x1c"
                           "0\"r"),
            std::string::npos);
  EXPECT_EQ(route(CMD_TEXT_GAIJI, "\xf5\xa2")
                .data.find("\x1c"
                           "0\"r"),
            std::string::npos);
  const std::vector<std::pair<std::uint32_t, std::string>> forgetters{
      {CMD_FF, "\x0c"},
      {CMD_Q_NL_SP, testing::kBlankCommand},
      {CMD_Q_NL_SP2, testing::kFormNameCommand}};
  char code = '\xa3';
  for (const auto& [command, sequence] : forgetters) {
    the_filter().loop.content_since_conditions = false;
    EXPECT_TRUE(route(command, sequence).goes_on);
    the_filter().loop.conditions_pending = false;
    EXPECT_NE(route(CMD_TEXT_GAIJI, std::string("\xf5") + code)
                  .data.find("\x1c"
                             "0\"r"),
              std::string::npos)
        << command;
    ++code;
    // The patterns are still known.
    EXPECT_EQ(route(CMD_TEXT_GAIJI, kG1).data, "u!") << command;
  }
}

TEST_F(MainLoopGaiji, EveryPieceThatEndsThePageForgetsTheDownloadSize) {
  start();
  the_filter().command_line.lines_per_page = 1;
  EXPECT_TRUE(route(CMD_TEXT_GAIJI, kG1).goes_on);
  EXPECT_EQ(route(CMD_LF, "\n").pages, 1);
  EXPECT_EQ(the_filter().gaiji.cur_dl_size, kUnknownSize);
  EXPECT_TRUE(route(CMD_TEXT_GAIJI, "\xf5\xa2").goes_on);
  EXPECT_EQ(the_filter().gaiji.cur_dl_size, 1);
  EXPECT_EQ(route(CMD_ESC_DEL4,
                  "\x1b\x7f"
                  "abc\x0c")
                .pages,
            1);
  EXPECT_EQ(the_filter().gaiji.cur_dl_size, kUnknownSize);
}

TEST_F(MainLoopGaiji, FailedReadEndsTheJobWithItsStatus) {
  start("every-font\nread-error f5a1 2 7\n");
  const testing::CaptureDescriptor messages(2);
  EXPECT_FALSE(route(CMD_TEXT_GAIJI, kG1).goes_on);
  EXPECT_EQ(the_filter().loop.status, -129);
  EXPECT_EQ(messages.text(), "filter: can't read fontfile (7)\n");
}

TEST_F(MainLoopGaiji, CharactersAreDownloadedAgainAfterTheFontsWereSetUpAgain) {
  for (const std::uint32_t code : {CMD_Q_NL_SP, CMD_Q_NL_SP2, CMD_Q_I_EX, CMD_LINE_UNIT_479}) {
    testing::reset_filter();
    the_filter().loop.conditions_pending = false;
    start();
    EXPECT_TRUE(route(CMD_TEXT_GAIJI, kG1).goes_on);
    the_filter().command_line.resolution = 400;
    take_font_calls();
    EXPECT_TRUE(route(code, testing::bytes_for(code)).goes_on);
    EXPECT_EQ(the_filter().job.high_resolution_fonts, 1);
    EXPECT_EQ(the_filter().job.fonts_reloaded, 1);
    const std::vector<std::string> calls = take_font_calls();
    // Closed first: ten of class 1; then opened: ten of class 2, both code sets of one typeface.
    ASSERT_EQ(calls.size(), 20U) << code;
    EXPECT_TRUE(calls[9].starts_with("close "));
    EXPECT_TRUE(calls[10].starts_with("open ")) << calls[10];
    the_filter().loop.conditions_pending = false;
    EXPECT_NE(route(CMD_TEXT_GAIJI, kG1)
                  .data.find("\x1c"
                             "21u!"),
              std::string::npos);
    EXPECT_EQ(take_font_calls(), std::vector<std::string>{"read 124036 f5a1 40x40"});
  }
}

TEST_F(MainLoopGaiji, FontsStayForEveryOtherResolution) {
  for (const std::int32_t resolution : {240, 400, 0, 300, 239, 241, 399, 401}) {
    for (const int high : {0, 1}) {
      for (const std::uint32_t code : {CMD_Q_NL_SP, CMD_Q_NL_SP2, CMD_Q_I_EX, CMD_LINE_UNIT_479}) {
        testing::reset_filter();
        the_filter().command_line.resolution = resolution;
        the_filter().job.high_resolution_fonts = high;
        EXPECT_TRUE(route(code, testing::bytes_for(code)).goes_on);
        const bool reloaded = (resolution == 240 && high == 1) || (resolution == 400 && high == 0);
        EXPECT_EQ(the_filter().job.fonts_reloaded, reloaded ? 1 : 0);
        EXPECT_EQ(the_filter().job.high_resolution_fonts, reloaded ? 1 - high : high);
      }
    }
  }
}

TEST_F(MainLoopGaiji, ResolutionSwitchReopensTheFontsAndForgetsThePatterns) {
  start();
  the_filter().command_line.printer_class = kPrinterClassF1;
  EXPECT_TRUE(route(CMD_TEXT_GAIJI, kG1).goes_on);
  take_font_calls();
  EXPECT_EQ(route(CMD_RESOLUTION_489, "\x1bQ240!P").data, "\x1bQ240!P");
  EXPECT_EQ(take_font_calls().size(), 0U);
  EXPECT_EQ(route(CMD_RESOLUTION_489, "\x1bQ400!P").data, "\x1bQ400!P");
  EXPECT_EQ(take_font_calls().size(), 20U);
  EXPECT_EQ(the_filter().gaiji.caches[1].count, 0U);
}

TEST_F(MainLoopGaiji, ReloadThatFailsEndsTheJobWithTheLibrarysStatus) {
  start();
  testing::describe_fonts("every-font\nopen-error 1 2 24 22 4 0\n");
  the_filter().command_line.resolution = 400;
  const testing::CaptureDescriptor messages(2);
  EXPECT_FALSE(route(CMD_Q_NL_SP, testing::kBlankCommand).goes_on);
  EXPECT_EQ(the_filter().loop.status, -129);
  EXPECT_EQ(messages.text(), "filter: invalid PKEY\n");
}

}  // namespace
}  // namespace rlx
