#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "job/settings.h"
#include "job/status.h"
#include "support/environment_file.h"
#include "support/messages.h"

namespace rlx {

/// Entries of `FcbTable::lpi`; the last one is always 0.
inline constexpr std::int32_t kFcbEntries = 256;
/// Lines that a form can have.
inline constexpr std::int32_t kMaxFormLines = kFcbEntries - 1;
inline constexpr std::int32_t kDefaultTopLine = 4;
/// 11 inches.
inline constexpr std::int32_t kDefaultFormHalfinch = 22;

/// The vertical layout of one form.
struct FcbTable {
  /// Index into `lpi` of the line that the print head is on. The line spacing moves it; loading a
  /// form does not touch it.
  std::int32_t cur_line = 0;
  /// The line, from 1, on which printing starts. The lines above it are spaced over.
  std::int32_t top_line = kDefaultTopLine;
  /// Form length in half inches.
  std::int32_t form_halfinch = kDefaultFormHalfinch;
  /// Lines per inch of each line of the form: 3, 4, 6, 8 or 12. A 0 ends the form.
  std::array<std::uint32_t, kFcbEntries> lpi{};
};

/// Room for a line of a form file, its LF and a NUL included. Longer lines are read as several.
inline constexpr std::size_t kFcbLineBytes = 512;
/// A word of a form file, NUL-terminated.
using FcbWord = std::array<char, kFcbLineBytes>;

/// What is wrong with a form that was refused.
enum class FcbWrong : std::uint8_t {
  nothing,
  file,                  ///< it cannot be opened or read: `error_number`, 0 for no regular file
  keyword,               ///< `word` is no keyword
  pitch_missing,         ///< an `lpi` line without words
  pitch,                 ///< `word` is none of kLinePitches
  count_missing,         ///< an `lpi` line with one word
  count_no_number,       ///< `word` does not consist of digits
  count_above,           ///< `word` is above `limit`
  too_many_lines,        ///< `value` lines, with those of this `lpi` line, are more than `limit`
  second_print,          ///< the first `print` line is line `value`
  first_line_missing,    ///< a `print` line without words
  first_line_no_number,  ///< `word` does not consist of digits
  first_line_below,      ///< `word` is below `limit`
  first_line_above,      ///< `word` is above `limit`
  length_no_number,      ///< `word` does not consist of digits
  lines_too_tall,        ///< they take `value`, the form has `limit`, both 1/7200 inch
  too_few_lines,         ///< `value` lines; printing starts on line `limit`
};

/// Why a form was refused, and where.
struct FcbFault {
  FcbWrong wrong = FcbWrong::nothing;
  /// The line of the file, from 1; its last one when the form as a whole is wrong (lines_too_tall,
  /// too_few_lines); 0 for FcbWrong::file.
  std::size_t line = 0;
  /// The fault stands behind the first 511 bytes of that line, in what is read as another one.
  bool in_rest_of_line = false;
  FcbWord word{};
  std::int64_t value = 0;
  std::int64_t limit = 0;
  int error_number = 0;
};

/// What was seen in a form file, for those who tell people about forms.
struct FcbReport {
  FcbFault fault;
  /// The `print` line, from 1; 0 when there is none.
  std::size_t print_line = 0;
  /// The form length as it stands there; empty when there is none.
  FcbWord given_length{};
  /// The form length, 1/7200 inch: cut, raised, but not rounded.
  std::int32_t length = 0;
};

/// What a form is read with.
struct FormReading {
  const CommandLine& command_line;
  EnvironmentFile& environment;
  const Messages& messages;
};

/// Loads a form by name.
///
/// A name with a '/' is a path. Any other is looked up as <directory>/fcbe/<name> in the
/// directories in order, up to the first empty entry and 128 of them at most; the first one that
/// exists is the form, also when it turns out to be unreadable. Only a regular file can be read:
/// a directory, a FIFO or a device is an error.
///
/// The form file is text. Lengths are in 1/7200 inch; '#' starts a comment; words are separated by
/// blanks and tabs, keywords are in lower case:
///
///     # invoice
///     print 4 79200     first line 4, form length 11 inches
///     lpi 1200 60       60 lines, 6 to the inch
///     lpi 900 8         8 lines, 8 to the inch
///
/// - `lpi <pitch> <count>`, any number of times, anywhere: the next lines of the form. The pitch is
///   2400, 1800, 1200, 900 or 600; the count is 0 to 255. No `lpi` lines (or none that adds a line)
///   means 6 lines to the inch all over the form.
/// - `print <first line> [<length>]`, at most once, anywhere. The first line is 1 to 255; without
///   a `print` line it is 4. The length is cut to 144000 (20 inches), or for kShortFormStream to
///   100800 (14 inches), and raised to 7200 (1 inch), or for kShortFormStream to 25200 (3.5
///   inches); without it the form is 11 inches long. One that is not a number of whole inches is
///   rounded for the printer: up to the inch, or down to the half inch when the environment file
///   says so.
/// - What stands behind the third word is ignored.
/// - The lines may not be taller than the form (unrounded), and there must be at least as many
///   as the first line says.
/// - A carriage return belongs to the word in front of it (so a file with DOS line ends is refused,
///   its blank lines too). A NUL ends the line. A line of more than 511 bytes is read as several
///   lines: the rest of a long comment is no comment.
///
/// @param name         a form name or a path, up to kMaxNameBytes.
/// @param table        set to an empty form with the defaults above, then filled; partly filled
///                     after a failure. `cur_line` is left alone.
/// @param directories  where names are looked up.
/// @return ST_OK; ST_FAILED on every failure, after "FCB data error" on standard error.
Status fcb_load(const FormReading& reading, const char* name, FcbTable& table,
                const ResourceDirectories& directories);

/// Reads the form at a path as fcb_load does, without a message, and tells what was seen.
/// @param report  set to what was found; its fault is FcbWrong::nothing exactly on success.
/// @return ST_OK, or 1 on every failure.
Status fcb_read(const FormReading& reading, const char* path, FcbTable& table, FcbReport& report);

}  // namespace rlx
