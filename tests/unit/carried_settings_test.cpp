#include "output/carried_settings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>

#include "job/command_record.h"
#include "job/output_buffer.h"
#include "support/filter_state.h"
#include "support/page_data.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

constexpr auto kGeneralBytes = static_cast<std::size_t>(kPageBufferBytes);

/// What the carried-settings block says now; it is empty afterwards.
std::string kept() {
  return output_of([] { out_kept_settings(the_filter().carried); });
}

/// A command, a sequence of it, and its place in the block: 0 for the general buffer.
struct Destination {
  std::uint32_t command;
  const char* sequence;
  int place;
};

constexpr std::array kDestinations{
    Destination{CMD_ESC_DOLLAR_AT, "\x1b$@", 1}, Destination{CMD_ESC_PAREN_H, "\x1b(H", 1},
    Destination{CMD_FS_J, "\x1cJ", 2},           Destination{CMD_FS_K, "\x1cK", 2},
    Destination{CMD_FS_PAREN, "\x1c(`p", 3},     Destination{CMD_FS_PAREN, "\x1c(ap", 4},
    Destination{CMD_CSI_SP_E, "\x1b[5 E", 5},    Destination{CMD_Q_YL_SP, "\x1bQ1 y", 6},
    Destination{CMD_Q_FL_EX, "\x1bQ2!f", 7},     Destination{CMD_Q_PL_SP, "\x1bQ3 p", 8},
    Destination{CMD_Q_E_SL, "\x1bQ4/E", 9},      Destination{CMD_Q_F_SL, "\x1bQ5/F", 10},
    Destination{CMD_Q_G_SL, "\x1bQ6/G", 11},     Destination{CMD_FS_PERCENT, "\x1c%!\"p", 12},
    Destination{CMD_FS_DOLLAR, "\x1c$!p", 0},    Destination{CMD_FS_AMP, "\x1c&!p", 0},
    Destination{CMD_FS_STAR, "\x1c*!p", 0},      Destination{CMD_Q_R_EX, "\x1bQ7!R", 0},
};

/// All codes that have a destination.
std::set<std::uint32_t> kept_codes() {
  std::set<std::uint32_t> codes;
  for (const Destination& row : kDestinations) {
    codes.insert(row.command);
  }
  return codes;
}

using CarriedSettings = FilterTest;

TEST_F(CarriedSettings, NothingKeptWritesNoBlock) {
  EXPECT_EQ(kept(), "");
}

TEST_F(CarriedSettings, EachCommandOfTheTableIsKept) {
  for (const Destination& row : kDestinations) {
    keep(row.command, row.sequence);
    EXPECT_EQ(kept(), block('6', row.sequence)) << row.command;
  }
}

TEST_F(CarriedSettings, BlockEmptiesTheStore) {
  for (const Destination& row : kDestinations) {
    keep(row.command, row.sequence);
  }
  EXPECT_NE(kept(), "");
  EXPECT_EQ(kept(), "");
}

TEST_F(CarriedSettings, PlacesAreWrittenInTheirOrderWhateverOrderTheyCameIn) {
  const std::string all =
      "\x1c$!p\x1b$@\x1cJ\x1c(`p\x1c(ap\x1b[5 E\x1bQ1 y\x1bQ2!f\x1bQ3 p\x1bQ4/E\x1bQ5/F\x1bQ6/G"
      "\x1c%!\"p";
  std::array<Destination, 13> rows{
      kDestinations[14], kDestinations[0],  kDestinations[2], kDestinations[4], kDestinations[5],
      kDestinations[6],  kDestinations[7],  kDestinations[8], kDestinations[9], kDestinations[10],
      kDestinations[11], kDestinations[12], kDestinations[13]};
  for (const Destination& row : rows) {
    keep(row.command, row.sequence);
  }
  EXPECT_EQ(kept(), block('6', all));
  std::ranges::reverse(rows);
  for (const Destination& row : rows) {
    keep(row.command, row.sequence);
  }
  EXPECT_EQ(kept(), block('6', all));
}

TEST_F(CarriedSettings, EachPairOfCommandsStandsByItsPlaces) {
  for (const Destination& first : kDestinations) {
    for (const Destination& second : kDestinations) {
      keep(first.command, first.sequence);
      keep(second.command, second.sequence);
      std::string expected;
      if (first.place == second.place) {
        // The general buffer adds up, a slot holds the last one.
        expected = first.place == 0 ? std::string(first.sequence) + second.sequence
                                    : std::string(second.sequence);
      } else {
        expected = first.place < second.place ? std::string(first.sequence) + second.sequence
                                              : std::string(second.sequence) + first.sequence;
      }
      EXPECT_EQ(kept(), block('6', expected)) << first.command << ", " << second.command;
    }
  }
}

