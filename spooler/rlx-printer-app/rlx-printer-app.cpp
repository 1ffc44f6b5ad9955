// Serves RLX printers as IPP printers: the program.
#include <pappl/pappl.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "rlx-printer-app/folder_lock.h"
#include "rlx-printer-app/print_document.h"
#include "rlx-printer-app/printer_device.h"
#include "rlx-printer-app/printer_kinds.h"
#include "rlx-printer-app/server_address.h"
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

/// True for a sub-command that asks this user's server, and starts one when there is none.
bool would_start_a_server(const app::ServerAddress& address) {
  const std::vector<std::string>& words = address.words;
  const auto has = [&words](const char* word) {
    return std::find(words.begin(), words.end(), word) != words.end();
  };
  return words.size() > 1 && address.authority.empty() && !has("-u") && !has("--help") &&
         words[1] != "server" && words[1] != "devices" && words[1] != "drivers";
}

}  // namespace

int main(int argc, char** argv) try {
  // PAPPL would say the number alone.
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    return std::puts("rlx-printer-app " RLX_VERSION) < 0 ? 1 : 0;
  }
  app::ServerAddress address = app::read_server_address({argv, argv + argc});
  if (!address.at_server.empty()) {
    return run_at_server(address);
  }
  if (would_start_a_server(address) && app::is_anothers(app::usual_state_folder())) {
    throw std::runtime_error("the service runs here; say -h localhost:8631, or its other port");
  }
  if (!has_printer(address)) {
    return 1;
  }
  std::vector<char*> words;
  for (std::string& word : address.words) {
    words.push_back(word.data());
  }
  words.push_back(nullptr);
  app::add_devices();
  static app::Application application;
  application.serves = argc > 1 && std::string_view(argv[1]) == "server";
  std::vector<pappl_pr_driver_t> drivers = make_drivers();
  return papplMainloop(static_cast<int>(address.words.size()), words.data(), RLX_VERSION, nullptr,
                       static_cast<int>(drivers.size()), drivers.data(), nullptr,
                       app::describe_printer, nullptr, nullptr, app::make_system, nullptr,
                       &application);
} catch (const std::exception& error) {
  std::fprintf(stderr, "rlx-printer-app: %s\n", error.what());
  return 1;
}
