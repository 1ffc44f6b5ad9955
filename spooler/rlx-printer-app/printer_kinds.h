#pragma once

#include <string_view>

#include <array>
#include <span>

#include "mapping/filter_arguments.h"

namespace rlx::printer_app {

/// A kind of printer, which PAPPL calls a driver.
struct PrinterKind {
  const char* name;         ///< as in `rlx-printer-app add -m NAME`
  const char* description;  ///< for people
  unsigned emulation_mode;
  const char* capabilities;        ///< for the filter, as in QueueSettings
  std::array<int, 2> resolutions;  ///< dots per inch; the first is the default, 0 is none
};

/// All kinds: 240 and 400 dots per inch, and the other emulation modes.
std::span<const PrinterKind> printer_kinds();

/// @return null for a name that is none.
const PrinterKind* find_printer_kind(std::string_view name);

/// The filter's settings for a printer of a kind.
/// @param resolution  one of the kind's, in dots per inch.
spooler::QueueSettings queue_settings(const PrinterKind& kind, int resolution,
                                      const std::string& form_directory);

}  // namespace rlx::printer_app
