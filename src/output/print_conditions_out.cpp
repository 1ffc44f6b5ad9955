#include "output/print_conditions_out.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "job/command_record.h"
#include "job/status.h"
#include "output/carried_settings.h"
#include "output/line_spacing.h"
#include "output/out_piece.h"
#include "support/error_log.h"
#include "support/number.h"

namespace rlx {

namespace {

using Bytes = std::span<const std::uint8_t>;

/// Command 492, which no input produces today.
constexpr int kCommand492 = 492;
/// All other commands that bring the group; 0 is the start of the job.
constexpr std::array<int, 7> kGroupCommands{0,           CMD_Q_A_EX,   CMD_Q_I_EX, 479,
                                            CMD_Q_NL_SP, CMD_Q_NL_SP2, CMD_Q_OL_SP};

constexpr int kEmulationWithoutSpacing = 3;
/// From this output variant on, a record selects kRecordSpacing.
constexpr std::uint8_t kFirstVariantWithRecordSpacing = 2;
constexpr std::int32_t kRecordSpacing = 4;
constexpr const char* kDefaultLinesPerInch = "6";

/// FS "(`q" FS "(ap" FS "%!\" p" ESC "Q1 y" ESC "Q1;!f"
constexpr std::array<std::uint8_t, 25> kStandardState{
    0x1C, '(',  '`', 'q', 0x1C, '(', 'a',  'p', 0x1C, '%', '!', '"', ' ',
    'p',  0x1B, 'Q', '1', ' ',  'y', 0x1B, 'Q', '1',  ';', '!', 'f'};
/// ESC "$@" ESC "(H"
constexpr std::array<std::uint8_t, 6> kSetReset{0x1B, '$', '@', 0x1B, '(', 'H'};
/// The set reset and ESC "Q1 y"
constexpr std::array<std::uint8_t, 11> kFramedReset{0x1B, '$', '@', 0x1B, '(', 'H',
                                                    0x1B, 'Q', '1', ' ',  'y'};
/// Character spacing by spacing index. The NUL bytes of index 0 are sent like the others.
constexpr std::array<std::array<std::uint8_t, 5>, 5> kSpacing{{
    {0, 0, 0, 0, 0},
    {0x1C, '&', ' ', '\'', 'p'},
    {0x1C, '&', ' ', ')', 'p'},
    {0x1C, '&', '!', ' ', 'u'},
    {0x1C, '&', '!', '"', 'p'},
}};

/// The lines per inch that the printer has a pitch for.
constexpr std::array<std::int32_t, 5> kLinesPerInch{3, 4, 6, 8, 12};

bool is_record(int command) {
  return command == CMD_Q_NL_SP || command == CMD_Q_NL_SP2;
}

/// The length of a setting, for the 32-bit counts of the writers.
std::int32_t first_length(Bytes bytes) {
  return narrow_ulong_to_int(bytes.size(), "rlxset_data", "first_length", kKeepTruncated);
}

int write_bytes(Bytes bytes) {
  return out_piece(first_length(bytes), bytes.data());
}

/// Stored whatever the write returned; a failed write ends the job anyway.
int write_and_keep(std::uint32_t command, Bytes bytes) {
  const int status = write_bytes(bytes);
  keep_setting(command, first_length(bytes), bytes.data());
  return status;
}

Bytes bytes_of(const PitchCommand& command) {
  return Bytes(command.bytes).first(static_cast<std::size_t>(command.length));
}

/// Nothing to write is success.
int write_pitch(std::uint32_t command, const PitchCommand& pitch) {
  return pitch.length == 0 ? ST_OK : write_and_keep(command, bytes_of(pitch));
}

void copy_out(std::int32_t value, std::int32_t* target) {
  if (target != nullptr) {
    *target = value;
  }
}

int emit_framed(std::int32_t* conditions_written) {
  copy_out(1, conditions_written);
  return write_bytes(kFramedReset);
}

/// Command 492 brings the pitches alone.
int emit_pitches(std::int32_t* spacing_index, const SettingsRecord& record) {
  if (record.char_pitch_source == kFromCommandLine) {
    const int status = write_pitch_sequences();
    if (status != ST_OK) {
      return status;
    }
  }
  const bool given = record.line_pitch_source == kFromCommandLine;
  const int status = line_pitch_sequence(given ? record.line_pitch_text : kDefaultLinesPerInch, 0);
  if (status == ST_OK && job_settings.emulation_mode != kEmulationWithoutSpacing) {
    copy_out(record.spacing_index, spacing_index);
  }
  return status;
}

int emit_standard_state(int last_command) {
  return is_record(last_command) ? ST_OK : write_and_keep(CMD_Q_R_EX, kStandardState);
}

int emit_set_reset(std::int32_t* conditions_written) {
  const int status = write_and_keep(CMD_Q_R_EX, kSetReset);
  if (status == ST_OK) {
    copy_out(1, conditions_written);
  }
  return status;
}

int emit_form_data(const SettingsRecord& record) {
  if (record.form_data_length == 0) {
    return ST_OK;
  }
  const auto length = static_cast<std::size_t>(record.form_data_length);
  return write_and_keep(CMD_Q_R_EX, Bytes(record.form_data).first(length));
}

int emit_spacing(int last_command, std::int32_t* spacing_index, const SettingsRecord& record) {
  const bool form_from_command_line = record.form_source == kFromCommandLine;
  if (job_settings.emulation_mode == kEmulationWithoutSpacing ||
      (record.form_flag != 0 && !form_from_command_line)) {
    return ST_OK;
  }
  std::int32_t index = record.spacing_index;
  if (is_record(last_command) && !form_from_command_line &&
      record.output_variant >= kFirstVariantWithRecordSpacing) {
    index = kRecordSpacing;
    copy_out(index, spacing_index);
  }
  return write_and_keep(CMD_Q_R_EX, kSpacing[static_cast<std::size_t>(index)]);
}

int emit_character_pitch(const SettingsRecord& record) {
  return record.char_pitch_source == kFromCommandLine ? write_pitch_sequences() : ST_OK;
}

int emit_line_pitch(int last_command, const SettingsRecord& record) {
  if (record.line_pitch_source == kFromCommandLine) {
    return line_pitch_sequence(record.line_pitch_text, 1);
  }
  return is_record(last_command) ? ST_OK : line_pitch_sequence(kDefaultLinesPerInch, 0);
}

}  // namespace

int emit_print_conditions(int last_command, int /*capability_F*/, int /*line_unit*/,
                          std::int32_t* spacing_index, std::int32_t* line_unit_value,
                          std::int32_t* conditions_written, const SettingsRecord& record) {
  if (job_settings.framed_output != 0) {
    return emit_framed(conditions_written);
  }
  if (last_command == kCommand492) {
    return emit_pitches(spacing_index, record);
  }
  if (std::find(kGroupCommands.begin(), kGroupCommands.end(), last_command) ==
      kGroupCommands.end()) {
    return ST_OK;
  }
  int status = emit_standard_state(last_command);
  if (status == ST_OK) {
    status = emit_set_reset(conditions_written);
  }
  if (status == ST_OK) {
    status = emit_form_data(record);
  }
  if (status != ST_OK) {
    return status;
  }
  copy_out(record.line_unit_value, line_unit_value);
  copy_out(record.spacing_index, spacing_index);
  status = emit_spacing(last_command, spacing_index, record);
  if (status == ST_OK) {
    status = emit_character_pitch(record);
  }
  return status == ST_OK ? emit_line_pitch(last_command, record) : status;
}

int write_pitch_sequences() {
  const CharacterPitchCommands& commands = character_pitch_commands();
  const int status = write_pitch(CMD_Q_G_SL, commands.pitch);
  return status == ST_OK ? write_pitch(CMD_FS_DOLLAR, commands.double_pitch) : status;
}

int line_pitch_sequence(const char* lines_per_inch, int keep) {
  const std::int32_t number = decimal_value(lines_per_inch);
  if (std::find(kLinesPerInch.begin(), kLinesPerInch.end(), number) == kLinesPerInch.end()) {
    return ST_OK;
  }
  const PitchCommand pitch =
      line_pitch_command(line_pitch_72nds(static_cast<std::uint32_t>(number)));
  return keep == 1 ? write_and_keep(CMD_FS_PERCENT, bytes_of(pitch)) : write_bytes(bytes_of(pitch));
}

}  // namespace rlx
