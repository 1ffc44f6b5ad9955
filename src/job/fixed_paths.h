#pragma once

namespace rlx::fixed_paths {

// Where the filter looks for its files. The values are in fixed_paths.cpp and nowhere else: a
// program for tests links another version of that one file, which looks under a sandbox.

/// Searched for forms after the directories of -p ("/fcbe/" and the form name follow).
extern const char* const kDefaultResourceDirectory;
/// Site settings, in sections.
extern const char* const kEnvironmentFile;
/// Range of user-defined characters of the G1 code set.
extern const char* const kG1GaijiFile;
/// Log of values that lost bits.
extern const char* const kLostBitLog;
/// Font access library.
extern const char* const kFontLibrary;

}  // namespace rlx::fixed_paths
