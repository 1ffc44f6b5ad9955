#include "rlx-printer-app/printer_kinds.h"

#include <algorithm>

namespace rlx::printer_app {

namespace {

constexpr std::array<PrinterKind, 7> kKinds{{
    {"rlx-240", "RLX page printer, 240 dpi", 1, "", {240, 0}},
    {"rlx-400", "RLX page printer, 400 dpi", 2, "", {400, 0}},
    {"rlx-240-400", "RLX page printer, 240 and 400 dpi", 1, "D240!D400", {240, 400}},
    {"rlx-form-lengths", "RLX page printer, form lengths (mode 3)", 3, "", {240, 0}},
    {"rlx-extended", "RLX page printer, extended parameters (mode 4)", 4, "", {240, 0}},
    {"rlx-mode-6", "RLX page printer, mode 6", 6, "", {240, 0}},
    {"rlx-mode-7", "RLX page printer, form lengths to 14 inches (mode 7)", 7, "", {240, 0}},
}};

}  // namespace

std::span<const PrinterKind> printer_kinds() {
  return kKinds;
}

const PrinterKind* find_printer_kind(std::string_view name) {
  const auto* const found = std::find_if(
      kKinds.begin(), kKinds.end(), [name](const PrinterKind& kind) { return name == kind.name; });
  return found == kKinds.end() ? nullptr : found;
}

spooler::QueueSettings queue_settings(const PrinterKind& kind, int resolution,
                                      const std::string& form_directory) {
  spooler::QueueSettings queue;
  queue.emulation_mode = kind.emulation_mode;
  queue.capabilities = kind.capabilities;
  queue.resolution = kind.resolutions[1] == 0 ? 0 : static_cast<unsigned>(resolution);
  if (!form_directory.empty()) {
    queue.form_directories.push_back(form_directory);
  }
  return queue;
}

}  // namespace rlx::printer_app
