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

#include "input/framed_transfer.h"
#include "job/print_conditions.h"
#include "job/settings.h"
#include "output/byte_writer.h"
#include "output/carried_settings.h"
#include "output/job_header.h"
#include "output/line_spacing.h"
#include "output/page_writer.h"
#include "support/descriptors.h"

namespace rlx {
namespace {

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

const std::vector<int> kCommands{0, 446, 478, 479, 482, 483, 492, 500};

class PrintConditionsOut : public ::testing::Test {
 protected:
  PrintConditionsOut() {
    reset_all();
    EXPECT_EQ(allocate_page_buffers(), 0);
  }
  ~PrintConditionsOut() override {
    reset_all();
    free_page_buffers();
  }

  static void reset_all() {
    reset_job_settings();
    reset_print_conditions();
    reset_line_spacing();
    reset_page_writer();
    reset_carried_settings();
    reset_byte_writer();
    reset_job_header();
    reset_framed_transfer();
  }

  /// Calls with all out values at -1.
  int emit(int command) {
    spacing_index_ = -1;
    line_unit_value_ = -1;
    conditions_written_ = -1;
    return emit_print_conditions(command, 0, 180, &spacing_index_, &line_unit_value_,
                                 &conditions_written_, job_settings.record);
  }

  /// Takes what the page writer has gathered.
  static std::string gathered() {
    const PieceSink sink = page_sink();
    std::string text(sink.bytes, sink.bytes + *sink.length);
    reset_page_writer();
    return text;
  }

  /// Takes what the carried settings hold: the general buffer, then the slots.
  static std::string carried() {
    const testing::CaptureDescriptor standard_output(1);
    EXPECT_EQ(out_kept_settings(), 0);
    flush_output();
    std::string block = standard_output.text();
    constexpr std::size_t kHeader = 16;
    if (block.empty()) {
      return block;
    }
    EXPECT_EQ(block.substr(0, 4), "\x1bQ6;");
    block.erase(0, kHeader);
    return block;
  }

  std::string emitted(int command) {
    EXPECT_EQ(emit(command), 0);
    return gathered();
  }

  static void give_character_pitch(std::int32_t pitch) {
    job_settings.record.char_pitch_source = kFromCommandLine;
    job_settings.character_pitch = pitch;
    pitch_sequences();
  }

  static void give_line_pitch(const char* text) {
    job_settings.record.line_pitch_source = kFromCommandLine;
    job_settings.record.line_pitch_text = text;
  }

