// Which command codes take part in which step of the main loop: every code is driven through it.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "driver/loop/loop_state.h"
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
using testing::bytes_for;
using testing::for_each_code;
using testing::is_one_of;
using testing::Routed;
using testing::StandardInput;

using Codes = std::vector<std::uint32_t>;

const Codes kContent{
    CMD_DC1,         CMD_CONTENT_301,     CMD_CONTENT_425, CMD_CONTENT_426,  CMD_CONTENT_427,
    CMD_CONTENT_434, CMD_CONTENT_435,     CMD_CONTENT_436, CMD_Q_AL_EX,      CMD_Q_XL_EX,
    CMD_Q_YL_EX,     CMD_Q_ZL_EX,         CMD_CONTENT_471, CMD_CONTENT_472,  CMD_CONTENT_473,
    CMD_Q_DEL_EX,    CMD_SINGLE_BYTE_481, CMD_Q_TILDE_SL,  CMD_DOWNLOAD_499, CMD_CONTENT_501,
    CMD_TEXT_ASCII,  CMD_TEXT_RAW,        CMD_TEXT_MB,     CMD_TEXT_SS2,     CMD_TEXT_GAIJI,
    CMD_TEXT_BAD};
const Codes kNoContent{
    CMD_FF,        CMD_ESC_C,     CMD_ESC_DEL4,      CMD_STATE_355,  CMD_STATE_418,
    CMD_STATE_419, CMD_Q_AT_EX,   CMD_Q_A_EX,        CMD_STATE_447,  CMD_Q_H_EX,
    CMD_Q_F_EX,    CMD_Q_I_EX,    CMD_LINE_UNIT_479, CMD_Q_W_EX,     CMD_STATE_491,
    CMD_Q_BSL_EX,  CMD_STATE_502, CMD_STATE_503,     CMD_STATE_505,  CMD_Q_RBR_EX,
    CMD_STATE_507, CMD_STATE_508, CMD_Q_BAR_SL,      CMD_Q_RBRACE_SL};
const Codes kStartsPage{CMD_BS,     CMD_HT,         CMD_LF,      CMD_VT,       CMD_CR,
                        CMD_CSI_BQ, CMD_TEXT_ASCII, CMD_TEXT_MB, CMD_TEXT_SS2, CMD_TEXT_GAIJI};
const Codes kEndsPage{CMD_FF, CMD_Q_NL_SP, CMD_Q_NL_SP2};
const Codes kReleasesMovement{CMD_BS,       CMD_HT,        CMD_LF,         CMD_VT,
                              CMD_CR,       CMD_CSI_BQ,    CMD_TEXT_ASCII, CMD_TEXT_MB,
                              CMD_TEXT_SS2, CMD_TEXT_GAIJI};
const Codes kText{CMD_SO,       CMD_SI,         CMD_TEXT_ASCII, CMD_TEXT_MB,
                  CMD_TEXT_SS2, CMD_TEXT_GAIJI, CMD_TEXT_BAD};
const Codes kKept{CMD_ESC_DOLLAR_AT, CMD_ESC_PAREN_H, CMD_FS_J,       CMD_FS_K,      CMD_FS_PAREN,
                  CMD_CSI_SP_E,      CMD_Q_YL_SP,     CMD_Q_FL_EX,    CMD_Q_PL_SP,   CMD_Q_E_SL,
                  CMD_Q_F_SL,        CMD_Q_G_SL,      CMD_FS_PERCENT, CMD_FS_DOLLAR, CMD_FS_AMP,
                  CMD_FS_STAR,       CMD_Q_R_EX};
/// Commands of which no byte is written.
const Codes kSilent{CMD_Q_NL_SP, CMD_Q_NL_SP2, CMD_Q_OL_SP};

class MainLoopRouting : public testing::MainLoopTest {
 protected:
  /// Routes each code from a fresh state that `prepare` changes; `check` sees what it did.
  template <typename Prepare, typename Check>
  void sweep(Prepare prepare, Check check) {
    for_each_code([&](std::uint32_t code) {
      const StandardInput input(bytes("\0X"));
      SCOPED_TRACE(code);
      restart();
      prepare();
      const Routed routed = route(code, bytes_for(code));
      check(code, routed);
    });
  }
};

