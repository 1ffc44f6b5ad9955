#pragma once

#include <cstdint>

#include "job/settings.h"
#include "output/carried_settings.h"
#include "output/line_spacing.h"
#include "output/out_piece.h"

namespace rlx {

/// What the print conditions are sent with.
struct ConditionsOutput {
  const CommandLine& command_line;
  PieceOutput& output;
  CarriedSettings& carried;
  const LineSpacing& spacing;
};

/// Brings the printer back to the job's standard character state: both character sets reset, the
/// character spacing and the line pitch of the command line or of the stream, and the form data of
/// the stream. All that is written is kept in the carried settings too, except a line pitch that
/// the command line did not give.
///
/// Only for the commands 0 (start of the job), 446, 478, 479, 482, 483, 492 and 500; nothing is
/// written for another one. Command 492 brings the pitches alone: the character pitch of -c, which
/// is carried, and a line pitch, which is not, even that of -l. In framed mode the framed reset,
/// ESC "$@" ESC "(H" ESC "Q1 y", is written for every command, and nothing else is done.
///
/// @param last_command        code of the last command that changed print conditions
/// @param capability_F        with line_unit: what the conditions may depend on too. No rule for
/// them
///                            is known, so neither is looked at; they are passed so that a rule
///                            needs no new way to them.
/// @param line_unit           see capability_F
/// @param spacing_index       the caller's copy of settings.spacing_index, filled here; from
///                            kOutputF on a print-condition or form name command (482, 483) makes
///                            it 4. Or null.
/// @param line_unit_value     the caller's copy of settings.line_unit_value, filled here. Or null.
/// @param conditions_written  becomes 1 with the character set reset. Or null.
void emit_print_conditions(ConditionsOutput& to, std::uint32_t last_command, int capability_F,
                           int line_unit, std::int32_t* spacing_index,
                           std::int32_t* line_unit_value, std::int32_t* conditions_written,
                           const SettingsRecord& settings);

/// Writes the sequences that pitch_sequences() built from option -c, and keeps them in the carried
/// settings under commands 513 and 324. An empty one is skipped.
void write_pitch_sequences(ConditionsOutput& to);

/// Writes the line pitch FS "%" of a number of lines per inch.
/// @param lines_per_inch  decimal text; only 3, 4, 6, 8 and 12 are written, any other is skipped
/// @param keep            1 keeps the sequence in the carried settings, under command 325
void line_pitch_sequence(ConditionsOutput& to, const char* lines_per_inch, int keep);

}  // namespace rlx
