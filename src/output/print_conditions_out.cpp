#include "output/print_conditions_out.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "job/command_record.h"
#include "job/control_bytes.h"
#include "job/units.h"
#include "support/narrowing.h"
#include "support/number.h"

namespace rlx {

namespace {

/// The commands that bring the whole group; 0 is the start of the job.
constexpr std::array<std::uint32_t, 7> kGroupCommands{
    0, CMD_Q_A_EX, CMD_Q_I_EX, CMD_LINE_UNIT_479, CMD_Q_NL_SP, CMD_Q_NL_SP2, CMD_Q_OL_SP};

/// The spacing behind a print-condition command, from kOutputF on.
constexpr std::int32_t kConditionSpacing = 4;
/// As in a form that says nothing else.
constexpr const char* kDefaultLinesPerInchText = "6";

/// FS "(`q" FS "(ap" FS "%!\" p" ESC "Q1 y" ESC "Q1;!f"
constexpr std::array<std::uint8_t, 25> kStandardState{kFs, '(',  '`', 'q', kFs, '(',  'a', 'p', kFs,
                                                      '%', '!',  '"', ' ', 'p', kEsc, 'Q', '1', ' ',
                                                      'y', kEsc, 'Q', '1', ';', '!',  'f'};
/// ESC "$@" ESC "(H"
constexpr std::array<std::uint8_t, 6> kSetReset{kEsc, '$', '@', kEsc, '(', 'H'};
/// The set reset and ESC "Q1 y"
constexpr std::array<std::uint8_t, 11> kFramedReset{kEsc, '$', '@', kEsc, '(', 'H',
                                                    kEsc, 'Q', '1', ' ',  'y'};
/// Character spacing by spacing index. The NUL bytes of index 0 are sent like the others.
constexpr std::array<std::array<std::uint8_t, 5>, 5> kSpacing{{
    {0, 0, 0, 0, 0},
    {kFs, '&', ' ', '\'', 'p'},
    {kFs, '&', ' ', ')', 'p'},
    {kFs, '&', '!', ' ', 'u'},
    {kFs, '&', '!', '"', 'p'},
}};

bool is_condition_command(std::uint32_t command) {
  return command == CMD_Q_NL_SP || command == CMD_Q_NL_SP2;
}

/// first_length: the bytes of a setting that a 32-bit count counts, which is all of them. The guard
/// logs this name.
Bytes first_length(Bytes bytes) {
  const std::int32_t length =
      narrow_ulong_to_int(bytes.size(), "rlxset_data", "first_length", kKeepTruncated);
  return bytes.first(static_cast<std::size_t>(length));
}

void write_bytes(ConditionsOutput& to, Bytes bytes) {
  out_piece(to.output, first_length(bytes));
}

void write_and_keep(ConditionsOutput& to, std::uint32_t command, Bytes bytes) {
  write_bytes(to, bytes);
  keep_setting(to.carried, command, first_length(bytes));
}

/// Nothing, when there is no such sequence.
void write_pitch(ConditionsOutput& to, std::uint32_t command, const PitchCommand& pitch) {
  if (pitch.length != 0) {
    write_and_keep(to, command, pitch.sequence());
  }
}

void copy_out(std::int32_t value, std::int32_t* target) {
  if (target != nullptr) {
    *target = value;
  }
}

void emit_framed(ConditionsOutput& to, std::int32_t* conditions_written) {
  copy_out(1, conditions_written);
  write_bytes(to, kFramedReset);
}

void emit_character_pitch(ConditionsOutput& to, const SettingsRecord& settings) {
  if (settings.char_pitch_source == kFromCommandLine) {
    write_pitch_sequences(to);
  }
}

/// Command 492 brings the pitches alone.
void emit_pitches(ConditionsOutput& to, std::int32_t* spacing_index,
                  const SettingsRecord& settings) {
  emit_character_pitch(to, settings);
  const bool given = settings.line_pitch_source == kFromCommandLine;
  line_pitch_sequence(to, given ? settings.line_pitch_text : kDefaultLinesPerInchText, 0);
  if (to.command_line.emulation_mode != kFormLengthMode) {
    copy_out(settings.spacing_index, spacing_index);
  }
}

void emit_standard_state(ConditionsOutput& to, std::uint32_t last_command) {
  if (!is_condition_command(last_command)) {
    write_and_keep(to, CMD_Q_R_EX, kStandardState);
  }
}

void emit_set_reset(ConditionsOutput& to, std::int32_t* conditions_written) {
  write_and_keep(to, CMD_Q_R_EX, kSetReset);
  copy_out(1, conditions_written);
}

void emit_form_data(ConditionsOutput& to, const SettingsRecord& settings) {
  if (settings.form_data_length != 0) {
    const auto length = static_cast<std::size_t>(settings.form_data_length);
    write_and_keep(to, CMD_Q_R_EX, Bytes(settings.form_data).first(length));
  }
}

void emit_spacing(ConditionsOutput& to, std::uint32_t last_command, std::int32_t* spacing_index,
                  const SettingsRecord& settings) {
  const bool form_from_command_line = settings.form_source == kFromCommandLine;
  if (to.command_line.emulation_mode == kFormLengthMode ||
      (settings.form_flag != 0 && !form_from_command_line)) {
    return;
  }
  std::int32_t index = settings.spacing_index;
  if (is_condition_command(last_command) && !form_from_command_line &&
      settings.output_variant >= kOutputF) {
    index = kConditionSpacing;
    copy_out(index, spacing_index);
  }
  write_and_keep(to, CMD_Q_R_EX, kSpacing[static_cast<std::size_t>(index)]);
}

void emit_line_pitch(ConditionsOutput& to, std::uint32_t last_command,
                     const SettingsRecord& settings) {
  if (settings.line_pitch_source == kFromCommandLine) {
    line_pitch_sequence(to, settings.line_pitch_text, 1);
  } else if (!is_condition_command(last_command)) {
    line_pitch_sequence(to, kDefaultLinesPerInchText, 0);
  }
}

}  // namespace

void emit_print_conditions(ConditionsOutput& to, std::uint32_t last_command, int /*capability_F*/,
                           int /*line_unit*/, std::int32_t* spacing_index,
                           std::int32_t* line_unit_value, std::int32_t* conditions_written,
                           const SettingsRecord& settings) {
  if (to.command_line.framed_output != 0) {
    emit_framed(to, conditions_written);
    return;
  }
  if (last_command == CMD_SECOND_VARIANT_492) {
    emit_pitches(to, spacing_index, settings);
    return;
  }
  if (std::ranges::find(kGroupCommands, last_command) == kGroupCommands.end()) {
    return;
  }
  emit_standard_state(to, last_command);
  emit_set_reset(to, conditions_written);
  emit_form_data(to, settings);
  copy_out(settings.line_unit_value, line_unit_value);
  copy_out(settings.spacing_index, spacing_index);
  emit_spacing(to, last_command, spacing_index, settings);
  emit_character_pitch(to, settings);
  emit_line_pitch(to, last_command, settings);
}

void write_pitch_sequences(ConditionsOutput& to) {
  const CharacterPitchCommands& commands = to.spacing.character_pitch;
  write_pitch(to, CMD_Q_G_SL, commands.pitch);
  write_pitch(to, CMD_FS_DOLLAR, commands.double_pitch);
}

void line_pitch_sequence(ConditionsOutput& to, const char* lines_per_inch, int keep) {
  const std::int32_t number = decimal_value(lines_per_inch);
  const auto wanted = static_cast<std::uint32_t>(number);
  if (std::ranges::find(kLinePitches, wanted, &LinePitch::lines_per_inch) == kLinePitches.end()) {
    return;
  }
  const PitchCommand pitch = line_pitch_command(line_pitch_72nds(wanted));
  if (keep == 1) {
    write_and_keep(to, CMD_FS_PERCENT, pitch.sequence());
  } else {
    write_bytes(to, pitch.sequence());
  }
}

}  // namespace rlx