TEST_F(MainLoopRouting, CodesThatNoTableHoldsAreOnlyWritten) {
  for (const bool fast_road : {false, true}) {
    for (const std::uint32_t code : {kHighestCommandCode + 1, 4096U, 0xffffffffU}) {
      restart();
      the_filter().loop.fast_road = fast_road;
      const Routed routed = route(code, "bytes");
      EXPECT_TRUE(routed.goes_on);
      EXPECT_EQ(routed.data, "bytes");
      EXPECT_EQ(the_filter().job.page_has_content, 0);
      EXPECT_EQ(the_filter().job.page_started, 0);
    }
  }
}

TEST_F(MainLoopRouting, ContentIsNotedForTheListedCodesAlone) {
  sweep([] {},
        [](std::uint32_t code, const Routed&) {
          EXPECT_EQ(the_filter().loop.content_since_conditions, is_one_of(code, kContent));
          EXPECT_EQ(the_filter().job.page_has_content, is_one_of(code, kContent) ? 1 : 0);
        });
}

TEST_F(MainLoopRouting, ContentIsForgottenForTheListedCodesAndConditionCommandsAlone) {
  sweep(
      [] {
        the_filter().loop.content_since_conditions = true;
        the_filter().job.page_has_content = 1;
      },
      [](std::uint32_t code, const Routed&) {
        const bool condition_command = code == CMD_Q_NL_SP || code == CMD_Q_NL_SP2;
        EXPECT_EQ(the_filter().loop.content_since_conditions,
                  !is_one_of(code, kNoContent) && !condition_command);
        // Only the end of the page, a form feed, clears the flag that the page writer reads.
        EXPECT_EQ(the_filter().job.page_has_content, is_one_of(code, kEndsPage) ? 0 : 1);
      });
}

TEST_F(MainLoopRouting, ContentIsNotedForCommandsThatAreSkippedToo) {
  for_each_code([](std::uint32_t code) {
    if (code == CMD_Q_BQ_SL) {
      return;
    }
    restart();
    const Routed routed = route(code, "");
    EXPECT_TRUE(routed.goes_on);
    EXPECT_EQ(routed.data, "") << code;
    EXPECT_EQ(the_filter().loop.content_since_conditions, is_one_of(code, kContent)) << code;
  });
}

TEST_F(MainLoopRouting, CommandsWithoutBytesAndCutOnesAreSkipped) {
  for (const bool cut : {false, true}) {
    for_each_code([&](std::uint32_t code) {
      if (code == CMD_Q_BQ_SL) {
        return;
      }
      SCOPED_TRACE(code);
      restart();
      pend_conditions();
      hold_command("HELD");
      use_form({6, 6}, 1);
      hold_movement("VVV");
      the_filter().loop.record_cut = cut;
      const Routed routed = route(code, cut ? bytes_for(code) : "");
      EXPECT_TRUE(routed.goes_on);
      EXPECT_EQ(routed.data, "");
      EXPECT_TRUE(the_filter().loop.conditions_pending);
      EXPECT_EQ(the_filter().loop.held_command.length, 4);
      EXPECT_EQ(held_movement(), "VVV");
      EXPECT_EQ(the_filter().job.page_started, 0);
      EXPECT_EQ(the_filter().job.settings_changed, 0);
      EXPECT_EQ(the_filter().loop.last_condition_code, 0U);
    });
  }
}

TEST_F(MainLoopRouting, PageStartIsSetForTheListedCodesAlone) {
  sweep([] {},
        [](std::uint32_t code, const Routed&) {
          EXPECT_EQ(the_filter().job.page_started, is_one_of(code, kStartsPage) ? 1 : 0);
        });
}

TEST_F(MainLoopRouting, PageStartIsClearedForFormFeedAndConditionCommandsAlone) {
  sweep([] { the_filter().job.page_started = 1; },
        [](std::uint32_t code, const Routed&) {
          EXPECT_EQ(the_filter().job.page_started, is_one_of(code, kEndsPage) ? 0 : 1);
        });
}

