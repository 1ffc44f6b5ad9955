#include "output/print_conditions_out.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "job/print_conditions.h"
#include "job/settings.h"
#include "output/byte_writer.h"
#include "output/carried_settings.h"
#include "output/frame_writer.h"
#include "output/job_header.h"
#include "output/line_spacing.h"
#include "output/page_writer.h"
#include "support/descriptors.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::restart_frames;
using testing::restart_page;
using testing::restart_settings;
using testing::the_filter;

using testing::bytes;

const std::string kStandardState = "\x1c(`q\x1c(ap\x1c%!\" p\x1bQ1 y\x1bQ1;!f";
const std::string kSetReset = "\x1b$@\x1b(H";
const std::string kFramedReset = "\x1b$@\x1b(H\x1bQ1 y";
const std::string kSpacing0 = bytes("\0\0\0\0\0");
const std::string kSpacing1 = "\x1c& 'p";
const std::string kSpacing2 = "\x1c& )p";
const std::string kSpacing3 = "\x1c&! u";
const std::string kSpacing4 = "\x1c&!\"p";
const std::vector<std::string> kSpacing{kSpacing0, kSpacing1, kSpacing2, kSpacing3, kSpacing4};
const std::string kLines6 = "\x1c%!\" p";
const std::string kLines8 = "\x1c%) p";
const std::string kPitch720 = "\x1bQ0;0720/G";
const std::string kDoublePitch720 = "\x1c$!$$p";

constexpr std::array kModes{kStandardMode, kFineMode, kFormLengthMode,
                            kExtendedMode, kMode6,    kMode7};

const std::vector<std::uint32_t> kCommands{0,
                                           CMD_Q_A_EX,
                                           CMD_Q_I_EX,
                                           CMD_LINE_UNIT_479,
                                           CMD_Q_NL_SP,
                                           CMD_Q_NL_SP2,
                                           CMD_SECOND_VARIANT_492,
                                           CMD_Q_OL_SP};

class PrintConditionsOut : public ::testing::Test {
 protected:
  PrintConditionsOut() { testing::renew_filter(); }

  /// Calls with all out values at -1.
  void emit(std::uint32_t command) {
    spacing_index_ = -1;
    line_unit_value_ = -1;
    conditions_written_ = -1;
    emit_print_conditions(the_filter().conditions_output, command, 0, 180, &spacing_index_,
                          &line_unit_value_, &conditions_written_, the_filter().settings);
  }

  /// Takes what the page writer has gathered.
  static std::string gathered() {
    const PieceSink sink = page_sink(the_filter().page);
    std::string text(sink.bytes, sink.bytes + *sink.length);
    restart_page();
    return text;
  }

  /// Takes what the carried settings hold: the general buffer, then the slots.
  static std::string carried() {
    const testing::CaptureDescriptor standard_output(1);
    out_kept_settings(the_filter().carried);
    flush_output(the_filter().writer);
    std::string block = standard_output.text();
    constexpr std::size_t kHeader = 16;
    if (block.empty()) {
      return block;
    }
    EXPECT_EQ(block.substr(0, 4), "\x1bQ6;");
    block.erase(0, kHeader);
    return block;
  }

  std::string emitted(std::uint32_t command) {
    emit(command);
    return gathered();
  }

  static void give_character_pitch(std::int32_t pitch) {
    the_filter().settings.char_pitch_source = kFromCommandLine;
    the_filter().command_line.character_pitch = pitch;
    pitch_sequences(the_filter().spacing);
  }

  static void give_line_pitch(const char* text) {
    the_filter().settings.line_pitch_source = kFromCommandLine;
    the_filter().settings.line_pitch_text = text;
  }

  static void give_form_data(const std::string& data) {
    the_filter().settings.form_data_length = static_cast<std::int32_t>(data.size());
    std::copy(data.begin(), data.end(), the_filter().settings.form_data.begin());
  }

  std::int32_t spacing_index_ = -1;
  std::int32_t line_unit_value_ = -1;
  std::int32_t conditions_written_ = -1;
};

