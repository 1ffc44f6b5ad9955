#pragma once

#include "job/status.h"

namespace rlx {

/// Results of tqdxgetenv.
inline constexpr Status kNoEnvironmentFile{-1};
inline constexpr Status kNoCommonSection{-2};

/// What the filter knows of the site's environment file.
struct EnvironmentFile {
  /// The file has been read, or the attempt has failed; it is never looked at again.
  int loaded = 0;
  /// 1: form lengths are rounded down to the half inch. 0: up to the whole inch.
  int fcbprint_halfinch = 0;
};

/// tqdxgetenv: reads the environment file (fixed_paths::kEnvironmentFile), once, and takes from it
/// `fcbprint_halfinch`: the key FCBPRINT of the section *COMMON. Prints nothing.
///
///     *COMMON              a section header; all that begins *COMMON counts, *COMMONS too
///     FCBPRINT : 2         # a comment, to the end of the line
///     *OTHER               any other header ends the section
///
/// - Only the printable characters '!' to '~' of a line count. Blanks and all other bytes are
///   dropped wherever they stand, inside words too.
/// - A line of more than 512 such characters in front of its '#' is dropped, a header as well.
/// - Key and value are separated by the first ':', at most 255 characters of each are kept. A line
///   without a key or without a value changes nothing. Keys are case-sensitive.
/// - A value that begins with '2' is 1, every other is 0; the last line in the file wins.
/// - The file is text, read in pieces of up to 511 bytes. A NUL ends its piece: the bytes from it
///   to the piece's end are lost, a line end among them too (the next piece continues the line).
///
/// @return ST_OK when the file held a *COMMON section, or when it had been read before;
/// kNoEnvironmentFile when it cannot be opened or is no regular file; kNoCommonSection when it
/// holds no *COMMON section.
Status tqdxgetenv(EnvironmentFile& environment);

/// The same for the file at a path, whatever was read before.
/// @return as tqdxgetenv.
Status read_environment_file(const char* path, EnvironmentFile& environment);

}  // namespace rlx