TEST_F(MainLoopRouting, PendingConditionsAreSentBeforeAllCodesButTheExceptions) {
  const Codes exceptions{CMD_Q_A_EX, CMD_Q_I_EX, CMD_LINE_UNIT_479, CMD_Q_OL_SP, CMD_Q_BQ_SL};
  sweep([] { pend_conditions(); },
        [&](std::uint32_t code, const Routed& routed) {
          EXPECT_EQ(routed.data.starts_with(testing::kStartConditions),
                    !is_one_of(code, exceptions));
          const bool pending =
              is_one_of(code, exceptions) || code == CMD_Q_NL_SP || code == CMD_Q_NL_SP2;
          EXPECT_EQ(the_filter().loop.conditions_pending, pending);
        });
}

TEST_F(MainLoopRouting, NothingIsSentWhenPrintConditionsAreSwitchedOff) {
  sweep(
      [] {
        pend_conditions();
        the_filter().command_line.print_conditions_enabled = 0;
      },
      [](std::uint32_t, const Routed& routed) {
        EXPECT_TRUE(the_filter().loop.conditions_pending);
        EXPECT_EQ(routed.data.find(testing::kSetReset), std::string::npos);
      });
}

TEST_F(MainLoopRouting, ConditionsThatAreNotPendingAreNotSent) {
  sweep([] {},
        [](std::uint32_t, const Routed& routed) {
          EXPECT_EQ(routed.data.find(testing::kSetReset), std::string::npos);
        });
}

TEST_F(MainLoopRouting, ConditionCodeIsThatOfTheLastChange) {
  sweep([] { the_filter().loop.last_condition_code = CMD_Q_A_EX; },
        [](std::uint32_t code, const Routed&) {
          const bool changes =
              is_one_of(code, {CMD_Q_I_EX, CMD_LINE_UNIT_479, CMD_Q_NL_SP, CMD_Q_NL_SP2});
          EXPECT_EQ(the_filter().loop.last_condition_code, changes ? code : CMD_Q_A_EX);
        });
}

TEST_F(MainLoopRouting, SettingsChangeWithTheListedCodesAlone) {
  sweep([] { the_filter().command_line.printer_class = kPrinterClassF1; },
        [](std::uint32_t code, const Routed&) {
          EXPECT_EQ(the_filter().job.settings_changed,
                    is_one_of(code, {CMD_SETTINGS_333, CMD_Q_I_EX, CMD_LINE_UNIT_479, CMD_Q_NL_SP,
                                     CMD_Q_NL_SP2, CMD_RESOLUTION_489})
                        ? 1
                        : 0);
        });
}

TEST_F(MainLoopRouting, HeldMovementIsReleasedByTheListedCodesAlone) {
  sweep(
      [] {
        use_form({6, 6, 6}, 1);
        hold_movement("VVV");
      },
      [](std::uint32_t code, const Routed& routed) {
        const bool released = is_one_of(code, kReleasesMovement);
        EXPECT_EQ(routed.data.starts_with("VVV"), released);
        if (is_one_of(code, kEndsPage)) {
          EXPECT_EQ(held_movement(), testing::kSixLines);
        } else {
          EXPECT_EQ(held_movement(), released ? "" : "VVV");
        }
      });
}

TEST_F(MainLoopRouting, HeldMovementStaysWhenNoFormIsInForce) {
  sweep([] { hold_movement("VVV"); },
        [](std::uint32_t, const Routed& routed) {
          EXPECT_EQ(held_movement(), "VVV");
          EXPECT_EQ(routed.data.find("VVV"), std::string::npos);
        });
}

TEST_F(MainLoopRouting, HeldCommandIsWrittenBeforeAllCommandsButThoseThatDropIt) {
  const Codes droppers{CMD_DROP_HELD_334, CMD_DROP_HELD_335, CMD_Q_I_EX,       CMD_LINE_UNIT_479,
                       CMD_Q_NL_SP,       CMD_Q_NL_SP2,      CMD_DROP_HELD_487};
  sweep([] { hold_command("HELD"); },
        [&](std::uint32_t code, const Routed& routed) {
          const bool written = !is_one_of(code, droppers) && code != CMD_Q_BQ_SL;
          EXPECT_EQ(routed.data.starts_with("HELD"), written);
          EXPECT_EQ(the_filter().loop.held_command.length, code == CMD_Q_BQ_SL ? 4 : 0);
        });
}

