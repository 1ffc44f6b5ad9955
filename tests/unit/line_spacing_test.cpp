#include "output/line_spacing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "job/settings.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::restart_settings;
using testing::the_filter;

const std::string kFs = "\x1c";
const std::string kEsc = "\x1b";
const std::string kLf = "\n";
const std::string kFf = "\f";

std::string code(std::initializer_list<int> values) {
  return {values.begin(), values.end()};
}

/// The pitch of a line, by its lines per inch.
const std::string kPitch3 = kFs + "%" + code({0x22, 0x24}) + " p";
const std::string kPitch4 = kFs + "%" + code({0x21, 0x28}) + " p";
const std::string kPitch6 = kFs + "%" + code({0x21, 0x22}) + " p";
const std::string kPitch8 = kFs + "%" + code({0x29}) + " p";
const std::string kPitch12 = kFs + "%" + code({0x26}) + " p";

std::string text_of(const PitchCommand& command) {
  return {command.bytes.begin(), command.bytes.begin() + command.length};
}

template <typename Buffer>
std::string text_of_buffer(const Buffer& buffer) {
  return {buffer.bytes.begin(), buffer.bytes.begin() + buffer.length};
}

FcbTable form(std::int32_t top_line, const std::vector<std::uint32_t>& lines) {
  FcbTable table;
  table.top_line = top_line;
  std::copy(lines.begin(), lines.end(), table.lpi.begin());
  return table;
}

class LineSpacing : public ::testing::Test {
 protected:
  LineSpacing() {
    restart_settings();
    the_filter().spacing.character_pitch = {};
    start_lf();
  }
  ~LineSpacing() override {
    restart_settings();
    the_filter().spacing.character_pitch = {};
  }

  void start_lf() {
    record_.code = CMD_LF;
    record_.length = 1;
    record_.bytes[0] = 0x0A;
    pending_.length = 0;
  }

  /// What a LF becomes: the record's bytes, and what is pending.
  std::string lf(FcbTable& table) {
    start_lf();
    next_line(the_filter().spacing, record_, table, pending_);
    return text_of_buffer(record_);
  }

  std::string top(FcbTable& table) {
    pending_.length = 0;
    top_of_form(the_filter().spacing, table, pending_);
    return text_of_buffer(pending_);
  }

  CommandRecord record_{};
  OutputBuffer pending_{};
};

TEST_F(LineSpacing, HeightOfEachPitchOfAForm) {
  EXPECT_EQ(line_pitch_72nds(3), 24U);
  EXPECT_EQ(line_pitch_72nds(4), 18U);
  EXPECT_EQ(line_pitch_72nds(6), 12U);
  EXPECT_EQ(line_pitch_72nds(8), 9U);
  EXPECT_EQ(line_pitch_72nds(12), 6U);
  EXPECT_EQ(line_pitch_72nds(0), 0U);
}

TEST_F(LineSpacing, SequenceOfEachPitchOfAForm) {
  EXPECT_EQ(text_of(line_pitch_command(24)), kPitch3);
  EXPECT_EQ(text_of(line_pitch_command(18)), kPitch4);
  EXPECT_EQ(text_of(line_pitch_command(12)), kPitch6);
  EXPECT_EQ(text_of(line_pitch_command(9)), kPitch8);
  EXPECT_EQ(text_of(line_pitch_command(6)), kPitch12);
}

TEST_F(LineSpacing, DigitCodeAroundItsLimits) {
  struct Row {
    std::uint32_t pitch;
    std::string digits;
  };
  for (const Row& row : std::initializer_list<Row>{{0, code({0x20})},
                                                   {9, code({0x29})},
                                                   {10, code({0x21, 0x20})},
                                                   {19, code({0x21, 0x29})},
                                                   {20, code({0x22, 0x20})},
                                                   {21, code({0x22, 0x21})},
                                                   {29, code({0x22, 0x29})},
                                                   {30, code({0x23, 0x2a})},
                                                   {39, code({0x23, 0x33})},
                                                   {40, code({0x24, 0x20})},
                                                   {59, code({0x25, 0x33})},
                                                   {60, code({0x26, 0x20})},
                                                   {72, code({0x27, 0x2c})},
                                                   {99, code({0x29, 0x33})}}) {
    EXPECT_EQ(text_of(line_pitch_command(row.pitch)), kFs + "%" + row.digits + " p") << row.pitch;
  }
}

