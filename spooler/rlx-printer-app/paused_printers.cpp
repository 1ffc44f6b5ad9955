// Follows PAPPL's functions of the names below, in whose place the dynamic linker puts these: a
// program's own functions come before those of libraries. PAPPL tells of no pause in a way in which
// it differs from a printer that is away.
#include "rlx-printer-app/paused_printers.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pappl/pappl.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "running/descriptor.h"

namespace rlx::printer_app {

namespace {

namespace fs = std::filesystem;

std::string path_of(const std::string& folder, int printer_id, PausedPrinters::Kind kind) {
  return folder + '/' + std::to_string(printer_id) +
         (kind == PausedPrinters::Kind::paused ? ".paused" : ".holding");
}

}  // namespace

void PausedPrinters::use(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) {
    throw std::runtime_error("the folder " + folder + " cannot be made: " + error.message());
  }
  const std::lock_guard lock(changing_);
  folder_ = folder;
}

void PausedPrinters::note(int printer_id, Kind kind, bool is_so) {
  const std::lock_guard lock(changing_);
  if (folder_.empty()) {
    return;
  }
  const std::string path = path_of(folder_, printer_id, kind);
  if (is_so) {
    const spooler::Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  } else {
    unlink(path.c_str());
  }
}

bool PausedPrinters::has(int printer_id, Kind kind) {
  const std::lock_guard lock(changing_);
  return !folder_.empty() && access(path_of(folder_, printer_id, kind).c_str(), F_OK) == 0;
}

PausedPrinters& paused_printers() {
  static PausedPrinters paused;
  return paused;
}

}  // namespace rlx::printer_app

namespace {

using Kind = rlx::printer_app::PausedPrinters::Kind;

/// PAPPL's function of a name.
template <typename Function>
Function* pappls(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void note(pappl_printer_t* printer, Kind kind, bool is_so) {
  if (printer != nullptr) {
    rlx::printer_app::paused_printers().note(papplPrinterGetID(printer), kind, is_so);
  }
}

}  // namespace

extern "C" {

void papplPrinterPause(pappl_printer_t* printer) {
  static auto* const pause = pappls<void(pappl_printer_t*)>("papplPrinterPause");
  note(printer, Kind::paused, true);
  pause(printer);
}

void papplPrinterResume(pappl_printer_t* printer) {
  static auto* const resume = pappls<void(pappl_printer_t*)>("papplPrinterResume");
  note(printer, Kind::paused, false);
  resume(printer);
}

bool papplPrinterHoldNewJobs(pappl_printer_t* printer) {
  static auto* const hold = pappls<bool(pappl_printer_t*)>("papplPrinterHoldNewJobs");
  note(printer, Kind::holding, true);
  return hold(printer);
}

bool papplPrinterReleaseHeldNewJobs(pappl_printer_t* printer, const char* username) {
  static auto* const release =
      pappls<bool(pappl_printer_t*, const char*)>("papplPrinterReleaseHeldNewJobs");
  note(printer, Kind::holding, false);
  return release(printer, username);
}
}
