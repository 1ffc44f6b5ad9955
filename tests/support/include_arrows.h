#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace rlx::testing {

/// The files that each file includes with quotes. Names are relative to src/ ("job/status.h").
using Includes = std::map<std::string, std::set<std::string>>;

/// The folders that each folder may include, besides itself.
using AllowedArrows = std::map<std::string, std::set<std::string>>;

/// Who may include whom in src/.
const AllowedArrows& allowed_arrows();

/// Who may include whom in tools/, and what of src/ they may include.
const AllowedArrows& allowed_arrows_of_tools();

/// Who may include whom in spooler/, and what of tools/ they may include: the reader of jobs.
const AllowedArrows& allowed_arrows_of_spooler();

/// The names in the #include "..." lines of a source.
std::set<std::string> quoted_includes(std::string_view source);

/// The includes of all headers and sources below a folder.
Includes read_includes(const std::string& root);

/// What is wrong, one sentence each: a file of an unknown folder, an include of a file that is not
/// there, an arrow that is not allowed, a circle between files or between folders. Empty when all
/// is well.
std::vector<std::string> include_faults(const Includes& includes, const AllowedArrows& allowed);

}  // namespace rlx::testing