TEST_F(CarriedSettings, SlotSequenceOf20BytesIsNotKeptOneOf19Is) {
  for (const Destination& row : kDestinations) {
    if (row.place == 0) {
      continue;
    }
    std::string sequence = row.sequence;
    sequence.resize(19, 'x');
    keep(row.command, sequence);
    EXPECT_EQ(kept(), block('6', sequence)) << row.command;
    keep(row.command, sequence + 'x');
    EXPECT_EQ(kept(), "") << row.command;
    keep(row.command, sequence + std::string(4000, 'x'));
    EXPECT_EQ(kept(), "") << row.command;
  }
}

TEST_F(CarriedSettings, LengthsThatWouldWrapInOneByteAreNotKept) {
  for (const std::size_t length : {255U, 256U, 257U, 261U, 275U, 276U, 512U, 515U}) {
    keep(CMD_Q_YL_SP, std::string(length, 'x'));
    EXPECT_EQ(kept(), "") << length;
  }
}

TEST_F(CarriedSettings, SlotSequenceThatIsTooLongLeavesTheEarlierOne) {
  keep(CMD_Q_YL_SP, "\x1bQ1 y");
  keep(CMD_Q_YL_SP, std::string(20, 'x'));
  EXPECT_EQ(kept(), block('6', "\x1bQ1 y"));
}

TEST_F(CarriedSettings, LaterSlotSequenceReplacesALongerAndAShorterOne) {
  keep(CMD_FS_PERCENT, "\x1c%\x21\x22 p");
  keep(CMD_FS_PERCENT, "\x1c%\x29p");
  EXPECT_EQ(kept(), block('6', "\x1c%\x29p"));
  keep(CMD_FS_PERCENT, "\x1c%\x29p");
  keep(CMD_FS_PERCENT, "\x1c%\x21\x22 p");
  EXPECT_EQ(kept(), block('6', "\x1c%\x21\x22 p"));
}

TEST_F(CarriedSettings, EmptySlotSequenceEmptiesItsSlot) {
  keep(CMD_Q_YL_SP, "\x1bQ1 y");
  keep(CMD_ESC_PAREN_H, "\x1b(H");
  keep(CMD_Q_YL_SP, "");
  EXPECT_EQ(kept(), block('6', "\x1b(H"));
}

TEST_F(CarriedSettings, ThirdByteOfFsParenChoosesTheSlotOrNone) {
  for (int third = 0; third < 256; ++third) {
    std::string sequence = "\x1c(?p";
    sequence[2] = static_cast<char>(third);
    keep(CMD_Q_YL_SP, "\x1bQ1 y");
    keep(CMD_FS_PAREN, sequence);
    const bool is_kept = third == '`' || third == 'a';
    EXPECT_EQ(kept(), block('6', (is_kept ? sequence : "") + "\x1bQ1 y")) << third;
  }
}

TEST_F(CarriedSettings, FsParenWithoutAThirdByteKeepsNothing) {
  const std::string sequence = "\x1c(`";
  for (std::size_t count = 0; count <= 2; ++count) {
    keep_setting(the_filter().carried, CMD_FS_PAREN, bytes_of(sequence).first(count));
    EXPECT_EQ(kept(), "") << count;
  }
  keep(CMD_FS_PAREN, sequence);
  EXPECT_EQ(kept(), block('6', sequence));
}

TEST_F(CarriedSettings, NulBytesAreKept) {
  keep(CMD_Q_YL_SP, bytes("\x1bQ\0 y"));
  keep(CMD_FS_DOLLAR, bytes("\0\0"));
  EXPECT_EQ(kept(), block('6', bytes("\0\0\x1bQ\0 y")));
}

TEST_F(CarriedSettings, GeneralBufferAppendsInTheOrderOfArrival) {
  keep(CMD_Q_R_EX, "\x1bQ7!R");
  keep(CMD_FS_DOLLAR, "\x1c$!p");
  keep(CMD_FS_STAR, "\x1c*!p");
  keep(CMD_FS_AMP, "\x1c&!p");
  keep(CMD_FS_DOLLAR, "\x1c$!p");
  EXPECT_EQ(kept(), block('6', "\x1bQ7!R\x1c$!p\x1c*!p\x1c&!p\x1c$!p"));
}