TEST_F(MainLoopRouting, OwnBytesAreWrittenButForTextAndCommandsThatAreConsumed) {
  sweep([] {},
        [](std::uint32_t code, const Routed& routed) {
          const std::string own(bytes_for(code));
          if (code == CMD_Q_BQ_SL) {
            EXPECT_EQ(routed.data, own + bytes("\0X"));
          } else if (is_one_of(code, kSilent)) {
            EXPECT_EQ(routed.data, "");
          } else if (code == CMD_FF) {
            EXPECT_EQ(routed.data, "\x0c");
          } else if (code == CMD_SO || code == CMD_SI) {
            EXPECT_EQ(routed.data, bytes("\0"));
          } else if (code == CMD_TEXT_SS2) {
            EXPECT_EQ(routed.data, own.substr(1));
          } else if (code == CMD_TEXT_MB) {
            EXPECT_EQ(routed.data, "\x1bQ2 y\x1b$@" + own);
          } else if (code == CMD_TEXT_GAIJI) {
            EXPECT_EQ(routed.data, "\x1b$D!!");
          } else if (code == CMD_DOWNLOAD_499) {
            EXPECT_EQ(routed.data, own + bytes("\0"));
          } else {
            EXPECT_EQ(routed.data, own);
          }
        });
}

TEST_F(MainLoopRouting, LoopGoesOnAfterEveryCommandButAPassThrough) {
  sweep([] {},
        [](std::uint32_t code, const Routed& routed) {
          EXPECT_EQ(routed.goes_on, code != CMD_Q_BQ_SL);
          EXPECT_EQ(the_filter().loop.status, 0);
        });
}

TEST_F(MainLoopRouting, WrittenCommandsAreKeptForTheCarriedSettings) {
  sweep([] {},
        [](std::uint32_t code, const Routed&) {
          const std::string kept = testing::take_kept_settings();
          if (code == CMD_TEXT_MB) {
            EXPECT_EQ(kept, testing::block('6', "\x1b$@\x1bQ2 y"));
          } else {
            EXPECT_EQ(kept, is_one_of(code, kKept) ? testing::block('6', bytes_for(code)) : "");
          }
        });
}

TEST_F(MainLoopRouting, LinesAreCountedForLineFeedsAndCountedAnewAfterFormFeedsAlone) {
  sweep(
      [] {
        the_filter().command_line.lines_per_page = 9;
        the_filter().loop.line_counter = 3;
      },
      [](std::uint32_t code, const Routed&) {
        EXPECT_EQ(the_filter().loop.line_counter, code == CMD_LF ? 4 : code == CMD_FF ? 0 : 3);
      });
}

TEST_F(MainLoopRouting, PendingDataIsCopiedBehindEveryCommandButText) {
  for_each_code([](std::uint32_t code) {
    const StandardInput input("DATA");
    SCOPED_TRACE(code);
    restart();
    the_filter().loop.record = testing::make_record(code, bytes_for(code));
    the_filter().loop.record.pending = 3;
    const Routed routed = route_again();
    // The data of 499 ends with the input here: "A" announces more than there is.
    const bool copied = !is_one_of(code, kText) && code != CMD_Q_BQ_SL;
    EXPECT_EQ(routed.data.ends_with(code == CMD_DOWNLOAD_499 ? "DATA" : "DAT"), copied);
  });
}

TEST_F(MainLoopRouting, StepsOfOneCommandFollowTheirOrder) {
  pend_conditions();
  use_form({8, 8}, 1);
  hold_movement("VVV");
  hold_command("HELD");
  const Routed routed = route(CMD_TEXT_MB, "\xe3\x81\x82");
  EXPECT_EQ(routed.data, testing::kStartConditions + "VVVHELD\x1bQ2 y\x1b$@\xe3\x81\x82");
}

TEST_F(MainLoopRouting, HeldCommandFollowsTheMovementOfALineFeed) {
  const StandardInput input("X");
  use_form({8, 4}, 1);
  hold_movement("VVV");
  hold_command("HELD");
  EXPECT_EQ(route(CMD_LF, "\n").data, "VVVHELD\n\x1c%!( p");
}

}  // namespace
}  // namespace rlx