TEST_F(PrintConditionsOut, FirstPageGetsStandardStateResetSpacingAndSixLines) {
  EXPECT_EQ(emitted(0), kStandardState + kSetReset + kSpacing3 + kLines6);
  EXPECT_EQ(carried(), kStandardState + kSetReset + kSpacing3);
  EXPECT_EQ(spacing_index_, 3);
  EXPECT_EQ(line_unit_value_, 180);
  EXPECT_EQ(conditions_written_, 1);
}

TEST_F(PrintConditionsOut, ConditionCommandWithNothingFromTheCommandLineGetsResetAndSpacingAlone) {
  for (const std::uint32_t command : {CMD_Q_NL_SP, CMD_Q_NL_SP2}) {
    EXPECT_EQ(emitted(command), kSetReset + kSpacing3) << command;
    EXPECT_EQ(carried(), kSetReset + kSpacing3) << command;
    EXPECT_EQ(spacing_index_, 3);
    EXPECT_EQ(line_unit_value_, 180);
    EXPECT_EQ(conditions_written_, 1);
  }
}

TEST_F(PrintConditionsOut, Command492BringsThePitchesAlone) {
  EXPECT_EQ(emitted(CMD_SECOND_VARIANT_492), kLines6);
  EXPECT_EQ(carried(), "");
  EXPECT_EQ(spacing_index_, 3);
  EXPECT_EQ(line_unit_value_, -1);
  EXPECT_EQ(conditions_written_, -1);

  give_character_pitch(720);
  give_line_pitch("8");
  EXPECT_EQ(emitted(CMD_SECOND_VARIANT_492), kPitch720 + kDoublePitch720 + kLines8);
  EXPECT_EQ(carried(), kDoublePitch720 + kPitch720);
}

TEST_F(PrintConditionsOut, Command492KeepsTheSpacingIndexInEmulationMode3) {
  the_filter().command_line.emulation_mode = kFormLengthMode;
  EXPECT_EQ(emitted(CMD_SECOND_VARIANT_492), kLines6);
  EXPECT_EQ(spacing_index_, -1);
}

TEST_F(PrintConditionsOut, EveryOtherCommandWritesNothing) {
  give_character_pitch(720);
  give_line_pitch("8");
  give_form_data("data");
  // From two below 0 on, where the numbers come round.
  for (std::uint32_t i = 0; i <= 4002; ++i) {
    const std::uint32_t command = i - 2;
    if (std::find(kCommands.begin(), kCommands.end(), command) != kCommands.end()) {
      continue;
    }
    ASSERT_EQ(emitted(command), "") << command;
    ASSERT_EQ(spacing_index_, -1) << command;
    ASSERT_EQ(line_unit_value_, -1) << command;
    ASSERT_EQ(conditions_written_, -1) << command;
  }
  EXPECT_EQ(carried(), "");
}

TEST_F(PrintConditionsOut, EverySpacingEntryIsSentAsItStands) {
  for (std::int32_t index = 0; index <= 4; ++index) {
    the_filter().settings.spacing_index = index;
    const std::string& entry = kSpacing[static_cast<std::size_t>(index)];
    EXPECT_EQ(emitted(CMD_Q_NL_SP), kSetReset + entry) << index;
    EXPECT_EQ(carried(), kSetReset + entry) << index;
    EXPECT_EQ(spacing_index_, index);
  }
}

TEST_F(PrintConditionsOut, SpacingIndex0SendsFiveNulBytes) {
  the_filter().settings.spacing_index = 0;
  EXPECT_EQ(emitted(0), kStandardState + kSetReset + bytes("\0\0\0\0\0") + kLines6);
}

TEST_F(PrintConditionsOut, EmulationMode3SendsNoSpacing) {
  for (const int mode : kModes) {
    the_filter().command_line.emulation_mode = mode;
    EXPECT_EQ(emitted(CMD_Q_NL_SP), kSetReset + (mode == kFormLengthMode ? "" : kSpacing3)) << mode;
    EXPECT_EQ(spacing_index_, 3) << mode;
  }
}

