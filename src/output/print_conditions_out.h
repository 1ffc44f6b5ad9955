#pragma once

#include <cstdint>

#include "job/settings.h"

namespace rlx {

/// Brings the printer back to the job's standard character state: both character sets reset, the
/// character spacing and the line pitch of the command line or of the stream, and the form data of
/// the stream. All that is written is stored with the carried settings too, but for a line pitch
/// that the command line did not give, and for anything that command 492 brings.
///
/// Only for the commands 0 (start of the job), 446, 478, 479, 482, 483, 492 and 500; nothing is
/// written for another one. In framed mode the framed reset, ESC "$@" ESC "(H" ESC "Q1 y", is
/// written for every command, and nothing else is done.
///
/// @param last_command        code of the last command that changed print conditions
/// @param capability_F        not looked at
/// @param line_unit           not looked at
/// @param spacing_index       the caller's copy of record.spacing_index, filled here; with output
///                            variant 2 and up a record (482, 483) makes it 4. Or null.
/// @param line_unit_value     the caller's copy of record.line_unit_value, filled here. Or null.
/// @param conditions_written  becomes 1 with the character set reset. Or null.
/// @return 0, or the first non-zero status of a write, which ends the group
int emit_print_conditions(int last_command, int capability_F, int line_unit,
                          std::int32_t* spacing_index, std::int32_t* line_unit_value,
                          std::int32_t* conditions_written, const SettingsRecord& record);

/// Writes the sequences that pitch_sequences() built from option -c, and stores them with the
/// carried settings under commands 513 and 324. An empty one is skipped.
/// @return 0, or the first non-zero status of a write
int write_pitch_sequences();

/// Writes the line pitch FS "%" of a number of lines per inch.
/// @param lines_per_inch  decimal text; only 3, 4, 6, 8 and 12 are written, any other is skipped
/// @param keep            1 stores the sequence with the carried settings, under command 325
/// @return 0, or the status of the write
int line_pitch_sequence(const char* lines_per_inch, int keep);

}  // namespace rlx
