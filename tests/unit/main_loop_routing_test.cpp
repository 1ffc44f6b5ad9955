// Which command codes take part in which step of the main loop: every code is driven through it.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "driver/loop_state.h"
#include "job/settings.h"
#include "support/descriptors.h"
#include "support/main_loop_fixture.h"
#include "support/page_data.h"
#include "support/record_builder.h"

namespace rlx {
namespace {

using testing::bytes;
using testing::bytes_for;
using testing::for_each_code;
using testing::is_one_of;
using testing::Routed;
using testing::StandardInput;

using Codes = std::vector<std::uint32_t>;

const Codes kContent{267, 301, 425, 426, 427, 434, 435, 436, 456, 468, 469,  470,  471,
                     472, 473, 475, 481, 485, 499, 501, 512, 767, 768, 1024, 1280, 3840};
const Codes kNoContent{262, 298, 302, 355, 418, 419, 445, 446, 447, 453, 476, 478,
                       479, 486, 491, 495, 502, 503, 505, 506, 507, 508, 509, 523};
const Codes kStartsPage{258, 259, 260, 261, 263, 385, 512, 768, 1024, 1280};
const Codes kEndsPage{262, 482, 483};
const Codes kReleasesMovement{258, 259, 260, 261, 263, 385, 512, 768, 1024, 1280};
const Codes kText{264, 265, 512, 768, 1024, 1280, 3840};
const Codes kKept{289, 292, 347, 348, 328, 396, 441, 498, 437,
                  510, 511, 513, 325, 324, 326, 330, 493};
/// Commands of which no byte is written.
const Codes kSilent{482, 483, 500};

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
      loop_state.fast_road = fast_road;
      const Routed routed = route(code, "bytes");
      EXPECT_TRUE(routed.goes_on);
      EXPECT_EQ(routed.data, "bytes");
      EXPECT_EQ(job_settings.page_has_content, 0);
      EXPECT_EQ(job_settings.page_started, 0);
    }
  }
}

TEST_F(MainLoopRouting, ContentIsNotedForTheListedCodesAlone) {
  sweep([] {},
        [](std::uint32_t code, const Routed&) {
          EXPECT_EQ(loop_state.content_since_conditions, is_one_of(code, kContent));
          EXPECT_EQ(job_settings.page_has_content, is_one_of(code, kContent) ? 1 : 0);
        });
}

TEST_F(MainLoopRouting, ContentIsForgottenForTheListedCodesAndRecordsAlone) {
  sweep(
      [] {
        loop_state.content_since_conditions = true;
        job_settings.page_has_content = 1;
      },
      [](std::uint32_t code, const Routed&) {
        const bool record = code == 482 || code == 483;
        EXPECT_EQ(loop_state.content_since_conditions, !is_one_of(code, kNoContent) && !record);
        // Only the end of the page, a form feed, clears the flag that the page writer reads.
        EXPECT_EQ(job_settings.page_has_content, is_one_of(code, kEndsPage) ? 0 : 1);
      });
}

TEST_F(MainLoopRouting, ContentIsNotedForCommandsThatAreSkippedToo) {
  for_each_code([](std::uint32_t code) {
    if (code == 520) {
      return;
    }
    restart();
    const Routed routed = route(code, "");
    EXPECT_TRUE(routed.goes_on);
    EXPECT_EQ(routed.data, "") << code;
    EXPECT_EQ(loop_state.content_since_conditions, is_one_of(code, kContent)) << code;
  });
}

TEST_F(MainLoopRouting, CommandsWithoutBytesAndCutOnesAreSkipped) {
  for (const bool cut : {false, true}) {
    for_each_code([&](std::uint32_t code) {
      if (code == 520) {
        return;
      }
      SCOPED_TRACE(code);
      restart();
      pend_conditions();
      hold_command("HELD");
      use_form({6, 6}, 1);
      hold_movement("VVV");
      loop_state.record_cut = cut;
      const Routed routed = route(code, cut ? bytes_for(code) : "");
      EXPECT_TRUE(routed.goes_on);
      EXPECT_EQ(routed.data, "");
      EXPECT_TRUE(loop_state.conditions_pending);
      EXPECT_EQ(loop_state.held_command.length, 4);
      EXPECT_EQ(held_movement(), "VVV");
      EXPECT_EQ(job_settings.page_started, 0);
      EXPECT_EQ(job_settings.settings_changed, 0);
      EXPECT_EQ(loop_state.last_condition_code, 0U);
    });
  }
}

TEST_F(MainLoopRouting, PageStartIsSetForTheListedCodesAlone) {
  sweep([] {},
        [](std::uint32_t code, const Routed&) {
          EXPECT_EQ(job_settings.page_started, is_one_of(code, kStartsPage) ? 1 : 0);
        });
}

TEST_F(MainLoopRouting, PageStartIsClearedForFormFeedAndRecordsAlone) {
  sweep([] { job_settings.page_started = 1; },
        [](std::uint32_t code, const Routed&) {
          EXPECT_EQ(job_settings.page_started, is_one_of(code, kEndsPage) ? 0 : 1);
        });
}