TEST_F(PrintConditionsOut, ConditionCommandSelectsSpacing4FromOutputFOn) {
  const std::string first_page = kStandardState + kSetReset + kSpacing3 + kLines6;
  for (std::uint8_t variant = kPlainOutput; variant <= kOutputR; ++variant) {
    the_filter().settings.output_variant = variant;
    for (const std::uint32_t command : {CMD_Q_NL_SP, CMD_Q_NL_SP2}) {
      EXPECT_EQ(emitted(command), kSetReset + (variant < kOutputF ? kSpacing3 : kSpacing4));
      EXPECT_EQ(spacing_index_, variant < kOutputF ? 3 : 4);
    }
    EXPECT_EQ(emitted(0), first_page);
    EXPECT_EQ(spacing_index_, 3);
  }
  EXPECT_EQ(the_filter().settings.spacing_index, 3);
}

TEST_F(PrintConditionsOut, FormFromTheCommandLineKeepsItsSpacing) {
  the_filter().settings.output_variant = kOutputF;
  for (const std::uint8_t source : {kNotGiven, kFromForm, kFromFormKind3, kFromCommandLine}) {
    the_filter().settings.form_source = source;
    const bool own = source == kFromCommandLine;
    EXPECT_EQ(emitted(CMD_Q_NL_SP), kSetReset + (own ? kSpacing3 : kSpacing4)) << int{source};
    EXPECT_EQ(spacing_index_, own ? 3 : 4);
  }
}

TEST_F(PrintConditionsOut, FormFlagSuppressesTheSpacingUnlessTheFormIsTheCommandLines) {
  the_filter().settings.form_flag = 1;
  for (const std::uint8_t source : {kNotGiven, kFromForm, kFromFormKind3, kFromCommandLine}) {
    the_filter().settings.form_source = source;
    EXPECT_EQ(emitted(CMD_Q_NL_SP), kSetReset + (source == kFromCommandLine ? kSpacing3 : ""));
    EXPECT_EQ(spacing_index_, 3);
  }
}

TEST_F(PrintConditionsOut, FormDataIsSentAsItStandsAndCarried) {
  std::string data(100, '\0');
  for (std::size_t i = 0; i < data.size(); ++i) {
    data[i] = static_cast<char>(i * 5);
  }
  const std::string start = kStandardState + kSetReset;
  for (const std::size_t length : {0U, 1U, 2U, 99U, 100U}) {
    give_form_data(data.substr(0, length));
    std::string expected = start;
    expected.append(data, 0, length).append(kSpacing3);
    EXPECT_EQ(emitted(CMD_Q_OL_SP), expected + kLines6);
    EXPECT_EQ(carried(), expected);
  }
}

TEST_F(PrintConditionsOut, FormDataThatEndsInFfEndsThePage) {
  give_form_data("ab\f");
  std::string written;
  {
    const testing::CaptureDescriptor standard_output(1);
    emit(CMD_Q_NL_SP);
    flush_output(the_filter().writer);
    written = standard_output.text();
  }
  // One block with all that was gathered up to the FF, then what was carried so far.
  const std::string end =
      "\x1bQ2;0000000021/a" + kSetReset + "ab\f" + "\x1bQ6;0000000018/a" + kSetReset;
  ASSERT_GE(written.size(), end.size());
  EXPECT_EQ(written.substr(written.size() - end.size()), end);
  EXPECT_EQ(gathered(), kSpacing3);
  EXPECT_EQ(carried(), "ab\f" + kSpacing3);
}

TEST_F(PrintConditionsOut, CharacterPitchIsWrittenBehindTheSpacing) {
  give_character_pitch(720);
  EXPECT_EQ(emitted(0),
            kStandardState + kSetReset + kSpacing3 + kPitch720 + kDoublePitch720 + kLines6);
  EXPECT_EQ(carried(), kStandardState + kSetReset + kSpacing3 + kDoublePitch720 + kPitch720);
  EXPECT_EQ(emitted(CMD_Q_NL_SP2), kSetReset + kSpacing3 + kPitch720 + kDoublePitch720);
}

TEST_F(PrintConditionsOut, CharacterPitchAbove7200ToTheInchWritesNothing) {
  give_character_pitch(0);
  EXPECT_EQ(emitted(CMD_Q_NL_SP), kSetReset + kSpacing3);
  write_pitch_sequences(the_filter().conditions_output);
  EXPECT_EQ(gathered(), "");
}

