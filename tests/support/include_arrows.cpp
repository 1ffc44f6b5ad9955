#include "support/include_arrows.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "support/descriptors.h"

namespace rlx::testing {

namespace {

std::string folder_of(const std::string& file) {
  return file.substr(0, file.rfind('/'));
}

/// Takes blanks and then the word off the front of the text; false when the word is not there.
bool skip_word(std::string_view& text, std::string_view word) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  if (!text.starts_with(word)) {
    return false;
  }
  text.remove_prefix(word.size());
  return true;
}

std::string join(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += (text.empty() ? "" : " -> ") + name;
  }
  return text;
}

/// Walks the arrows depth first and reports each circle that it closes.
class CircleSearch {
 public:
  explicit CircleSearch(const Includes& arrows) : arrows_(arrows) {}

  std::vector<std::string> circles() {
    for (const auto& [start, targets] : arrows_) {
      visit(start);
    }
    return circles_;
  }

 private:
  void visit(const std::string& name) {
    const auto open = std::ranges::find(path_, name);
    if (open != path_.end()) {
      std::vector<std::string> circle(open, path_.end());
      circle.push_back(name);
      circles_.push_back("circle: " + join(circle));
      return;
    }
    const auto targets = arrows_.find(name);
    if (targets == arrows_.end() || !visited_.insert(name).second) {
      return;
    }
    path_.push_back(name);
    for (const std::string& target : targets->second) {
      visit(target);
    }
    path_.pop_back();
  }

  const Includes& arrows_;
  std::set<std::string> visited_;
  std::vector<std::string> path_;
  std::vector<std::string> circles_;
};

Includes folder_arrows(const Includes& includes) {
  Includes folders;
  for (const auto& [file, targets] : includes) {
    for (const std::string& target : targets) {
      if (folder_of(file) != folder_of(target)) {
        folders[folder_of(file)].insert(folder_of(target));
      }
    }
  }
  return folders;
}

/// What is wrong with one include, or an empty text.
std::string arrow_fault(const std::string& file, const std::string& target,
                        const Includes& includes, const AllowedArrows& allowed) {
  if (!includes.contains(target)) {
    return file + " includes " + target + ", which is not there";
  }
  const auto rule = allowed.find(folder_of(file));
  if (folder_of(file) == folder_of(target) ||
      (rule != allowed.end() && rule->second.contains(folder_of(target)))) {
    return "";
  }
  return file + " may not include " + target;
}

}  // namespace

const AllowedArrows& allowed_arrows() {
  static const AllowedArrows arrows{
      {"driver",
       {"driver/options", "driver/loop", "driver/fast_road", "output", "input", "forms", "fonts",
        "support", "job"}},
      {"driver/options", {"support", "job"}},
      {"driver/loop", {"output", "input", "forms", "fonts", "support", "job"}},
      {"driver/fast_road", {"driver/loop", "output", "input", "forms", "support", "job"}},
      {"output", {"forms", "input", "support", "job"}},
      {"input", {"support", "job"}},
      {"forms", {"support", "job"}},
      {"fonts", {"support", "job"}},
      {"support", {"job"}},
      {"job", {}},
  };
  return arrows;
}

const AllowedArrows& allowed_arrows_of_tools() {
  static const AllowedArrows arrows{
      {"fcbcheck", {"forms", "support", "job"}},
      {"rlx_reader", {}},
      {"rlxdump", {"rlx_reader"}},
      {"rlxproof", {"rlx_reader"}},
      {"forms", {"support", "job"}},
      {"support", {"job"}},
      {"job", {}},
  };
  return arrows;
}

const AllowedArrows& allowed_arrows_of_spooler() {
  static const AllowedArrows arrows{
      {"mapping", {}},
      {"running", {"mapping", "rlx_reader"}},
      {"texttorlx", {"running", "mapping"}},
      {"rlx-lpd", {"running", "mapping", "rlx_reader"}},
      {"rlx-printer-app", {"running", "mapping", "rlx_reader"}},
      {"rlx_reader", {}},
  };
  return arrows;
}

std::set<std::string> quoted_includes(std::string_view source) {
  std::set<std::string> names;
  std::istringstream lines{std::string(source)};
  for (std::string line; std::getline(lines, line);) {
    std::string_view rest(line);
    if (skip_word(rest, "#") && skip_word(rest, "include") && skip_word(rest, "\"")) {
      names.emplace(rest.substr(0, rest.find('"')));
    }
  }
  return names;
}

Includes read_includes(const std::string& root) {
  Includes includes;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const std::filesystem::path& file = entry.path();
    if (file.extension() == ".h" || file.extension() == ".cpp") {
      includes[file.lexically_relative(root)] = quoted_includes(read_file(file));
    }
  }
  return includes;
}

std::vector<std::string> include_faults(const Includes& includes, const AllowedArrows& allowed) {
  std::vector<std::string> faults;
  for (const auto& [file, targets] : includes) {
    if (!allowed.contains(folder_of(file))) {
      faults.push_back(file + " is in no known folder");
    }
    for (const std::string& target : targets) {
      const std::string fault = arrow_fault(file, target, includes, allowed);
      if (!fault.empty()) {
        faults.push_back(fault);
      }
    }
  }
  for (const Includes& arrows : {includes, folder_arrows(includes)}) {
    const std::vector<std::string> circles = CircleSearch(arrows).circles();
    faults.insert(faults.end(), circles.begin(), circles.end());
  }
  return faults;
}

}  // namespace rlx::testing
