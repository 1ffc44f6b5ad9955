#pragma once

#include <mutex>
#include <set>
#include <string>

namespace rlx::printer_app {

/// The printers that operators have paused, and those that hold new jobs: PAPPL forgets both when
/// the server ends. Each is an empty file PRINTER.paused or PRINTER.holding in a folder.
class PausedPrinters {
 public:
  enum class Kind { paused, holding };

  /// Before that nothing is noted. @throws std::runtime_error when the folder cannot be made.
  void use(const std::string& folder);
  void note(int printer_id, Kind kind, bool is_so);
  bool has(int printer_id, Kind kind);

 private:
  std::mutex changing_;
  std::string folder_;
};

/// The process's own.
PausedPrinters& paused_printers();

}  // namespace rlx::printer_app