  static void give_form_data(const std::string& data) {
    job_settings.record.form_data_length = static_cast<std::int32_t>(data.size());
    std::copy(data.begin(), data.end(), job_settings.record.form_data.begin());
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

TEST_F(PrintConditionsOut, RecordWithNothingFromTheCommandLineGetsResetAndSpacingAlone) {
  for (const int command : {482, 483}) {
    EXPECT_EQ(emitted(command), kSetReset + kSpacing3) << command;
    EXPECT_EQ(carried(), kSetReset + kSpacing3) << command;
    EXPECT_EQ(spacing_index_, 3);
    EXPECT_EQ(line_unit_value_, 180);
    EXPECT_EQ(conditions_written_, 1);
  }
}

TEST_F(PrintConditionsOut, Command492BringsThePitchesAlone) {
  EXPECT_EQ(emitted(492), kLines6);
  EXPECT_EQ(carried(), "");
  EXPECT_EQ(spacing_index_, 3);
  EXPECT_EQ(line_unit_value_, -1);
  EXPECT_EQ(conditions_written_, -1);

  give_character_pitch(720);
  give_line_pitch("8");
  EXPECT_EQ(emitted(492), kPitch720 + kDoublePitch720 + kLines8);
  EXPECT_EQ(carried(), kDoublePitch720 + kPitch720);
}

TEST_F(PrintConditionsOut, Command492KeepsTheSpacingIndexInEmulationMode3) {
  job_settings.emulation_mode = 3;
  EXPECT_EQ(emitted(492), kLines6);
  EXPECT_EQ(spacing_index_, -1);
}

TEST_F(PrintConditionsOut, EveryOtherCommandWritesNothing) {
  give_character_pitch(720);
  give_line_pitch("8");
  give_form_data("data");
  for (int command = -2; command <= 4000; ++command) {
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
    job_settings.record.spacing_index = index;
    const std::string& entry = kSpacing[static_cast<std::size_t>(index)];
    EXPECT_EQ(emitted(482), kSetReset + entry) << index;
    EXPECT_EQ(carried(), kSetReset + entry) << index;
    EXPECT_EQ(spacing_index_, index);
  }
}

TEST_F(PrintConditionsOut, SpacingIndex0SendsFiveNulBytes) {
  job_settings.record.spacing_index = 0;
  EXPECT_EQ(emitted(0), kStandardState + kSetReset + bytes("\0\0\0\0\0") + kLines6);
}

TEST_F(PrintConditionsOut, EmulationMode3SendsNoSpacing) {
  for (const int mode : {1, 2, 3, 4, 6, 7}) {
    job_settings.emulation_mode = mode;
    EXPECT_EQ(emitted(482), kSetReset + (mode == 3 ? "" : kSpacing3)) << mode;
    EXPECT_EQ(spacing_index_, 3) << mode;
  }
}

TEST_F(PrintConditionsOut, RecordSelectsSpacing4FromOutputVariant2On) {
  const std::string first_page = kStandardState + kSetReset + kSpacing3 + kLines6;
  for (std::uint8_t variant = 0; variant <= 4; ++variant) {
    job_settings.record.output_variant = variant;
    for (const int command : {482, 483}) {
      EXPECT_EQ(emitted(command), kSetReset + (variant < 2 ? kSpacing3 : kSpacing4));
      EXPECT_EQ(spacing_index_, variant < 2 ? 3 : 4);
    }
    EXPECT_EQ(emitted(0), first_page);
    EXPECT_EQ(spacing_index_, 3);
  }
  EXPECT_EQ(job_settings.record.spacing_index, 3);
}

TEST_F(PrintConditionsOut, FormFromTheCommandLineKeepsItsSpacing) {
  job_settings.record.output_variant = 2;
  for (const std::uint8_t source : {kNotGiven, kFromForm, kFromFormKind3, kFromCommandLine}) {
    job_settings.record.form_source = source;
    const bool own = source == kFromCommandLine;
    EXPECT_EQ(emitted(482), kSetReset + (own ? kSpacing3 : kSpacing4)) << int{source};
    EXPECT_EQ(spacing_index_, own ? 3 : 4);
  }
}

TEST_F(PrintConditionsOut, FormFlagSuppressesTheSpacingUnlessTheFormIsTheCommandLines) {
  job_settings.record.form_flag = 1;
  for (const std::uint8_t source : {kNotGiven, kFromForm, kFromFormKind3, kFromCommandLine}) {
    job_settings.record.form_source = source;
    EXPECT_EQ(emitted(482), kSetReset + (source == kFromCommandLine ? kSpacing3 : ""));
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
    EXPECT_EQ(emitted(500), expected + kLines6);
    EXPECT_EQ(carried(), expected);
  }
}

TEST_F(PrintConditionsOut, FormDataThatEndsInFfEndsThePage) {
  give_form_data("ab\f");
  std::string written;
  {
    const testing::CaptureDescriptor standard_output(1);
    EXPECT_EQ(emit(482), 0);
    flush_output();
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
  EXPECT_EQ(emitted(483), kSetReset + kSpacing3 + kPitch720 + kDoublePitch720);
}

TEST_F(PrintConditionsOut, CharacterPitchAbove7200ToTheInchWritesNothing) {
  give_character_pitch(0);
  EXPECT_EQ(emitted(482), kSetReset + kSpacing3);
  EXPECT_EQ(write_pitch_sequences(), 0);
  EXPECT_EQ(gathered(), "");
}

TEST_F(PrintConditionsOut, SequencesThatTheCommandLineDidNotGiveAreNotWritten) {
  job_settings.character_pitch = 720;
  pitch_sequences();
  for (const std::uint8_t source : {kNotGiven, kFromForm, kFromFormKind3}) {
    job_settings.record.char_pitch_source = source;
    job_settings.record.line_pitch_source = source;
    job_settings.record.line_pitch_text = "8";
    EXPECT_EQ(emitted(482), kSetReset + kSpacing3);
    EXPECT_EQ(emitted(492), kLines6);
  }
}

TEST_F(PrintConditionsOut, LinePitchOfTheCommandLineIsCarried) {
  give_line_pitch("8");
  EXPECT_EQ(emitted(0), kStandardState + kSetReset + kSpacing3 + kLines8);
  EXPECT_EQ(carried(), kStandardState + kSetReset + kSpacing3 + kLines8);
  EXPECT_EQ(emitted(482), kSetReset + kSpacing3 + kLines8);
  EXPECT_EQ(carried(), kSetReset + kSpacing3 + kLines8);
}

TEST_F(PrintConditionsOut, FiveLinesToTheInchSendNoLinePitchForAnyCommand) {
  const std::string record_group = kSetReset + kSpacing3;
  const std::string whole_group = kStandardState + record_group;
  give_line_pitch("5");
  for (const int command : kCommands) {
    const bool is_record = command == 482 || command == 483;
    const std::string expected = command == 492 ? "" : (is_record ? record_group : whole_group);
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
    EXPECT_EQ(line_pitch_sequence(text.c_str(), 0), 0);
    EXPECT_EQ(gathered(), expected) << number;
    EXPECT_EQ(carried(), "") << number;
    EXPECT_EQ(line_pitch_sequence(text.c_str(), 1), 0);
    EXPECT_EQ(gathered(), expected) << number;
    EXPECT_EQ(carried(), expected) << number;
  }
}

TEST_F(PrintConditionsOut, LinePitchTextIsReadAsADecimalNumber) {
  for (const char* text : {"8", " 8", "+8", "08", "8lpi", "8.5"}) {
    EXPECT_EQ(line_pitch_sequence(text, 0), 0);
    EXPECT_EQ(gathered(), kLines8) << text;
  }
  for (const char* text : {"", "x8", "-8", "0x8", "8000"}) {
    EXPECT_EQ(line_pitch_sequence(text, 0), 0);
    EXPECT_EQ(gathered(), "") << text;
  }
}

TEST_F(PrintConditionsOut, LaterPitchesReplaceTheCarriedOnes) {
  line_pitch_sequence("3", 1);
  line_pitch_sequence("8", 1);
  EXPECT_EQ(carried(), kLines8);
}

TEST_F(PrintConditionsOut, OutValuesAreCopiedFromTheRecord) {
  job_settings.record.spacing_index = 1;
  job_settings.record.line_unit_value = 777;
  for (const int command : {0, 446, 478, 479, 482, 483, 500}) {
    emitted(command);
    EXPECT_EQ(spacing_index_, 1) << command;
    EXPECT_EQ(line_unit_value_, 777) << command;
    EXPECT_EQ(conditions_written_, 1) << command;
  }
}

TEST_F(PrintConditionsOut, NullOutPointersChangeNothingInTheOutput) {
  job_settings.record.output_variant = 2;
  for (const int command : kCommands) {
    const std::string expected = emitted(command);
    EXPECT_EQ(emit_print_conditions(command, 1, 0, nullptr, nullptr, nullptr, job_settings.record),
              0);
    EXPECT_EQ(gathered(), expected) << command;
  }
  EXPECT_EQ(emitted(482), kSetReset + kSpacing4);
}

TEST_F(PrintConditionsOut, FramedModeSendsTheFramedResetAloneForEveryCommand) {
  job_settings.framed_output = 1;
  give_character_pitch(720);
  give_line_pitch("8");
  give_form_data("data");
  const std::string frame = bytes("0011END_PRN_DAT\0") + kFramedReset;
  for (const int command : {0, 1, 262, 446, 478, 479, 482, 483, 492, 500, 3840}) {
    reset_framed_transfer();
    const testing::CaptureDescriptor standard_output(1);
    EXPECT_EQ(emit(command), 0);
    EXPECT_EQ(standard_output.text(), frame) << command;
    EXPECT_EQ(conditions_written_, 1) << command;
    EXPECT_EQ(spacing_index_, -1) << command;
    EXPECT_EQ(line_unit_value_, -1) << command;
  }
  EXPECT_EQ(gathered(), "");
  EXPECT_EQ(carried(), "");
}

TEST_F(PrintConditionsOut, FramedModeHoldsTheResetWhileTheInputFrameHasBytes) {
  job_settings.framed_output = 1;
  const std::array<std::uint8_t, 1> left{'A'};
  framed_transfer.window = {left.data(), left.data() + left.size()};
  const testing::CaptureDescriptor standard_output(1);
  EXPECT_EQ(emit(0), 0);
  EXPECT_EQ(standard_output.text(), "");
  EXPECT_EQ(framed_transfer.out_len, 11);
}

TEST_F(PrintConditionsOut, FailedWriteOfTheFramedResetEndsTheProcess) {
  job_settings.framed_output = 1;
  EXPECT_EXIT(
      {
        dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
        emit(0);
        _exit(0);
      },
      ::testing::ExitedWithCode(1), "");
}

TEST_F(PrintConditionsOut, FramedLinePitchGoesIntoAFrame) {
  job_settings.framed_output = 1;
  const testing::CaptureDescriptor standard_output(1);
  EXPECT_EQ(line_pitch_sequence("8", 0), 0);
  EXPECT_EQ(standard_output.text(), bytes("0005END_PRN_DAT\0") + kLines8);
}

/// One combination of all that the group depends on.
struct Combination {
  int command;
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
  if (given.command == 492) {
    expect_pitches(given, false, true, group);
    return group;
  }
  if (std::find(kCommands.begin(), kCommands.end(), given.command) == kCommands.end()) {
    return group;
  }
  const bool is_record = given.command == 482 || given.command == 483;
  if (!is_record) {
    group.write_and_carry(kStandardState);
  }
  group.write_and_carry(kSetReset);
  group.write_and_carry(given.data);
  if (given.mode != 3 && (given.form_flag == 0 || given.form_source == 3)) {
    const bool raised = is_record && given.form_source != 3 && given.variant >= 2;
    group.write_and_carry(raised ? kSpacing4 : kSpacing[static_cast<std::size_t>(given.spacing)]);
  }
  expect_pitches(given, true, !is_record, group);
  return group;
}

class PrintConditionsOutSweep : public PrintConditionsOut,
                                public ::testing::WithParamInterface<int> {
 protected:
  void check(const Combination& given) {
    reset_job_settings();
    reset_line_spacing();
    if (given.pitch_given) {
      give_character_pitch(720);
    }
    if (given.lines != nullptr) {
      give_line_pitch(given.lines);
    }
    give_form_data(given.data);
    job_settings.emulation_mode = given.mode;
    SettingsRecord& record = job_settings.record;
    record.form_flag = given.form_flag;
    record.form_source = given.form_source;
    record.output_variant = given.variant;
    record.spacing_index = given.spacing;
    const Group group = expected_group(given);
    ASSERT_EQ(emitted(given.command), group.written) << describe(given);
    ASSERT_EQ(carried(), group.general + group.slots) << describe(given);
  }

  static std::string describe(const Combination& given) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(),
                  "command %d -c %d -l %s mode %d flag %d source %d variant %d spacing %d",
                  given.command, given.pitch_given ? 1 : 0,
                  given.lines == nullptr ? "none" : given.lines, given.mode, given.form_flag,
                  given.form_source, given.variant, given.spacing);
    return text.data();
  }

  void check_form_settings(Combination given) {
    for (std::uint8_t flag = 0; flag <= 1; ++flag) {
      for (std::uint8_t source = 0; source <= 3; ++source) {
        for (std::uint8_t variant = 0; variant <= 4; ++variant) {
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
      for (const int mode : {1, 3, 7}) {
        for (const std::string& data : {std::string(), bytes("\x1c\0~")}) {
          check_form_settings({GetParam(), pitch_given, lines, mode, 0, 0, 0, data, 3});
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Commands, PrintConditionsOutSweep,
                         ::testing::Values(0, 262, 446, 478, 479, 482, 483, 492, 499, 500, 512));

}  // namespace
}  // namespace rlx
