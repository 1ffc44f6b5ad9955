#include "texttorlx/queue_of_ppd.h"

#include <cups/ppd.h>

#include <array>
#include <limits>
#include <memory>
#include <stdexcept>

#include "mapping/words.h"

namespace rlx::texttorlx {

namespace {

struct Close {
  void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};
using Ppd = std::unique_ptr<ppd_file_t, Close>;

Ppd open_ppd(const std::string& path) {
  Ppd ppd(ppdOpenFile(path.c_str()));
  if (ppd == nullptr) {
    int line = 0;
    const ppd_status_t status = ppdLastError(&line);
    // Line 0 stands for the file as a whole.
    throw std::runtime_error("the queue's PPD file " + path +
                             (line > 0 ? ", line " + std::to_string(line) : "") + ": " +
                             ppdErrorString(status));
  }
  return ppd;
}

std::string attribute(ppd_file_t* ppd, const char* name) {
  const ppd_attr_t* const found = ppdFindAttr(ppd, name, nullptr);
  return found == nullptr || found->value == nullptr ? std::string() : found->value;
}

/// @param number  keeps its value when the attribute is missing or empty.
void read_number(ppd_file_t* ppd, const char* name, unsigned& number, Queue& queue) {
  const std::string text = attribute(ppd, name);
  if (text.empty()) {
    return;
  }
  const auto value = spooler::whole_number(text, std::numeric_limits<unsigned>::max());
  if (value) {
    number = *value;
  } else {
    queue.faults.push_back({name, text, "a whole number"});
  }
}

/// PPD options whose names are those of job options.
constexpr std::array<const char*, 10> kOptions{
    "form",         "lines-per-page", "lpi",      "cpi",       "rlx-undefined",
    "rlx-extended", "rlx-charset",    "PageSize", "InputSlot", "Duplex"};

bool is_what_the_printer_does(const spooler::JobOption& option) {
  return (option.name == "PageSize" && option.value == "A4") ||
         (option.name == "InputSlot" && option.value == "Default");
}

void read_defaults(ppd_file_t* ppd, Queue& queue) {
  ppdMarkDefaults(ppd);
  for (const char* const name : kOptions) {
    const ppd_choice_t* const choice = ppdFindMarkedChoice(ppd, name);
    if (choice != nullptr) {
      spooler::JobOption option{name, choice->choice};
      if (!is_what_the_printer_does(option)) {
        queue.defaults.push_back(std::move(option));
      }
    }
  }
}

}  // namespace

Queue read_ppd(const std::string& path) {
  Queue queue;
  if (path.empty()) {
    return queue;
  }
  const Ppd ppd = open_ppd(path);
  read_number(ppd.get(), "rlxEmulationMode", queue.settings.emulation_mode, queue);
  read_number(ppd.get(), "rlxResolution", queue.settings.resolution, queue);
  queue.settings.capabilities = attribute(ppd.get(), "rlxCapabilities");
  queue.settings.filter_flags = attribute(ppd.get(), "rlxFilterFlags");
  queue.settings.form_directories =
      spooler::divide(attribute(ppd.get(), "rlxFormDirectories"), ':');
  read_defaults(ppd.get(), queue);
  return queue;
}

}  // namespace rlx::texttorlx