TEST_F(LineSpacing, DigitCodeOfEveryPitchFollowsItsThreeRules) {
  for (unsigned pitch = 0; pitch <= 99; ++pitch) {
    std::string expected = kFs + "%";
    if (pitch <= 9) {
      expected += static_cast<char>(0x20 + pitch);
    } else if (pitch <= 20) {
      expected += static_cast<char>(0x20 + pitch / 10);
      expected += static_cast<char>(0x20 + pitch % 10);
    } else {
      expected += static_cast<char>(0x20 + pitch / 10);
      expected += static_cast<char>(0x20 + pitch % 20);
    }
    expected += " p";
    EXPECT_EQ(text_of(line_pitch_command(pitch)), expected) << pitch;
  }
}

TEST_F(LineSpacing, NumericParameterForm) {
  EXPECT_EQ(text_of(numeric_command('$', 0)), kFs + "$" + code({0x70}));
  EXPECT_EQ(text_of(numeric_command('$', 9)), kFs + "$" + code({0x79}));
  EXPECT_EQ(text_of(numeric_command('$', 10)), kFs + "$" + code({0x21, 0x70}));
  EXPECT_EQ(text_of(numeric_command('%', 900)), kFs + "%" + code({0x29, 0x20, 0x70}));
  EXPECT_EQ(text_of(numeric_command('%', 1200)), kFs + "%" + code({0x21, 0x22, 0x20, 0x70}));
  EXPECT_EQ(text_of(numeric_command('%', 1800)), kFs + "%" + code({0x21, 0x28, 0x20, 0x70}));
  EXPECT_EQ(text_of(numeric_command('%', 2400)), kFs + "%" + code({0x22, 0x24, 0x20, 0x70}));
  EXPECT_EQ(text_of(numeric_command('$', 14400)), kFs + "$" + code({0x21, 0x24, 0x24, 0x20, 0x70}));
  EXPECT_EQ(text_of(numeric_command('$', 4294967295)),
            kFs + "$" + code({0x24, 0x22, 0x29, 0x24, 0x29, 0x26, 0x27, 0x22, 0x29, 0x75}));
}

TEST_F(LineSpacing, NumericParameterFormOfEveryDoubledPitch) {
  for (std::uint32_t value = 0; value <= 14400; ++value) {
    const std::string decimal = std::to_string(value);
    std::string expected = kFs + "$";
    for (std::size_t i = 0; i < decimal.size(); ++i) {
      const int base = i + 1 < decimal.size() ? 0x20 : 0x70;
      expected += static_cast<char>(base + (decimal[i] - '0'));
    }
    ASSERT_EQ(text_of(numeric_command('$', value)), expected);
  }
}

TEST_F(LineSpacing, BothEncodingsAgreeForThePitchesOfAForm) {
  for (const std::uint32_t lines_per_inch : {3U, 4U, 6U, 8U, 12U}) {
    EXPECT_EQ(text_of(line_pitch_command(line_pitch_72nds(lines_per_inch))),
              text_of(numeric_command('%', 7200 / lines_per_inch)));
  }
}

TEST_F(LineSpacing, CommandThatDoesNotFitIsLeftOutWhole) {
  struct Guarded {
    OutputBuffer buffer;
    std::array<std::uint8_t, 16> guard;
  };
  const auto guarded = std::make_unique<Guarded>();
  const auto record = std::make_unique<CommandRecord>();
  const PitchCommand command = line_pitch_command(12);
  for (std::int32_t room = 0; room <= 8; ++room) {
    const std::int32_t growth = room >= 6 ? 6 : 0;
    guarded->guard.fill(0xAA);
    guarded->buffer.bytes.fill(0xAA);
    guarded->buffer.length = kPageBufferBytes - room;
    append_command(guarded->buffer, command);
    EXPECT_EQ(guarded->buffer.length, kPageBufferBytes - room + growth) << room;
    EXPECT_EQ(std::count(guarded->guard.begin(), guarded->guard.end(), 0xAA), 16) << room;
    EXPECT_EQ(guarded->buffer.bytes[static_cast<std::size_t>(kPageBufferBytes - room - 1)], 0xAA);

    record->length = kRecordCapacity - room;
    append_command(*record, command);
    EXPECT_EQ(record->length, kRecordCapacity - room + growth) << room;
  }
}

TEST_F(LineSpacing, TopOfASixLineFormWithContent) {
  FcbTable table = form(4, std::vector<std::uint32_t>(66, 6));
  table.cur_line = 17;
  the_filter().job.page_started = 1;
  EXPECT_EQ(top(table), kFf + kPitch6 + kLf + kPitch6 + kLf + kPitch6 + kLf + kPitch6);
  EXPECT_EQ(table.cur_line, 3);
}

TEST_F(LineSpacing, PageWithoutContentGetsNoFormFeedFromTopOfForm) {
  FcbTable table = form(2, std::vector<std::uint32_t>(66, 6));
  EXPECT_EQ(top(table), kPitch6 + kLf + kPitch6);
  the_filter().job.page_started = 1;
  EXPECT_EQ(top(table), kFf + kPitch6 + kLf + kPitch6);
}

