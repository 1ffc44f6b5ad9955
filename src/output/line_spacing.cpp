#include "output/line_spacing.h"

#include <algorithm>

#include "job/settings.h"
#include "job/status.h"

namespace rlx {

namespace {

constexpr std::uint8_t kLf = 0x0A;
constexpr std::uint8_t kFf = 0x0C;
constexpr std::uint8_t kEsc = 0x1B;
constexpr std::uint8_t kFs = 0x1C;
/// A digit d of a parameter is kDigit + d; in the numeric form the last one is kLastDigit + d.
constexpr std::uint32_t kDigit = 0x20;
constexpr std::uint32_t kLastDigit = 0x70;
/// Divided by the hundredfold lines per inch it gives the pitch in 1/72 inch.
constexpr std::uint32_t kUnitsPerInch = 7200;
constexpr std::uint32_t kPitchUnit = 100;
/// Highest pitch whose second digit is taken modulo 10.
constexpr std::uint32_t kHighestPlainPitch = 20;
constexpr std::int32_t kTenthsPerHalfInch = 5;

CharacterPitchCommands state;

/// Appends to whatever has a length and bytes; all or nothing.
template <typename Buffer>
void append_whole(Buffer& buffer, const std::uint8_t* bytes, std::int32_t count) {
  if (count > static_cast<std::int32_t>(buffer.bytes.size()) - buffer.length) {
    return;
  }
  std::copy_n(bytes, count, buffer.bytes.begin() + buffer.length);
  buffer.length += count;
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
  return lines_per_inch == 0 ? 0 : kUnitsPerInch / (lines_per_inch * kPitchUnit);
}

PitchCommand line_pitch_command(std::uint32_t pitch_72nds) {
  PitchCommand command;
  command.append(kFs);
  command.append('%');
  if (pitch_72nds < 10) {
    command.append(kDigit + pitch_72nds);
  } else {
    // Modulo 20 is what the printer's own driver sends: deliberate.
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
  append_whole(buffer, command.bytes.data(), command.length);
}

void append_command(CommandRecord& record, const PitchCommand& command) {
  append_whole(record, command.bytes.data(), command.length);
}

int top_of_form(FcbTable& table, OutputBuffer& pending) {
  table.cur_line = 0;
  if (job_settings.page_started == 1) {
    append_whole(pending, &kFf, 1);
  }
  if (job_settings.stream_variant == 3 || job_settings.stream_variant == 4) {
    job_settings.form_length_tenths = kTenthsPerHalfInch * table.form_halfinch;
  }
  for (; table.cur_line + 1 < table.top_line; ++table.cur_line) {
    append_command(pending, pitch_of_current_line(table));
    append_whole(pending, &kLf, 1);
  }
  append_command(pending, pitch_of_current_line(table));
  return ST_OK;
}

int next_line(CommandRecord& record, FcbTable& table, OutputBuffer& pending) {
  ++table.cur_line;
  if (lines_per_inch_here(table) == 0) {
    record.length = 0;
    return top_of_form(table, pending);
  }
  append_command(record, pitch_of_current_line(table));
  return ST_OK;
}

void pitch_sequences() {
  reset_line_spacing();
  const auto pitch = static_cast<std::uint32_t>(job_settings.character_pitch);
  if (pitch == 0) {
    return;
  }
  for (const std::uint8_t byte : {kEsc, std::uint8_t{'Q'}, std::uint8_t{'0'}, std::uint8_t{';'}}) {
    state.pitch.append(byte);
  }
  for (const std::uint32_t place : {1000U, 100U, 10U, 1U}) {
    state.pitch.append('0' + pitch / place % 10);
  }
  state.pitch.append('/');
  state.pitch.append('G');
  state.double_pitch = numeric_command('$', 2 * pitch);
}

const CharacterPitchCommands& character_pitch_commands() {
  return state;
}

void reset_line_spacing() {
  state = CharacterPitchCommands{};
}

}  // namespace rlx
