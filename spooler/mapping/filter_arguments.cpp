#include "mapping/filter_arguments.h"

#include <algorithm>
#include <array>

#include "mapping/words.h"

namespace rlx::spooler {

namespace {

struct Mode {
  unsigned number;
  std::string_view option;  ///< empty when the filter is in this mode without one
};

constexpr std::array<Mode, 6> kModes{
    {{1, ""}, {2, "-B"}, {3, "-E"}, {4, "-C"}, {6, "-Q"}, {7, "-R"}}};

constexpr unsigned kHighResolution = 400;
constexpr unsigned kHighResolutionMode = 2;

const Mode* find_mode(unsigned number) {
  const auto* const found = std::find_if(
      kModes.begin(), kModes.end(), [number](const Mode& mode) { return mode.number == number; });
  return found == kModes.end() ? nullptr : found;
}

/// What the printer can do, by the filter's own list.
bool lists_resolution(const QueueSettings& queue) {
  const auto tokens = divide(queue.capabilities, '!');
  return std::find(tokens.begin(), tokens.end(), "D" + std::to_string(queue.resolution)) !=
         tokens.end();
}

/// 400 dots per inch that no list names are a mode of the filter.
bool needs_high_resolution_mode(const QueueSettings& queue) {
  return queue.resolution == kHighResolution && !lists_resolution(queue);
}

bool can_have_resolution(const QueueSettings& queue) {
  constexpr unsigned kUsualResolution = 240;
  if (queue.resolution == 0 || lists_resolution(queue)) {
    return true;
  }
  if (queue.capabilities.find('D') != std::string::npos) {
    return false;  // the filter goes by the list
  }
  if (needs_high_resolution_mode(queue)) {
    return queue.emulation_mode == 1 || queue.emulation_mode == kHighResolutionMode;
  }
  return queue.resolution == kUsualResolution && queue.emulation_mode != kHighResolutionMode;
}

bool is_form_directory(const std::string& directory) {
  constexpr std::size_t kMostBytes = 255;
  return !directory.empty() && directory.front() == '/' && directory.size() <= kMostBytes &&
         directory.find(':') == std::string::npos;
}

std::string joined(const std::vector<std::string>& texts, char separator) {
  std::string all;
  for (const std::string& text : texts) {
    all += (all.empty() ? "" : std::string(1, separator)) + text;
  }
  return all;
}

void add(std::vector<std::string>& arguments, const char* option, const std::string& value) {
  if (!value.empty()) {
    arguments.insert(arguments.end(), {option, value});
  }
}

/// A number that is 0 where nothing was asked for.
std::string text_of_number(unsigned number) {
  return number == 0 ? std::string() : std::to_string(number);
}

std::string text_of(UndefinedCharacters characters) {
  switch (characters) {
    case UndefinedCharacters::space:
      return "space";
    case UndefinedCharacters::ubar:
      return "ubar";
    case UndefinedCharacters::unset:
      break;
  }
  return {};
}

void add_modes(std::vector<std::string>& arguments, const QueueSettings& queue,
               const JobSettings& job) {
  const unsigned mode =
      needs_high_resolution_mode(queue) ? kHighResolutionMode : queue.emulation_mode;
  if (mode != 1) {
    arguments.emplace_back(find_mode(mode)->option);
  }
  for (const char flag : queue.filter_flags) {
    arguments.push_back({'-', flag});
  }
  if (job.extended_parameters) {
    arguments.emplace_back("-P");
  }
}

}  // namespace

std::vector<OptionFault> check_queue(const QueueSettings& queue) {
  std::vector<OptionFault> faults;
  if (find_mode(queue.emulation_mode) == nullptr) {
    faults.push_back(
        {"rlxEmulationMode", std::to_string(queue.emulation_mode), "1, 2, 3, 4, 6 or 7"});
  }
  if (!can_have_resolution(queue)) {
    faults.push_back(
        {"rlxResolution", std::to_string(queue.resolution),
         "one of rlxCapabilities' (D240, D400); without such a list 240, or 400 in the "
         "emulation modes 1 and 2"});
  }
  if (queue.filter_flags.find_first_not_of(QueueSettings::kFilterFlags) != std::string::npos) {
    faults.push_back({"rlxFilterFlags", queue.filter_flags, "letters of A, D, f and q"});
  }
  for (const std::string& directory : queue.form_directories) {
    if (!is_form_directory(directory)) {
      faults.push_back({"rlxFormDirectories", directory, "absolute paths, without a colon in one"});
    }
  }
  return faults;
}

std::vector<std::string> filter_arguments(const QueueSettings& queue, const JobSettings& job) {
  std::vector<std::string> arguments;
  add_modes(arguments, queue, job);
  add(arguments, "-G", queue.capabilities);
  if (lists_resolution(queue)) {
    add(arguments, "-e", text_of_number(queue.resolution));
  }
  add(arguments, "-L", text_of_number(job.lines_per_page));
  add(arguments, "-c", text_of_number(job.characters_per_inch));
  add(arguments, "-l", text_of_number(job.lines_per_inch));
  add(arguments, "-r", text_of(job.undefined_characters));
  add(arguments, "-p", joined(queue.form_directories, ':'));
  add(arguments, "-n", job.form);
  return arguments;
}

}  // namespace rlx::spooler