TEST_F(LineSpacing, OnlyPageStartedDecidesAboutTheFormFeed) {
  FcbTable table = form(1, {6});
  the_filter().job.page_has_content = 1;
  EXPECT_EQ(top(table), kPitch6);
}

TEST_F(LineSpacing, StartLine1GivesNoLineFeed) {
  FcbTable table = form(1, std::vector<std::uint32_t>(66, 8));
  EXPECT_EQ(top(table), kPitch8);
  EXPECT_EQ(table.cur_line, 0);
}

TEST_F(LineSpacing, EachLineAboveTheTopLineHasItsOwnPitch) {
  FcbTable table = form(6, {3, 4, 6, 8, 12, 3, 4});
  EXPECT_EQ(top(table), kPitch3 + kLf + kPitch4 + kLf + kPitch6 + kLf + kPitch8 + kLf + kPitch12 +
                            kLf + kPitch3);
  EXPECT_EQ(table.cur_line, 5);
}

TEST_F(LineSpacing, LowestTopLineOfTheLongestForm) {
  FcbTable table = form(255, std::vector<std::uint32_t>(255, 12));
  std::string expected;
  for (int line = 1; line < 255; ++line) {
    expected += kPitch12 + kLf;
  }
  EXPECT_EQ(top(table), expected + kPitch12);
  EXPECT_EQ(table.cur_line, 254);
  EXPECT_EQ(lf(table), "");
  EXPECT_EQ(text_of_buffer(pending_), expected + kPitch12);
}

TEST_F(LineSpacing, TopOfFormAppendsToWhatIsPending) {
  FcbTable table = form(1, {6});
  pending_.length = 2;
  pending_.bytes[0] = 'a';
  pending_.bytes[1] = 'b';
  top_of_form(the_filter().spacing, table, pending_);
  EXPECT_EQ(text_of_buffer(pending_), "ab" + kPitch6);
}

TEST_F(LineSpacing, TopOfFormNeverWritesBehindTheBuffer) {
  FcbTable table = form(255, std::vector<std::uint32_t>(255, 6));
  the_filter().job.page_started = 1;
  for (std::int32_t room = 0; room <= 20; ++room) {
    pending_.length = kPageBufferBytes - room;
    top_of_form(the_filter().spacing, table, pending_);
    EXPECT_LE(pending_.length, kPageBufferBytes);
    EXPECT_GE(pending_.length, kPageBufferBytes - room);
  }
}

TEST_F(LineSpacing, FormLengthIsSetForStreamVariants3And4Alone) {
  FcbTable table = form(1, {6});
  for (const std::int32_t form_halfinch : {2, 7, 22, 40}) {
    table.form_halfinch = form_halfinch;
    for (const int stream_variant :
         {1, int{kPlainStream}, int{kSentLengthStream}, int{kShortFormStream}, 5}) {
      the_filter().command_line.stream_variant = stream_variant;
      the_filter().job.form_length_tenths = -1;
      top(table);
      const bool is_set = stream_variant == kSentLengthStream || stream_variant == kShortFormStream;
      EXPECT_EQ(the_filter().job.form_length_tenths, is_set ? 5 * form_halfinch : -1)
          << stream_variant;
    }
  }
}

TEST_F(LineSpacing, NextLineLeavesTheFormLengthUntilAFormBegins) {
  FcbTable table = form(1, {6, 6});
  the_filter().command_line.stream_variant = kSentLengthStream;
  EXPECT_EQ(lf(table), kLf + kPitch6);
  EXPECT_EQ(the_filter().job.form_length_tenths, 0);
  EXPECT_EQ(lf(table), "");
  EXPECT_EQ(the_filter().job.form_length_tenths, 110);
}

TEST_F(LineSpacing, LineFeedGetsThePitchOfTheLineItMovesTo) {
  FcbTable table = form(1, {6, 3, 4, 6, 8, 12});
  top(table);
  EXPECT_EQ(lf(table), kLf + kPitch3);
  EXPECT_EQ(lf(table), kLf + kPitch4);
  EXPECT_EQ(lf(table), kLf + kPitch6);
  EXPECT_EQ(lf(table), kLf + kPitch8);
  EXPECT_EQ(lf(table), kLf + kPitch12);
  EXPECT_EQ(table.cur_line, 5);
  EXPECT_EQ(pending_.length, 0);
}

