#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "forms/fcb.h"
#include "job/bytes.h"
#include "job/command_record.h"
#include "job/output_buffer.h"
#include "job/settings.h"

namespace rlx {

// The stream moves the paper with LF and FF alone; the printer must be told the pitch of every
// line: FS "%", the pitch, " p". Here the lines of a form become such sequences, and the sequences
// of option -c are built. The encodings of numbers in FS commands are in this module; commands
// with fixed numbers stand where they are sent, in print_conditions_out.cpp and in
// fonts/gaiji_pattern.cpp.

/// A short command for the printer. Only the first `length` bytes mean anything.
struct PitchCommand {
  std::int32_t length = 0;
  std::array<std::uint8_t, 16> bytes{};

  constexpr void append(std::uint32_t byte) {
    bytes[static_cast<std::size_t>(length)] = static_cast<std::uint8_t>(byte);
    ++length;
  }

  Bytes sequence() const { return std::span(bytes).first(static_cast<std::size_t>(length)); }
};

/// Height of a line in 1/72 inch: 7200 / (lines per inch x 100), in whole numbers (3 gives 24, 12
/// gives 6). 0 lines per inch, which no line of a form has, give 0.
std::uint32_t line_pitch_72nds(std::uint32_t lines_per_inch);

/// FS "%", the pitch in the printer's digit code, " p". Digit code: one byte 0x20 + pitch up to 9,
/// two bytes from 10 on, 0x20 + pitch / 10 and 0x20 + pitch mod 10; above 20 the second one is
/// 0x20 + pitch mod 20. The 20 is deliberate; no pitch of a form (24 at most) shows the difference.
PitchCommand line_pitch_command(std::uint32_t pitch_72nds);

/// FS, a letter, a number in the printer's numeric parameter form: each decimal digit d is the byte
/// 0x20 + d, the last one 0x70 + d (1200 is 21 22 20 70).
PitchCommand numeric_command(char letter, std::uint32_t value);

/// Puts a command behind what the buffer or record holds. One that would not fit is left out.
void append_command(OutputBuffer& buffer, const PitchCommand& command);
void append_command(CommandRecord& record, const PitchCommand& command);

/// The sequences of option -c, empty until pitch_sequences() has built them.
struct CharacterPitchCommands {
  PitchCommand pitch;         ///< ESC "Q0;", the pitch in four digits, "/G"
  PitchCommand double_pitch;  ///< FS "$", twice the pitch in the numeric parameter form
};

/// What moves the paper.
struct LineSpacing {
  const CommandLine& command_line;
  JobState& job;
  CharacterPitchCommands character_pitch;

  LineSpacing(const CommandLine& options, JobState& state) : command_line(options), job(state) {}
};

/// Moves to the top of the form: appends to `pending` a FF (only when something was printed since
/// the last one, JobState::page_started), a pitch and a LF for each line above the form's top
/// line, and the pitch of the top line. The table's current line is then the top line. With
/// kSentLengthStream or kShortFormStream the form's length becomes JobState::form_length_tenths.
/// @param table  a loaded form: `top_line` 1 or more, and as many lines.
void top_of_form(LineSpacing& spacing, FcbTable& table, OutputBuffer& pending);

/// Moves to the next line of the form. Expects the record of a LF: it gets the pitch of the new
/// line behind the LF. Over the end of the form the LF is dropped (the record becomes empty) and
/// the next form is started, as by top_of_form().
void next_line(LineSpacing& spacing, CommandRecord& record, FcbTable& table, OutputBuffer& pending);

/// Builds the sequences from CommandLine::character_pitch (1/7200 inch, 7200 at most). A pitch of
/// 0, which is no -c or one above 7200, leaves them empty.
void pitch_sequences(LineSpacing& spacing);

}  // namespace rlx
