#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace rlx::proof {

/// A word of a PDF, in points from the page's upper left corner.
struct FoundWord {
  std::string text;
  double left = 0;
  double right = 0;
  double top = 0;
  double bottom = 0;
};

struct FoundPage {
  double width = 0;
  double height = 0;
  std::vector<FoundWord> words;

  /// The first word of that text. @throws std::out_of_range when there is none.
  const FoundWord& word(const std::string& text) const;
  bool has(const std::string& text) const;
};

/// How a program ended.
struct Ending {
  int status = -1;
  std::string output;
  std::string messages;
};

/// A folder in which the program is run; it goes with the object.
class ProofFolder {
 public:
  ProofFolder();
  ~ProofFolder();
  ProofFolder(const ProofFolder&) = delete;
  ProofFolder& operator=(const ProofFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  void write(const std::string& name, const std::string& bytes) const;
  std::string read(const std::string& name) const;

  /// Runs the program in the folder. @param arguments  as a shell takes them.
  Ending run(const std::string& arguments) const;

  /// Runs rlxdump --check on a file there.
  Ending check(const std::string& file) const;

  /// The pages of a PDF there, by pdftotext and pdfinfo.
  std::vector<FoundPage> pages(const std::string& pdf) const;

 private:
  Ending shell(const std::string& command) const;

  std::filesystem::path path_;
};

}  // namespace rlx::proof
