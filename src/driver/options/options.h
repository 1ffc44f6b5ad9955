#pragma once

#include "driver/options/capabilities.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/messages.h"

namespace rlx {

/// What the options fill. All of it must be at its defaults.
struct OptionTargets {
  Messages& messages;
  CommandLine& command_line;
  SettingsRecord& settings;
  JobState& job;
  Capabilities& printer;
  ResourceDirectories& directories;
};

/// Reads the command line. Texts of the settings point into `argv`, which must outlive them.
///
/// The options are walked twice. The first pass acts on the mode letters (A B C D E G N P Q R S f)
/// alone, the second on the letters that bring values, so values meet the final modes whatever the
/// order on the command line; of two modes that touch a setting, the later one wins. M, b, j, k
/// and m are accepted for the spooler's sake and do nothing.
///
/// Numbers are the decimal value of the argument: leading blanks and a sign are allowed, what
/// follows the digits is ignored, no digits are 0. -c, a divisor, must be 1 or more. A name of -n
/// and a piece of a -p list have 255 bytes at most; -F, -J and -G may be of any length.
///
/// After the directories of -p (split at ":", empty pieces skipped, at most 128 in all; what comes
/// after them is not looked at) stands the default resource directory.
///
/// @return ST_OK, or ST_FAILED with the message printed. An unknown letter or a missing argument is
/// reported by getopt, once by each pass; the second one ends there.
Status parse_options(const OptionTargets& to, int argc, char** argv);

}  // namespace rlx