TEST_F(CarriedSettings, GeneralSequencesMayBeLongerThanASlot) {
  for (const std::size_t length : {19U, 20U, 255U, 256U, 4096U}) {
    const std::string sequence(length, 'x');
    keep(CMD_FS_AMP, sequence);
    EXPECT_EQ(kept(), block('6', sequence));
  }
}

TEST_F(CarriedSettings, EmptyGeneralSequenceLeavesTheBufferAsItIs) {
  keep(CMD_FS_DOLLAR, "\x1c$!p");
  keep(CMD_FS_DOLLAR, "");
  EXPECT_EQ(kept(), block('6', "\x1c$!p"));
}

TEST_F(CarriedSettings, GeneralBufferTakesOneSequenceUpToItsRoom) {
  for (std::size_t length = kGeneralBytes - 2; length <= kGeneralBytes + 2; ++length) {
    const std::string sequence(length, 'x');
    keep(CMD_FS_STAR, sequence);
    EXPECT_EQ(kept(), length <= kGeneralBytes ? block('6', sequence) : "") << length;
  }
}

TEST_F(CarriedSettings, GeneralBufferTakesWhatFitsBehindTheEarlierOnes) {
  for (std::size_t used = kGeneralBytes - 3; used <= kGeneralBytes; ++used) {
    for (std::size_t more = 0; more <= 5; ++more) {
      const std::string first(used, 'x');
      const std::string second(more, 'y');
      keep(CMD_FS_DOLLAR, first);
      keep(CMD_FS_DOLLAR, second);
      EXPECT_EQ(kept(), block('6', used + more <= kGeneralBytes ? first + second : first))
          << used << '+' << more;
    }
  }
}

TEST_F(CarriedSettings, ShorterSequenceStillFitsBehindOneThatDidNot) {
  keep(CMD_FS_DOLLAR, std::string(kGeneralBytes - 3, 'x'));
  keep(CMD_FS_AMP, "abcd");
  keep(CMD_FS_STAR, "efg");
  keep(CMD_Q_R_EX, "h");
  EXPECT_EQ(kept(), block('6', std::string(kGeneralBytes - 3, 'x') + "efg"));
}

TEST_F(CarriedSettings, FullestBlockCountsAll) {
  std::string expected(kGeneralBytes, 'x');
  keep(CMD_FS_DOLLAR, expected);
  int place = 0;
  for (const Destination& row : kDestinations) {
    if (row.place > place) {
      place = row.place;
      std::string sequence = row.sequence;
      sequence.resize(19, '.');
      keep(row.command, sequence);
      expected += sequence;
    }
  }
  ASSERT_EQ(place, 12);
  const std::string caught = kept();
  EXPECT_EQ(caught.substr(0, 16), "\x1bQ6;0000008432/a");
  EXPECT_EQ(caught, block('6', expected));
}

TEST_F(CarriedSettings, AllOtherCodesKeepNothing) {
  const std::set<std::uint32_t> codes = kept_codes();
  ASSERT_EQ(codes.size(), 17U);
  for (std::uint32_t code = 0; code <= 4000; ++code) {
    // The third byte is one that FS "(" keeps.
    keep(code, "\x1bQ`!y");
    EXPECT_EQ(kept().empty(), !codes.contains(code)) << code;
  }
  for (const std::uint32_t code : {65536U + CMD_Q_YL_SP, 0x80000000U + CMD_Q_YL_SP, 0xFFFFFFFFU}) {
    keep(code, "\x1bQ1 y");
    EXPECT_EQ(kept(), "") << code;
  }
}

TEST_F(CarriedSettings, SequencesAreCopied) {
  std::string sequence = "\x1bQ1 y";
  std::string general = "\x1c$!p";
  keep(CMD_Q_YL_SP, sequence);
  keep(CMD_FS_DOLLAR, general);
  sequence.assign(sequence.size(), '.');
  general.assign(general.size(), '.');
  EXPECT_EQ(kept(), block('6', "\x1c$!p\x1bQ1 y"));
}

TEST_F(CarriedSettings, ResetForgetsAll) {
  for (const Destination& row : kDestinations) {
    keep(row.command, row.sequence);
  }
  forget_kept_settings(the_filter().carried);
  EXPECT_EQ(kept(), "");
}

TEST_F(CarriedSettings, FreeingTwiceIsHarmless) {
  free_carried_settings(the_filter().carried);
  free_carried_settings(the_filter().carried);
  EXPECT_EQ(allocate_carried_settings(the_filter().carried), 0);
  keep(CMD_FS_DOLLAR, "\x1c$!p");
  EXPECT_EQ(kept(), block('6', "\x1c$!p"));
}

}  // namespace
}  // namespace rlx::testing