TEST_F(PrintConditionsOut, SequencesThatTheCommandLineDidNotGiveAreNotWritten) {
  the_filter().command_line.character_pitch = 720;
  pitch_sequences(the_filter().spacing);
  for (const std::uint8_t source : {kNotGiven, kFromForm, kFromFormKind3}) {
    the_filter().settings.char_pitch_source = source;
    the_filter().settings.line_pitch_source = source;
    the_filter().settings.line_pitch_text = "8";
    EXPECT_EQ(emitted(CMD_Q_NL_SP), kSetReset + kSpacing3);
    EXPECT_EQ(emitted(CMD_SECOND_VARIANT_492), kLines6);
  }
}

TEST_F(PrintConditionsOut, LinePitchOfTheCommandLineIsCarried) {
  give_line_pitch("8");
  EXPECT_EQ(emitted(0), kStandardState + kSetReset + kSpacing3 + kLines8);
  EXPECT_EQ(carried(), kStandardState + kSetReset + kSpacing3 + kLines8);
  EXPECT_EQ(emitted(CMD_Q_NL_SP), kSetReset + kSpacing3 + kLines8);
  EXPECT_EQ(carried(), kSetReset + kSpacing3 + kLines8);
}

TEST_F(PrintConditionsOut, FiveLinesToTheInchSendNoLinePitchForAnyCommand) {
  const std::string command_group = kSetReset + kSpacing3;
  const std::string whole_group = kStandardState + command_group;
  give_line_pitch("5");
  for (const std::uint32_t command : kCommands) {
    const bool is_condition_command = command == CMD_Q_NL_SP || command == CMD_Q_NL_SP2;
    const std::string expected = command == CMD_SECOND_VARIANT_492
                                     ? ""
                                     : (is_condition_command ? command_group : whole_group);
    EXPECT_EQ(emitted(command), expected) << command;
    EXPECT_EQ(carried(), expected) << command;
  }
}

TEST_F(PrintConditionsOut, LinePitchSequenceOfEveryNumber) {
  for (int number = -1; number <= 100; ++number) {
    std::string expected;
    switch (number) {
      case 3:
        expected = "\x1c%\x22\x24 p";
        break;
      case 4:
        expected = "\x1c%\x21\x28 p";
        break;
      case 6:
        expected = "\x1c%\x21\x22 p";
        break;
      case 8:
        expected = "\x1c%\x29 p";
        break;
      case 12:
        expected = "\x1c%\x26 p";
        break;
      default:
        break;
    }
    const std::string text = std::to_string(number);
    line_pitch_sequence(the_filter().conditions_output, text.c_str(), 0);
    EXPECT_EQ(gathered(), expected) << number;
    EXPECT_EQ(carried(), "") << number;
    line_pitch_sequence(the_filter().conditions_output, text.c_str(), 1);
    EXPECT_EQ(gathered(), expected) << number;
    EXPECT_EQ(carried(), expected) << number;
  }
}

TEST_F(PrintConditionsOut, LinePitchTextIsReadAsADecimalNumber) {
  for (const char* text : {"8", " 8", "+8", "08", "8lpi", "8.5"}) {
    line_pitch_sequence(the_filter().conditions_output, text, 0);
    EXPECT_EQ(gathered(), kLines8) << text;
  }
  for (const char* text : {"", "x8", "-8", "0x8", "8000"}) {
    line_pitch_sequence(the_filter().conditions_output, text, 0);
    EXPECT_EQ(gathered(), "") << text;
  }
}

TEST_F(PrintConditionsOut, LaterPitchesReplaceTheCarriedOnes) {
  line_pitch_sequence(the_filter().conditions_output, "3", 1);
  line_pitch_sequence(the_filter().conditions_output, "8", 1);
  EXPECT_EQ(carried(), kLines8);
}

