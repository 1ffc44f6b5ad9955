#include "driver/options/options.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "job/fixed_paths.h"
#include "job/status.h"
#include "job/units.h"
#include "support/number.h"

namespace rlx {

namespace {

constexpr const char* kOptionLetters = "Ac:l:L:w:n:p:b:F:J:dj:e:kmfqr:EBCG:M:NPQRSiD";
/// Accepted in both passes, with no effect.
constexpr std::string_view kIgnoredLetters = "Mbjkm";
constexpr const char* kDirectorySeparator = ":";
constexpr const char* kFcbDataError = "FCB data error";
/// What getopt answers, after its own diagnostic, to an unknown letter or a missing argument.
constexpr int kOptionError = '?';

/// A letter of the first pass.
struct ModeOption {
  char letter;
  void (*apply)(const OptionTargets& to, const char* argument);
};

/// A letter of the second pass; `apply` returns ST_OK, or ST_FAILED with the message printed.
struct ValueOption {
  char letter;
  Status (*apply)(const OptionTargets& to, const char* argument);
};

// First pass.

void mode_a(const OptionTargets& to, const char* /*argument*/) {
  to.settings.output_variant = kOutputA;
}

void mode_b(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.emulation_mode = kFineMode;
  to.job.high_resolution_fonts = 1;
  to.command_line.resolution = kHighResolution;
  to.command_line.font_variant = kFineFonts;
}

void mode_c(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.emulation_mode = kExtendedMode;
  to.command_line.extended_parameters = 1;
}

void mode_d(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.header_selector = kSimplexBindingHeader;
}

void mode_e(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.emulation_mode = kFormLengthMode;
  to.command_line.stream_variant = kSentLengthStream;
  to.settings.output_variant = kOutputE;
  to.command_line.font_variant = kFixedFont;
}

void mode_p(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.extended_parameters = 1;
}

void mode_n(const OptionTargets& to, const char* argument) {
  mode_e(to, argument);
  mode_p(to, argument);
}

void mode_q(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.emulation_mode = kMode6;
}

void mode_r(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.emulation_mode = kMode7;
  to.command_line.stream_variant = kShortFormStream;
  to.settings.output_variant = kOutputR;
}

void mode_s(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.compact_flag = 1;
}

void mode_f(const OptionTargets& to, const char* /*argument*/) {
  to.settings.output_variant = kOutputF;
}

void add_capabilities(const OptionTargets& to, const char* argument) {
  parse_capabilities(to.printer, argument);
}

constexpr std::array<ModeOption, 12> kModeOptions{{
    {'A', mode_a},
    {'B', mode_b},
    {'C', mode_c},
    {'D', mode_d},
    {'E', mode_e},
    {'G', add_capabilities},
    {'N', mode_n},
    {'P', mode_p},
    {'Q', mode_q},
    {'R', mode_r},
    {'S', mode_s},
    {'f', mode_f},
}};

// Second pass.

Status illegal_option(const Messages& messages, int letter) {
  std::fprintf(stderr, "%s: illegal option %c\n", messages.program_name, letter);
  return ST_FAILED;
}

/// Copies what fits and ends it with a NUL.
template <std::size_t Size>
void copy_cut(std::string_view text, std::array<char, Size>& field) {
  const std::size_t length = std::min(text.size(), Size - 1);
  std::copy_n(text.begin(), length, field.begin());
  field[length] = '\0';
}

Status keep_f_text(const OptionTargets& to, const char* argument) {
  copy_cut(argument, to.command_line.f_text);
  return ST_OK;
}

Status keep_j_text(const OptionTargets& to, const char* argument) {
  copy_cut(argument, to.command_line.j_text);
  return ST_OK;
}

Status set_lines_per_page(const OptionTargets& to, const char* argument) {
  to.command_line.lines_per_page = decimal_value(argument);
  return ST_OK;
}

/// An argument above 7200 is accepted and leaves the pitch 0, which sends no pitch.
Status set_character_pitch(const OptionTargets& to, const char* argument) {
  const std::int32_t characters_per_inch = decimal_value(argument);
  if (characters_per_inch < 1) {
    return illegal_option(to.messages, 'c');
  }
  to.settings.char_pitch_source = kFromCommandLine;
  to.command_line.character_pitch = kUnitsPerInch / characters_per_inch;
  return ST_OK;
}

Status set_framed_output(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.framed_output = 1;
  return ST_OK;
}

Status set_requested_resolution(const OptionTargets& to, const char* argument) {
  to.command_line.requested_resolution = decimal_value(argument);
  return ST_OK;
}

Status set_ignore_flag(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.ignore_flag = 1;
  return ST_OK;
}

Status set_line_pitch(const OptionTargets& to, const char* argument) {
  to.settings.line_pitch_source = kFromCommandLine;
  to.settings.line_pitch_text = argument;
  return ST_OK;
}

Status set_fcb_name(const OptionTargets& to, const char* argument) {
  if (std::strlen(argument) > kMaxNameBytes) {
    report(to.messages, kFcbDataError);
    return ST_FAILED;
  }
  to.command_line.fcb_name = argument;
  return ST_OK;
}

Status add_directories(const OptionTargets& to, const char* argument) {
  const char* at = argument + std::strspn(argument, kDirectorySeparator);
  while (*at != '\0' && to.directories.count < kMaxSearchedDirectories) {
    const std::size_t length = std::strcspn(at, kDirectorySeparator);
    if (length > kMaxNameBytes) {
      report(to.messages, kFcbDataError);
      return ST_FAILED;
    }
    to.directories.append({at, length});
    at += length;
    at += std::strspn(at, kDirectorySeparator);
  }
  return ST_OK;
}

Status disable_print_conditions(const OptionTargets& to, const char* /*argument*/) {
  to.command_line.print_conditions_enabled = 0;
  return ST_OK;
}

Status set_undefined_gaiji_pattern(const OptionTargets& to, const char* argument) {
  const std::string_view pattern = argument;
  if (pattern != "space" && pattern != "ubar") {
    report(to.messages, "undefgaiji pattern error");
    return ST_FAILED;
  }
  to.command_line.undefined_gaiji_pattern = pattern == "ubar" ? 1 : 0;
  return ST_OK;
}

Status set_width(const OptionTargets& to, const char* argument) {
  to.settings.width_source = kFromCommandLine;
  to.settings.width_text = argument;
  return ST_OK;
}

constexpr std::array<ValueOption, 13> kValueOptions{{
    {'F', keep_f_text},
    {'J', keep_j_text},
    {'L', set_lines_per_page},
    {'c', set_character_pitch},
    {'d', set_framed_output},
    {'e', set_requested_resolution},
    {'i', set_ignore_flag},
    {'l', set_line_pitch},
    {'n', set_fcb_name},
    {'p', add_directories},
    {'q', disable_print_conditions},
    {'r', set_undefined_gaiji_pattern},
    {'w', set_width},
}};

/// The row of a letter; null when the table has none.
template <typename Row, std::size_t Size>
constexpr const Row* find_row(const std::array<Row, Size>& table, int letter) {
  for (const Row& row : table) {
    if (row.letter == letter) {
      return &row;
    }
  }
  return nullptr;
}

/// Letters that the second pass takes without doing anything.
constexpr bool is_skipped_in_second_pass(int letter) {
  return find_row(kModeOptions, letter) != nullptr ||
         std::find(kIgnoredLetters.begin(), kIgnoredLetters.end(), letter) != kIgnoredLetters.end();
}

/// Each letter that getopt takes belongs to one of the two passes or is ignored, and to no two.
constexpr bool every_letter_is_handled_once() {
  std::size_t letters = 0;
  for (const char letter : std::string_view(kOptionLetters)) {
    if (letter == ':') {
      continue;
    }
    ++letters;
    if ((find_row(kValueOptions, letter) != nullptr) == is_skipped_in_second_pass(letter)) {
      return false;
    }
  }
  return letters == kModeOptions.size() + kValueOptions.size() + kIgnoredLetters.size();
}
static_assert(every_letter_is_handled_once());

Status apply_value(const OptionTargets& to, int letter, const char* argument) {
  if (letter == kOptionError) {
    return ST_FAILED;
  }
  if (const ValueOption* const option = find_row(kValueOptions, letter)) {
    return option->apply(to, argument);
  }
  return is_skipped_in_second_pass(letter) ? ST_OK : illegal_option(to.messages, letter);
}

/// The next option's letter; -1 behind the last one.
int next_option(int argc, char** argv) {
  return getopt(argc, argv, kOptionLetters);
}

/// Starts getopt afresh, also where an earlier walk stopped within a group of letters.
void start_walk() {
  optind = 0;
  opterr = 1;
}

/// The first pass. It goes on after an error. @return ST_FAILED when there was one.
Status take_modes(const OptionTargets& to, int argc, char** argv) {
  Status status = ST_OK;
  start_walk();
  for (int letter = 0; (letter = next_option(argc, argv)) != -1;) {
    if (letter == kOptionError) {
      status = ST_FAILED;
    } else if (const ModeOption* const option = find_row(kModeOptions, letter)) {
      option->apply(to, optarg);
    }
  }
  return status;
}

/// The second pass. It ends at the first error.
Status take_values(const OptionTargets& to, int argc, char** argv) {
  start_walk();
  for (int letter = 0; (letter = next_option(argc, argv)) != -1;) {
    const Status status = apply_value(to, letter, optarg);
    if (status != ST_OK) {
      return status;
    }
  }
  return ST_OK;
}

}  // namespace

Status parse_options(const OptionTargets& to, int argc, char** argv) {
  to.messages.program_name = argc > 0 ? argv[0] : "";
  const Status mode_status = take_modes(to, argc, argv);

  to.command_line.print_conditions_enabled = 1;
  to.command_line.undefined_gaiji_pattern = 0;
  const Status status = take_values(to, argc, argv);
  // getopt moves operands behind the options, so that the second pass may take one for an argument
  // that the first one missed.
  if (status != ST_OK || mode_status != ST_OK) {
    return ST_FAILED;
  }
  to.directories.append(fixed_paths::kDefaultResourceDirectory);
  return ST_OK;
}

}  // namespace rlx
