#include "faults/hostile_files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/odd_files.h"

namespace rlx::testing {

namespace {

namespace fs = std::filesystem;

/// Somebody has it open, and nothing to say. It stays open until the test program ends.
void make_open_fifo(const std::string& path) {
  EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_GE(open(path.c_str(), O_RDWR | O_CLOEXEC), 0);
}

void make_link_to_fifo(const std::string& path) {
  EXPECT_EQ(mkfifo("fifo", 0600), 0);
  fs::create_symlink(fs::absolute("fifo"), path);
}

void make_link_to_directory(const std::string& path) {
  fs::create_symlink("/", path);
}

void make_link_to_itself(const std::string& path) {
  fs::create_symlink(fs::absolute(path), path);
}

void make_link_to_nothing(const std::string& path) {
  fs::create_symlink("nothing", path);
}

std::vector<HostileFile> make_list() {
  std::vector<HostileFile> all;
  for (const OddFile& file : odd_files()) {
    all.push_back({file.kind, file.make});
  }
  all.push_back({"FIFO that somebody has open", make_open_fifo});
  all.push_back({"link to a FIFO", make_link_to_fifo});
  all.push_back({"link to a directory", make_link_to_directory});
  all.push_back({"link to itself", make_link_to_itself});
  all.push_back({"link to nothing", make_link_to_nothing, true});
  return all;
}

}  // namespace

const std::vector<HostileFile>& hostile_files() {
  static const std::vector<HostileFile> all = make_list();
  return all;
}

}  // namespace rlx::testing