TEST_F(PrintConditionsOut, OutValuesAreCopiedFromTheSettings) {
  the_filter().settings.spacing_index = 1;
  the_filter().settings.line_unit_value = 777;
  for (const std::uint32_t command : std::initializer_list<std::uint32_t>{
           0, CMD_Q_A_EX, CMD_Q_I_EX, CMD_LINE_UNIT_479, CMD_Q_NL_SP, CMD_Q_NL_SP2, CMD_Q_OL_SP}) {
    emitted(command);
    EXPECT_EQ(spacing_index_, 1) << command;
    EXPECT_EQ(line_unit_value_, 777) << command;
    EXPECT_EQ(conditions_written_, 1) << command;
  }
}

TEST_F(PrintConditionsOut, NullOutPointersChangeNothingInTheOutput) {
  the_filter().settings.output_variant = kOutputF;
  for (const std::uint32_t command : kCommands) {
    const std::string expected = emitted(command);
    emit_print_conditions(the_filter().conditions_output, command, 1, 0, nullptr, nullptr, nullptr,
                          the_filter().settings);
    EXPECT_EQ(gathered(), expected) << command;
  }
  EXPECT_EQ(emitted(CMD_Q_NL_SP), kSetReset + kSpacing4);
}

TEST_F(PrintConditionsOut, FramedModeSendsTheFramedResetAloneForEveryCommand) {
  the_filter().command_line.framed_output = 1;
  give_character_pitch(720);
  give_line_pitch("8");
  give_form_data("data");
  const std::string frame = bytes("0011END_PRN_DAT\0") + kFramedReset;
  for (const std::uint32_t command : std::initializer_list<std::uint32_t>{
           0, 1, CMD_FF, CMD_Q_A_EX, CMD_Q_I_EX, CMD_LINE_UNIT_479, CMD_Q_NL_SP, CMD_Q_NL_SP2,
           CMD_SECOND_VARIANT_492, CMD_Q_OL_SP, CMD_TEXT_BAD}) {
    restart_frames();
    const testing::CaptureDescriptor standard_output(1);
    emit(command);
    EXPECT_EQ(standard_output.text(), frame) << command;
    EXPECT_EQ(conditions_written_, 1) << command;
    EXPECT_EQ(spacing_index_, -1) << command;
    EXPECT_EQ(line_unit_value_, -1) << command;
  }
  EXPECT_EQ(gathered(), "");
  EXPECT_EQ(carried(), "");
}

TEST_F(PrintConditionsOut, FramedModeHoldsTheResetWhileTheInputFrameHasBytes) {
  the_filter().command_line.framed_output = 1;
  const std::array<std::uint8_t, 1> left{'A'};
  the_filter().source.frames.window = {left.data(), left.data() + left.size()};
  const testing::CaptureDescriptor standard_output(1);
  emit(0);
  EXPECT_EQ(standard_output.text(), "");
  EXPECT_EQ(the_filter().frame_writer.out_len, 11);
}

TEST_F(PrintConditionsOut, FailedWriteOfTheFramedResetEndsTheProcess) {
  the_filter().command_line.framed_output = 1;
  EXPECT_EXIT(
      {
        dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
        emit(0);
        _exit(0);
      },
      ::testing::ExitedWithCode(1), "");
}

TEST_F(PrintConditionsOut, FramedLinePitchGoesIntoAFrame) {
  the_filter().command_line.framed_output = 1;
  const testing::CaptureDescriptor standard_output(1);
  line_pitch_sequence(the_filter().conditions_output, "8", 0);
  EXPECT_EQ(standard_output.text(), bytes("0005END_PRN_DAT\0") + kLines8);
}

/// One combination of all that the group depends on.
struct Combination {
  std::uint32_t command;
  bool pitch_given;
  const char* lines;  ///< null when not given
  int mode;
  std::uint8_t form_flag;
  std::uint8_t form_source;
  std::uint8_t variant;
  std::string data;
  std::int32_t spacing;
};

/// What a combination writes, and what of it is carried.
struct Group {
  std::string written;
  std::string general;
  std::string slots;

  void write_and_carry(const std::string& sequence) {
    written += sequence;
    general += sequence;
  }
};

