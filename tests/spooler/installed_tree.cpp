#include "spooler/installed_tree.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "spooler/process.h"

namespace rlx::testing {

namespace {

namespace fs = std::filesystem;

/// The folder of the run. The place has to be one that other users may enter, too: cupsd runs
/// filters as lp.
class RunDirectory {
 public:
  RunDirectory() : path_((fs::temp_directory_path() / "rlx-spooler-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::runtime_error("no folder " + path_);
    }
    fs::permissions(path_, fs::perms(0755));
  }
  ~RunDirectory() {
    std::error_code error;
    fs::remove_all(path_, error);
  }
  RunDirectory(const RunDirectory&) = delete;
  RunDirectory& operator=(const RunDirectory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::string install() {
  std::string prefix = run_directory() + "/installed";
  const Outcome outcome =
      run_command({{RLX_CMAKE, "--install", RLX_BUILD_DIRECTORY, "--prefix", prefix}});
  if (outcome.status != 0) {
    throw std::runtime_error("cmake --install: " + outcome.output + outcome.messages);
  }
  return prefix;
}

}  // namespace

const std::string& run_directory() {
  static const RunDirectory directory;
  return directory.path();
}

const std::string& installed_tree() {
  static const std::string prefix = install();
  return prefix;
}

std::string make_directory(const std::string& name) {
  static int count = 0;
  std::string path = run_directory() + "/" + name + "-" + std::to_string(++count);
  fs::create_directory(path);
  fs::permissions(path, fs::perms(0755));
  return path;
}

}  // namespace rlx::testing
