#include "support/descriptors.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace rlx::testing {

namespace {

/// A file in memory that holds the bytes, its offset at the start.
int memory_file(std::string_view bytes) {
  const int descriptor = memfd_create("test", 0);
  EXPECT_GE(descriptor, 0);
  EXPECT_EQ(write(descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  lseek(descriptor, 0, SEEK_SET);
  return descriptor;
}

}  // namespace

CaptureDescriptor::CaptureDescriptor(int descriptor)
    : descriptor_(descriptor), saved_(dup(descriptor)), memory_(memory_file("")) {
  std::fflush(nullptr);
  dup2(memory_, descriptor_);
}

CaptureDescriptor::~CaptureDescriptor() {
  std::fflush(nullptr);
  dup2(saved_, descriptor_);
  close(saved_);
  close(memory_);
}

std::string CaptureDescriptor::text() const {
  std::fflush(nullptr);
  std::string caught(static_cast<std::size_t>(lseek(memory_, 0, SEEK_END)), '\0');
  EXPECT_EQ(pread(memory_, caught.data(), caught.size(), 0), static_cast<ssize_t>(caught.size()));
  return caught;
}

StandardInput::StandardInput(std::string_view bytes, bool as_pipe) : saved_(dup(STDIN_FILENO)) {
  if (as_pipe) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(ends[1]);
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
  } else {
    const int file = memory_file(bytes);
    dup2(file, STDIN_FILENO);
    close(file);
  }
}

StandardInput::~StandardInput() {
  dup2(saved_, STDIN_FILENO);
  close(saved_);
}

ScratchDirectory::ScratchDirectory() : previous_(std::filesystem::current_path()) {
  std::string pattern = std::filesystem::temp_directory_path() / "filter-test-XXXXXX";
  EXPECT_NE(mkdtemp(pattern.data()), nullptr);
  path_ = pattern;
  std::filesystem::current_path(path_);
}

ScratchDirectory::~ScratchDirectory() {
  std::filesystem::current_path(previous_);
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void write_file(const std::string& path, std::string_view bytes) {
  const std::filesystem::path file(path);
  if (file.has_parent_path()) {
    std::filesystem::create_directories(file.parent_path());
  }
  std::ofstream(file, std::ios::binary) << bytes;
}

std::string read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  std::ostringstream text;
  text << file.rdbuf();
  return std::move(text).str();
}

}  // namespace rlx::testing
