#pragma once

#include <array>
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

}  // namespace rlx