void expect_pitches(const Combination& given, bool carry_lines, bool default_lines, Group& group) {
  if (given.pitch_given) {
    group.written += kPitch720 + kDoublePitch720;
    group.general += kDoublePitch720;
    group.slots += kPitch720;
  }
  if (given.lines == nullptr) {
    group.written += default_lines ? kLines6 : "";
  } else if (given.lines == std::string("8")) {
    group.written += kLines8;
    group.slots += carry_lines ? kLines8 : "";
  }
}

Group expected_group(const Combination& given) {
  Group group;
  if (given.command == CMD_SECOND_VARIANT_492) {
    expect_pitches(given, false, true, group);
    return group;
  }
  if (std::find(kCommands.begin(), kCommands.end(), given.command) == kCommands.end()) {
    return group;
  }
  const bool is_condition_command = given.command == CMD_Q_NL_SP || given.command == CMD_Q_NL_SP2;
  if (!is_condition_command) {
    group.write_and_carry(kStandardState);
  }
  group.write_and_carry(kSetReset);
  group.write_and_carry(given.data);
  if (given.mode != kFormLengthMode &&
      (given.form_flag == 0 || given.form_source == kFromCommandLine)) {
    const bool raised =
        is_condition_command && given.form_source != kFromCommandLine && given.variant >= kOutputF;
    group.write_and_carry(raised ? kSpacing4 : kSpacing[static_cast<std::size_t>(given.spacing)]);
  }
  expect_pitches(given, true, !is_condition_command, group);
  return group;
}

class PrintConditionsOutSweep : public PrintConditionsOut,
                                public ::testing::WithParamInterface<std::uint32_t> {
 protected:
  void check(const Combination& given) {
    restart_settings();
    the_filter().spacing.character_pitch = {};
    if (given.pitch_given) {
      give_character_pitch(720);
    }
    if (given.lines != nullptr) {
      give_line_pitch(given.lines);
    }
    give_form_data(given.data);
    the_filter().command_line.emulation_mode = given.mode;
    SettingsRecord& settings = the_filter().settings;
    settings.form_flag = given.form_flag;
    settings.form_source = given.form_source;
    settings.output_variant = given.variant;
    settings.spacing_index = given.spacing;
    const Group group = expected_group(given);
    ASSERT_EQ(emitted(given.command), group.written) << describe(given);
    ASSERT_EQ(carried(), group.general + group.slots) << describe(given);
  }

  static std::string describe(const Combination& given) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(),
                  "command %u -c %d -l %s mode %d flag %d source %d variant %d spacing %d",
                  given.command, given.pitch_given ? 1 : 0,
                  given.lines == nullptr ? "none" : given.lines, given.mode, given.form_flag,
                  given.form_source, given.variant, given.spacing);
    return text.data();
  }

  void check_form_settings(Combination given) {
    for (std::uint8_t flag = 0; flag <= 1; ++flag) {
      for (std::uint8_t source = kNotGiven; source <= kFromCommandLine; ++source) {
        for (std::uint8_t variant = kPlainOutput; variant <= kOutputR; ++variant) {
          for (const std::int32_t spacing : {0, 3}) {
            given.form_flag = flag;
            given.form_source = source;
            given.variant = variant;
            given.spacing = spacing;
            check(given);
          }
        }
      }
    }
  }
};

TEST_P(PrintConditionsOutSweep, EveryCombinationOfSettings) {
  for (const bool pitch_given : {false, true}) {
    for (const char* lines : {static_cast<const char*>(nullptr), "5", "8"}) {
      for (const int mode : {kStandardMode, kFormLengthMode, kMode7}) {
        for (const std::string& data : {std::string(), bytes("\x1c\0~")}) {
          check_form_settings({GetParam(), pitch_given, lines, mode, 0, 0, 0, data, 3});
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Commands, PrintConditionsOutSweep,
                         ::testing::Values(0, CMD_FF, CMD_Q_A_EX, CMD_Q_I_EX, CMD_LINE_UNIT_479,
                                           CMD_Q_NL_SP, CMD_Q_NL_SP2, CMD_SECOND_VARIANT_492,
                                           CMD_DOWNLOAD_499, CMD_Q_OL_SP, CMD_TEXT_ASCII));

}  // namespace
}  // namespace rlx