TEST_F(LineSpacing, LineFeedOnTheLastLineIsDroppedAndTheNextFormIsPending) {
  FcbTable table = form(3, {6, 8, 4, 12});
  the_filter().job.page_started = 1;
  table.cur_line = 3;
  EXPECT_EQ(lf(table), "");
  EXPECT_EQ(text_of_buffer(pending_), kFf + kPitch6 + kLf + kPitch8 + kLf + kPitch4);
  EXPECT_EQ(table.cur_line, 2);
}

TEST_F(LineSpacing, LineFeedOverTheEndOfAnEmptyPageStartsTheFormWithoutFormFeed) {
  FcbTable table = form(1, {6});
  EXPECT_EQ(lf(table), "");
  EXPECT_EQ(text_of_buffer(pending_), kPitch6);
  EXPECT_EQ(table.cur_line, 0);
}

TEST_F(LineSpacing, FormOfEveryPitchIsWalkedToItsLastLineAndOverIt) {
  struct Row {
    std::uint32_t lines_per_inch;
    std::string pitch;
  };
  the_filter().job.page_started = 1;
  for (const Row& row :
       {Row{3, kPitch3}, Row{4, kPitch4}, Row{6, kPitch6}, Row{8, kPitch8}, Row{12, kPitch12}}) {
    for (const std::size_t lines : {1U, 2U, 66U, 254U, 255U}) {
      FcbTable table = form(1, std::vector<std::uint32_t>(lines, row.lines_per_inch));
      top(table);
      for (int walk = 0; walk < 2; ++walk) {
        for (std::size_t line = 1; line < lines; ++line) {
          ASSERT_EQ(lf(table), kLf + row.pitch) << line;
          ASSERT_EQ(pending_.length, 0);
        }
        ASSERT_EQ(lf(table), "");
        ASSERT_EQ(text_of_buffer(pending_), kFf + row.pitch);
        ASSERT_EQ(table.cur_line, 0);
      }
    }
  }
}

TEST_F(LineSpacing, FormWithoutAnEndStopsAtItsLastEntry) {
  FcbTable table = form(1, std::vector<std::uint32_t>(256, 6));
  table.cur_line = 254;
  EXPECT_EQ(lf(table), kLf + kPitch6);
  EXPECT_EQ(lf(table), "");
  EXPECT_EQ(table.cur_line, 0);
}

TEST_F(LineSpacing, CharacterPitchOf10ToTheInch) {
  the_filter().command_line.character_pitch = 720;
  pitch_sequences(the_filter().spacing);
  EXPECT_EQ(text_of(the_filter().spacing.character_pitch.pitch), kEsc + "Q0;0720/G");
  EXPECT_EQ(text_of(the_filter().spacing.character_pitch.double_pitch),
            kFs + "$" + code({0x21, 0x24, 0x24, 0x70}));
}

TEST_F(LineSpacing, CharacterPitchSequencesOfOtherPitches) {
  struct Row {
    std::int32_t pitch;
    const char* digits;
    std::string doubled;
  };
  for (const Row& row :
       std::initializer_list<Row>{{1, "0001", code({0x72})},
                                  {4, "0004", code({0x78})},
                                  {5, "0005", code({0x21, 0x70})},
                                  {48, "0048", code({0x29, 0x76})},
                                  {600, "0600", code({0x21, 0x22, 0x20, 0x70})},
                                  {1028, "1028", code({0x22, 0x20, 0x25, 0x76})},
                                  {3600, "3600", code({0x27, 0x22, 0x20, 0x70})},
                                  {7200, "7200", code({0x21, 0x24, 0x24, 0x20, 0x70})}}) {
    the_filter().command_line.character_pitch = row.pitch;
    pitch_sequences(the_filter().spacing);
    EXPECT_EQ(text_of(the_filter().spacing.character_pitch.pitch),
              kEsc + "Q0;" + row.digits + "/G");
    EXPECT_EQ(text_of(the_filter().spacing.character_pitch.double_pitch), kFs + "$" + row.doubled);
  }
}

TEST_F(LineSpacing, NoCharacterPitchGivesNoSequences) {
  pitch_sequences(the_filter().spacing);
  EXPECT_EQ(the_filter().spacing.character_pitch.pitch.length, 0);
  EXPECT_EQ(the_filter().spacing.character_pitch.double_pitch.length, 0);
}

TEST_F(LineSpacing, ResetEmptiesTheSequences) {
  the_filter().command_line.character_pitch = 720;
  pitch_sequences(the_filter().spacing);
  the_filter().spacing.character_pitch = {};
  EXPECT_EQ(the_filter().spacing.character_pitch.pitch.length, 0);
  EXPECT_EQ(the_filter().spacing.character_pitch.double_pitch.length, 0);
}

}  // namespace
}  // namespace rlx
