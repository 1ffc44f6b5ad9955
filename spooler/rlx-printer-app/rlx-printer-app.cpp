// Serves RLX printers as IPP printers: the program.
#include <pappl/pappl.h>

#include <cstdio>
#include <string_view>
#include <vector>

#include "rlx-printer-app/print_document.h"
#include "rlx-printer-app/printer_device.h"
#include "rlx-printer-app/printer_kinds.h"
#include "rlx-printer-app/system.h"

namespace {

namespace app = rlx::printer_app;

std::vector<pappl_pr_driver_t> make_drivers() {
  std::vector<pappl_pr_driver_t> drivers;
  for (const app::PrinterKind& kind : app::printer_kinds()) {
    drivers.push_back({kind.name, kind.description, nullptr, nullptr});
  }
  return drivers;
}

}  // namespace

int main(int argc, char** argv) {
  // PAPPL would say the number alone.
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    return std::puts("rlx-printer-app " RLX_VERSION) < 0 ? 1 : 0;
  }
  app::add_devices();
  static app::Application application;
  application.serves = argc > 1 && std::string_view(argv[1]) == "server";
  std::vector<pappl_pr_driver_t> drivers = make_drivers();
  return papplMainloop(argc, argv, RLX_VERSION, nullptr, static_cast<int>(drivers.size()),
                       drivers.data(), nullptr, app::describe_printer, nullptr, nullptr,
                       app::make_system, nullptr, &application);
}
