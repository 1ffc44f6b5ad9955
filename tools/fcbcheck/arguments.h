#pragma once

#include <optional>
#include <string>
#include <vector>

#include "job/settings.h"

namespace rlx::fcbcheck {

enum class Action {
  check,
  help,
  version,
  wrong_use,  ///< its message has been printed
};

/// The command line.
struct Arguments {
  Action action = Action::check;
  std::vector<std::string> files;  ///< one at least; "-" is standard input
  bool show = false;
  bool explain = false;
  std::optional<std::string> svg;
  std::optional<std::string> environment;
  int stream_variant = kPlainStream;  ///< a StreamVariant
};

/// Reads the command line. Of -E, -N and -R the last one counts, as with the filter; the first of
/// --help and --version ends the reading.
Arguments parse_arguments(int argc, char** argv);

/// What --help prints.
extern const char* const kHelp;

}  // namespace rlx::fcbcheck
