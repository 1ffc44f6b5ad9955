#include "rlx-printer-app/web/form_store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "mapping/job_settings.h"
#include "mapping/words.h"
#include "rlx-printer-app/journal.h"
#include "rlx-printer-app/web/program_run.h"

namespace rlx::printer_app {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kReadableByAll = 0644;

}  // namespace

bool is_storable_name(const std::string& name) {
  return spooler::is_form_name(name) && name.size() <= spooler::JobSettings::kMostFormNameBytes;
}

std::vector<std::string> FormStore::names() const {
  std::vector<std::string> all;
  std::error_code error;
  for (const auto& file : fs::directory_iterator(folder_, error)) {
    const std::string name = file.path().filename();
    if (is_storable_name(name) && file.is_regular_file(error)) {
      all.push_back(name);
    }
  }
  std::sort(all.begin(), all.end());
  return all;
}

std::optional<std::string> FormStore::read(const std::string& name) const {
  std::error_code error;
  if (!is_storable_name(name) || !fs::is_regular_file(path_of(name), error)) {
    return std::nullopt;
  }
  std::ifstream file(path_of(name), std::ios::binary);
  std::string text(kMostBytes + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  const auto count = static_cast<std::size_t>(file.gcount());
  if (file.bad() || !file.eof() || count > kMostBytes) {
    return std::nullopt;
  }
  text.resize(count);
  return text;
}

std::string FormStore::write(const std::string& name, const std::string& text) const {
  if (!is_storable_name(name) || text.size() > kMostBytes) {
    return "a form has no such name or size";
  }
  const std::lock_guard lock(writing_);
  if (!put_in_place(path_of(name), text)) {
    return std::strerror(errno);
  }
  // Filters of other spoolers may run as somebody else.
  chmod(path_of(name).c_str(), kReadableByAll);
  return {};
}

std::string FormStore::remove(const std::string& name) const {
  if (!is_storable_name(name)) {
    return "a form has no such name";
  }
  return unlink(path_of(name).c_str()) == 0 ? std::string() : std::strerror(errno);
}

FormCheck FormStore::run(const std::vector<std::string>& arguments,
                         const std::string& input) const {
  if (checker_.empty()) {
    return {false, 0, "fcbcheck is not installed", {}};
  }
  ProgramResult result = run_program(checker_, arguments, input);
  if (result.timed_out || result.cut) {
    return {false, 0, "the form could not be checked in time", {}};
  }
  if (result.end.status != 0 || result.end.signal != 0) {
    return read_fault(result.messages);
  }
  return {true, 0, {}, std::move(result.output)};
}

FormCheck FormStore::check(const std::string& text) const {
  return run({"-"}, text);
}

FormCheck FormStore::draw(const std::string& name) const {
  return read(name) ? run({"--svg", "-", path_of(name)}, {}) : FormCheck();
}

FormCheck read_fault(const std::string& message) {
  constexpr std::string_view kName = "(standard input):";
  FormCheck check;
  check.words = message.substr(0, message.find('\n'));
  if (check.words.starts_with(kName)) {
    const std::string rest = check.words.substr(kName.size());
    const std::size_t colon = rest.find(": ");
    const auto line = spooler::whole_number(rest.substr(0, colon), 1000000);
    if (colon != std::string::npos && line) {
      check.line = *line;
      check.words = rest.substr(colon + 2);
    }
  }
  return check;
}

}  // namespace rlx::printer_app
