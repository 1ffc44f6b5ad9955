#include "proofs/proof_files.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace rlx::proof {

namespace {

std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The sizes of a PDF's pages, as pdfinfo tells them.
std::vector<FoundPage> page_sizes(const std::string& info) {
  const std::regex line(R"(Page +\d+ size: +([0-9.]+) x ([0-9.]+) pts)");
  std::vector<FoundPage> pages;
  for (std::sregex_iterator at(info.begin(), info.end(), line), end; at != end; ++at) {
    pages.push_back({std::stod((*at)[1]), std::stod((*at)[2]), {}});
  }
  return pages;
}

}  // namespace

const FoundWord& FoundPage::word(const std::string& text) const {
  const auto found = std::find_if(words.begin(), words.end(),
                                  [&](const FoundWord& word) { return word.text == text; });
  if (found == words.end()) {
    throw std::out_of_range("no word " + text);
  }
  return *found;
}

bool FoundPage::has(const std::string& text) const {
  return std::any_of(words.begin(), words.end(),
                     [&](const FoundWord& word) { return word.text == text; });
}

ProofFolder::ProofFolder() {
  std::string name = std::filesystem::temp_directory_path() / "proof.XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("no temporary folder");
  }
  path_ = name;
}

ProofFolder::~ProofFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void ProofFolder::write(const std::string& name, const std::string& bytes) const {
  std::filesystem::create_directories((path_ / name).parent_path());
  std::ofstream(path_ / name, std::ios::binary) << bytes;
}

std::string ProofFolder::read(const std::string& name) const {
  return contents(path_ / name);
}

Ending ProofFolder::shell(const std::string& command) const {
  const std::string all =
      "cd '" + path_.string() + "' && { " + command + "\n} >.output 2>.messages";
  const int status = std::system(all.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(".output"), read(".messages")};
}

Ending ProofFolder::run(const std::string& arguments) const {
  return shell(RLX_PROOF_PROGRAM " " + arguments);
}

Ending ProofFolder::check(const std::string& file) const {
  return shell(RLX_DUMP_PROGRAM " --check '" + file + "'");
}

std::vector<FoundPage> ProofFolder::pages(const std::string& pdf) const {
  std::vector<FoundPage> pages = page_sizes(shell("pdfinfo -f 1 -l 9999 '" + pdf + "'").output);
  const std::string boxes = shell("pdftotext -bbox '" + pdf + "' -").output;
  const std::regex word(
      R"x(xMin="([0-9.]+)" yMin="([0-9.]+)" xMax="([0-9.]+)" yMax="([0-9.]+)">(.*)</word>)x");
  std::istringstream lines(boxes);
  std::size_t page = 0;
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (line.find("<page ") != std::string::npos) {
      ++page;
    } else if (std::regex_search(line, match, word)) {
      pages.at(page - 1).words.push_back({match[5], std::stod(match[1]), std::stod(match[3]),
                                          std::stod(match[2]), std::stod(match[4])});
    }
  }
  return pages;
}

}  // namespace rlx::proof