TEST_F(MainLoopRouting, PendingConditionsAreSentBeforeAllCodesButTheExceptions) {
  const Codes exceptions{446, 478, 479, 500, 520};
  sweep([] { pend_conditions(); },
        [&](std::uint32_t code, const Routed& routed) {
          EXPECT_EQ(routed.data.starts_with(testing::kStartConditions),
                    !is_one_of(code, exceptions));
          const bool pending = is_one_of(code, exceptions) || code == 482 || code == 483;
          EXPECT_EQ(loop_state.conditions_pending, pending);
        });
}

TEST_F(MainLoopRouting, NothingIsSentWhenPrintConditionsAreSwitchedOff) {
  sweep(
      [] {
        pend_conditions();
        job_settings.print_conditions_enabled = 0;
      },
      [](std::uint32_t, const Routed& routed) {
        EXPECT_TRUE(loop_state.conditions_pending);
        EXPECT_EQ(routed.data.find(testing::kSetReset), std::string::npos);
        EXPECT_EQ(loop_state.conditions_written, 0);
      });
}

TEST_F(MainLoopRouting, ConditionsThatAreNotPendingAreNotSent) {
  sweep([] {},
        [](std::uint32_t, const Routed& routed) {
          EXPECT_EQ(routed.data.find(testing::kSetReset), std::string::npos);
        });
}

TEST_F(MainLoopRouting, ConditionCodeIsThatOfTheLastChange) {
  sweep([] { loop_state.last_condition_code = 446; },
        [](std::uint32_t code, const Routed&) {
          const bool changes = is_one_of(code, {478, 479, 482, 483});
          EXPECT_EQ(loop_state.last_condition_code, changes ? code : 446);
        });
}

TEST_F(MainLoopRouting, SettingsChangeWithTheListedCodesAlone) {
  sweep([] { job_settings.printer_class = kPrinterClassF1; },
        [](std::uint32_t code, const Routed&) {
          EXPECT_EQ(job_settings.settings_changed,
                    is_one_of(code, {333, 478, 479, 482, 483, 489}) ? 1 : 0);
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
  const Codes droppers{334, 335, 478, 479, 482, 483, 487};
  sweep([] { hold_command("HELD"); },
        [&](std::uint32_t code, const Routed& routed) {
          const bool written = !is_one_of(code, droppers) && code != 520;
          EXPECT_EQ(routed.data.starts_with("HELD"), written);
          EXPECT_EQ(loop_state.held_command.length, code == 520 ? 4 : 0);
        });
}

TEST_F(MainLoopRouting, OwnBytesAreWrittenButForTextAndCommandsThatAreConsumed) {
  sweep([] {},
        [](std::uint32_t code, const Routed& routed) {
          const std::string own(bytes_for(code));
          if (code == 520) {
            EXPECT_EQ(routed.data, own + bytes("\0X"));
          } else if (is_one_of(code, kSilent)) {
            EXPECT_EQ(routed.data, "");
          } else if (code == 262) {
            EXPECT_EQ(routed.data, "\x0c");
          } else if (code == 264 || code == 265) {
            EXPECT_EQ(routed.data, bytes("\0"));
          } else if (code == 1024) {
            EXPECT_EQ(routed.data, own.substr(1));
          } else if (code == 768) {
            EXPECT_EQ(routed.data, "\x1bQ2 y\x1b$@" + own);
          } else if (code == 1280) {
            EXPECT_EQ(routed.data, "\x1b$D!!");
          } else if (code == 499) {
            EXPECT_EQ(routed.data, own + bytes("\0"));
          } else {
            EXPECT_EQ(routed.data, own);
          }
        });
}

TEST_F(MainLoopRouting, LoopGoesOnAfterEveryCommandButAPassThrough) {
  sweep([] {},
        [](std::uint32_t code, const Routed& routed) {
          EXPECT_EQ(routed.goes_on, code != 520);
          EXPECT_EQ(loop_state.status, 0);
        });
}

TEST_F(MainLoopRouting, WrittenCommandsAreKeptForTheCarriedSettings) {
  sweep([] {},
        [](std::uint32_t code, const Routed&) {
          const std::string kept = testing::take_kept_settings();
          if (code == 768) {
            EXPECT_EQ(kept, testing::block('6', "\x1b$@\x1bQ2 y"));
          } else {
            EXPECT_EQ(kept, is_one_of(code, kKept) ? testing::block('6', bytes_for(code)) : "");
          }
        });
}

TEST_F(MainLoopRouting, LinesAreCountedForLineFeedsAndCountedAnewAfterFormFeedsAlone) {
  sweep(
      [] {
        job_settings.lines_per_page = 9;
        loop_state.line_counter = 3;
      },
      [](std::uint32_t code, const Routed&) {
        EXPECT_EQ(loop_state.line_counter, code == 260 ? 4 : code == 262 ? 0 : 3);
      });
}

TEST_F(MainLoopRouting, PendingDataIsCopiedBehindEveryCommandButText) {
  for_each_code([](std::uint32_t code) {
    const StandardInput input("DATA");
    SCOPED_TRACE(code);
    restart();
    loop_state.record = testing::make_record(code, bytes_for(code));
    loop_state.record.pending = 3;
    const Routed routed = route_again();
    // The data of 499 ends with the input here: "A" announces more than there is.
    const bool copied = !is_one_of(code, kText) && code != 520;
    EXPECT_EQ(routed.data.ends_with(code == 499 ? "DATA" : "DAT"), copied);
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
