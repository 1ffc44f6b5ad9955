#include "output/line_spacing.h"

#include <algorithm>

#include "job/control_bytes.h"
#include "job/units.h"

namespace rlx {

namespace {

/// A digit d of a parameter is kDigit + d; in the numeric form the last one is kLastDigit + d.
constexpr std::uint32_t kDigit = 0x20;
constexpr std::uint32_t kLastDigit = 0x70;
/// Highest pitch whose second digit is taken modulo 10.
constexpr std::uint32_t kHighestPlainPitch = 20;
constexpr std::int32_t kTenthsPerHalfInch = 5;

/// One that would not fit is left out.
void append_byte(OutputBuffer& buffer, std::uint8_t byte) {
  buffer.append_fitting({&byte, 1});
}

/// 0 behind the last line of the form.
std::uint32_t lines_per_inch_here(const FcbTable& table) {
  const auto line = static_cast<std::size_t>(table.cur_line);
  return line < table.lpi.size() ? table.lpi[line] : 0;
}

PitchCommand pitch_of_current_line(const FcbTable& table) {
  return line_pitch_command(line_pitch_72nds(lines_per_inch_here(table)));
}

}  // namespace

std::uint32_t line_pitch_72nds(std::uint32_t lines_per_inch) {
  constexpr std::uint32_t kUnits = kUnitsPerInch;
  return lines_per_inch == 0 ? 0 : kUnits / (lines_per_inch * kUnitsPer72nd);
}

PitchCommand line_pitch_command(std::uint32_t pitch_72nds) {
  PitchCommand command;
  command.append(kFs);
  command.append('%');
  if (pitch_72nds < 10) {
    command.append(kDigit + pitch_72nds);
  } else {
    // Modulo 20 is deliberate, see the header.
    const std::uint32_t modulus = pitch_72nds > kHighestPlainPitch ? 20 : 10;
    command.append(kDigit + pitch_72nds / 10);
    command.append(kDigit + pitch_72nds % modulus);
  }
  command.append(' ');
  command.append('p');
  return command;
}

PitchCommand numeric_command(char letter, std::uint32_t value) {
  std::uint32_t place = 1;
  while (value / place >= 10) {
    place *= 10;
  }
  PitchCommand command;
  command.append(kFs);
  command.append(static_cast<std::uint8_t>(letter));
  for (; place > 1; place /= 10) {
    command.append(kDigit + value / place % 10);
  }
  command.append(kLastDigit + value % 10);
  return command;
}

void append_command(OutputBuffer& buffer, const PitchCommand& command) {
  buffer.append_fitting(command.sequence());
}

void append_command(CommandRecord& record, const PitchCommand& command) {
  if (command.length > kRecordCapacity - record.length) {
    return;
  }
  std::copy_n(command.bytes.begin(), command.length, record.bytes.begin() + record.length);
  record.length += command.length;
}

void top_of_form(LineSpacing& spacing, FcbTable& table, OutputBuffer& pending) {
  table.cur_line = 0;
  if (spacing.job.page_started == 1) {
    append_byte(pending, kFormFeed);
  }
  if (spacing.command_line.stream_variant == kSentLengthStream ||
      spacing.command_line.stream_variant == kShortFormStream) {
    spacing.job.form_length_tenths = kTenthsPerHalfInch * table.form_halfinch;
  }
  for (; table.cur_line + 1 < table.top_line; ++table.cur_line) {
    append_command(pending, pitch_of_current_line(table));
    append_byte(pending, kLineFeed);
  }
  append_command(pending, pitch_of_current_line(table));
}

void next_line(LineSpacing& spacing, CommandRecord& record, FcbTable& table,
               OutputBuffer& pending) {
  ++table.cur_line;
  if (lines_per_inch_here(table) == 0) {
    record.length = 0;
    top_of_form(spacing, table, pending);
    return;
  }
  append_command(record, pitch_of_current_line(table));
}

void pitch_sequences(LineSpacing& spacing) {
  CharacterPitchCommands& commands = spacing.character_pitch;
  commands = {};
  const auto pitch = static_cast<std::uint32_t>(spacing.command_line.character_pitch);
  if (pitch == 0) {
    return;
  }
  for (const std::uint8_t byte : {kEsc, std::uint8_t{'Q'}, std::uint8_t{'0'}, std::uint8_t{';'}}) {
    commands.pitch.append(byte);
  }
  for (const std::uint32_t place : {1000U, 100U, 10U, 1U}) {
    commands.pitch.append('0' + pitch / place % 10);
  }
  commands.pitch.append('/');
  commands.pitch.append('G');
  commands.double_pitch = numeric_command('$', 2 * pitch);
}

}  // namespace rlx
