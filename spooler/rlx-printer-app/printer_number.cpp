// Mends PAPPL's function of this name, in whose place the dynamic linker puts it: a program's own
// functions come before those of libraries.
//
// PAPPL 1.3.1 tells the number of a new printer as 0 until the server's next start, so that
// sub-commands cannot delete it, nor make it the default. A printer that gets its number from
// whoever creates it has it at once.
#include <dlfcn.h>
#include <pappl/pappl.h>

#include <algorithm>
#include <mutex>

extern "C" pappl_printer_t* papplPrinterCreate(pappl_system_t* system, int printer_id,
                                               const char* printer_name, const char* driver_name,
                                               const char* device_id, const char* device_uri) {
  using Create =
      pappl_printer_t*(pappl_system_t*, int, const char*, const char*, const char*, const char*);
  static auto* const create = reinterpret_cast<Create*>(dlsym(RTLD_NEXT, "papplPrinterCreate"));
  static std::mutex creating;
  static int next = 1;
  const std::lock_guard lock(creating);
  if (printer_id == 0) {
    printer_id = std::max(next, papplSystemGetNextPrinterID(system));
  }
  pappl_printer_t* const printer =
      create(system, printer_id, printer_name, driver_name, device_id, device_uri);
  if (printer != nullptr) {
    next = std::max(next, papplPrinterGetID(printer) + 1);
  }
  return printer;
}
