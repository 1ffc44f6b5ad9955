#include "driver/options.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "driver/capabilities.h"
#include "job/fixed_paths.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/messages.h"
#include "support/number.h"

namespace rlx {

namespace {

constexpr const char* kOptionLetters = "Ac:l:L:w:n:p:b:F:J:dj:e:kmfqr:EBCG:M:NPQRSiD";
/// Accepted in both passes, with no effect.
constexpr std::string_view kIgnoredLetters = "Mbjkm";
constexpr const char* kDirectorySeparator = ":";
constexpr const char* kFcbDataError = "FCB data error";
/// -c divides this: pitches are in 1/7200 inch.
constexpr std::int32_t kUnitsPerInch = 7200;
/// What getopt answers, after its own diagnostic, to an unknown letter or a missing argument.
constexpr int kOptionError = '?';

/// A letter of the first pass.
struct ModeOption {
  char letter;
  void (*apply)(const char* argument);
};

/// A letter of the second pass; `apply` returns 0, or 1 with the message printed.
struct ValueOption {
  char letter;
  int (*apply)(const char* argument);
};

// First pass.

void mode_a(const char* /*argument*/) {
  job_settings.record.output_variant = 1;
}

void mode_b(const char* /*argument*/) {
  job_settings.emulation_mode = 2;
  job_settings.high_resolution_fonts = 1;
  job_settings.resolution = 400;
  job_settings.font_variant = 2;
}

void mode_c(const char* /*argument*/) {
  job_settings.emulation_mode = 4;
  job_settings.extended_parameters = 1;
}

void mode_d(const char* /*argument*/) {
  job_settings.header_selector = 8;
}

void mode_e(const char* /*argument*/) {
  job_settings.emulation_mode = 3;
  job_settings.stream_variant = 3;
  job_settings.record.output_variant = 3;
  job_settings.font_variant = 0;
}

void mode_p(const char* /*argument*/) {
  job_settings.extended_parameters = 1;
}

void mode_n(const char* argument) {
  mode_e(argument);
  mode_p(argument);
}

void mode_q(const char* /*argument*/) {
  job_settings.emulation_mode = 6;
}

void mode_r(const char* /*argument*/) {
  job_settings.emulation_mode = 7;
  job_settings.stream_variant = 4;
  job_settings.record.output_variant = 4;
}

void mode_s(const char* /*argument*/) {
  job_settings.compact_flag = 1;
}

void mode_f(const char* /*argument*/) {
  job_settings.record.output_variant = 2;
}

constexpr std::array<ModeOption, 12> kModeOptions{{
    {'A', mode_a},
    {'B', mode_b},
    {'C', mode_c},
    {'D', mode_d},
    {'E', mode_e},
    {'G', parse_capabilities},
    {'N', mode_n},
    {'P', mode_p},
    {'Q', mode_q},
    {'R', mode_r},
    {'S', mode_s},
    {'f', mode_f},
}};

// Second pass.

int illegal_option(int letter) {
  std::fprintf(stderr, "%s: illegal option %c\n", job_settings.program_name, letter);
  return kExitFailure;
}

/// Copies what fits and ends it with a NUL.
template <std::size_t Size>
void copy_cut(std::string_view text, std::array<char, Size>& field) {
  const std::size_t length = std::min(text.size(), Size - 1);
  std::copy_n(text.begin(), length, field.begin());
  field[length] = '\0';
}

int keep_f_text(const char* argument) {
  copy_cut(argument, job_settings.f_text);
  return ST_OK;
}

int keep_j_text(const char* argument) {
  copy_cut(argument, job_settings.j_text);
  return ST_OK;
}

int set_lines_per_page(const char* argument) {
  job_settings.lines_per_page = decimal_value(argument);
  return ST_OK;
}

/// An argument above 7200 is accepted and leaves the pitch 0, which sends no pitch.
int set_character_pitch(const char* argument) {
  const std::int32_t characters_per_inch = decimal_value(argument);
  if (characters_per_inch < 1) {
    return illegal_option('c');
  }
  job_settings.record.char_pitch_source = kFromCommandLine;
  job_settings.record.char_pitch_text = argument;
  job_settings.character_pitch = kUnitsPerInch / characters_per_inch;
  return ST_OK;
}

int set_framed_output(const char* /*argument*/) {
  job_settings.framed_output = 1;
  return ST_OK;
}

int set_requested_resolution(const char* argument) {
  job_settings.requested_resolution = decimal_value(argument);
  return ST_OK;
}

int set_ignore_flag(const char* /*argument*/) {
  job_settings.ignore_flag = 1;
  return ST_OK;
}

int set_line_pitch(const char* argument) {
  job_settings.record.line_pitch_source = kFromCommandLine;
  job_settings.record.line_pitch_text = argument;
  return ST_OK;
}

int set_fcb_name(const char* argument) {
  if (std::strlen(argument) > kMaxNameBytes) {
    report(kFcbDataError);
    return kExitFailure;
  }
  job_settings.fcb_name = argument;
  return ST_OK;
}

/// Expects a directory of at most kMaxNameBytes.
void append_directory(std::string_view directory) {
  copy_cut(directory, resource_directories.entries[resource_directories.count]);
  ++resource_directories.count;
}

int add_directories(const char* argument) {
  const char* at = argument + std::strspn(argument, kDirectorySeparator);
  while (*at != '\0' && resource_directories.count < kMaxSearchedDirectories) {
    const std::size_t length = std::strcspn(at, kDirectorySeparator);
    if (length > kMaxNameBytes) {
      report(kFcbDataError);
      return kExitFailure;
    }
    append_directory({at, length});
    at += length;
    at += std::strspn(at, kDirectorySeparator);
  }
  return ST_OK;
}

int disable_print_conditions(const char* /*argument*/) {
  job_settings.print_conditions_enabled = 0;
  return ST_OK;
}

int set_undefined_gaiji_pattern(const char* argument) {
  const std::string_view pattern = argument;
  if (pattern != "space" && pattern != "ubar") {
    report("undefgaiji pattern error");
    return kExitFailure;
  }
  job_settings.undefined_gaiji_pattern = pattern == "ubar" ? 1 : 0;
  return ST_OK;
}

int set_width(const char* argument) {
  job_settings.record.width_source = kFromCommandLine;
  job_settings.record.width_text = argument;
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

int apply_value(int letter, const char* argument) {
  if (letter == kOptionError) {
    return kExitFailure;
  }
  if (const ValueOption* const option = find_row(kValueOptions, letter)) {
    return option->apply(argument);
  }
  return is_skipped_in_second_pass(letter) ? ST_OK : illegal_option(letter);
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

/// The first pass. It goes on after an error. @return 1 when there was one.
int take_modes(int argc, char** argv) {
  int status = ST_OK;
  start_walk();
  for (int letter = 0; (letter = next_option(argc, argv)) != -1;) {
    if (letter == kOptionError) {
      status = kExitFailure;
    } else if (const ModeOption* const option = find_row(kModeOptions, letter)) {
      option->apply(optarg);
    }
  }
  return status;
}

/// The second pass. It ends at the first error.
int take_values(int argc, char** argv) {
  start_walk();
  for (int letter = 0; (letter = next_option(argc, argv)) != -1;) {
    const int status = apply_value(letter, optarg);
    if (status != ST_OK) {
      return status;
    }
  }
  return ST_OK;
}

}  // namespace

int parse_options(int argc, char** argv) {
  job_settings.program_name = argc > 0 ? argv[0] : "";
  const int mode_status = take_modes(argc, argv);

  job_settings.print_conditions_enabled = 1;
  job_settings.undefined_gaiji_pattern = 0;
  const int status = take_values(argc, argv);
  // getopt moves operands behind the options, so that the second pass may take one for an argument
  // that the first one missed.
  if (status != ST_OK || mode_status != ST_OK) {
    return kExitFailure;
  }
  append_directory(fixed_paths::kDefaultResourceDirectory);
  return ST_OK;
}

}  // namespace rlx
