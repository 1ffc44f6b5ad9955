#include "spooler/unit/spooler_rig.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "support/descriptors.h"

namespace rlx::testing {

namespace fs = std::filesystem;

IgnoredBrokenPipe::IgnoredBrokenPipe() : before_(std::signal(SIGPIPE, SIG_IGN)) {}

IgnoredBrokenPipe::~IgnoredBrokenPipe() {
  std::signal(SIGPIPE, before_);
}

std::span<const std::uint8_t> as_bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

void put_bytes(int descriptor, std::string_view text) {
  EXPECT_EQ(spooler::write_all(descriptor, as_bytes(text)), 0);
}

spooler::Descriptor memory_file(std::string_view text) {
  spooler::Descriptor file(memfd_create("job", MFD_CLOEXEC));
  EXPECT_TRUE(file.is_open());
  put_bytes(file.number(), text);
  EXPECT_EQ(lseek(file.number(), 0, SEEK_SET), 0);
  return file;
}

namespace {

std::string read_to_end(int descriptor) {
  std::string text;
  std::array<std::uint8_t, 65536> room{};
  for (std::size_t count = spooler::read_some(descriptor, room, "test"); count > 0;
       count = spooler::read_some(descriptor, room, "test")) {
    text.append(room.begin(), room.begin() + static_cast<std::ptrdiff_t>(count));
  }
  return text;
}

}  // namespace

std::string whole_file(int descriptor) {
  EXPECT_EQ(lseek(descriptor, 0, SEEK_SET), 0);
  return read_to_end(descriptor);
}

PipeReader::PipeReader() : pipe_(spooler::make_pipe()) {
  thread_ = std::thread([this] { text_ = read_to_end(pipe_.read_end.number()); });
}

PipeReader::~PipeReader() {
  text();
}

std::string PipeReader::text() {
  pipe_.write_end.reset();
  if (thread_.joinable()) {
    thread_.join();
  }
  return text_;
}

std::size_t PortionSource::read(std::span<std::uint8_t> room) {
  const std::size_t count = std::min({room.size(), portion_, text_.size() - next_});
  std::copy_n(text_.begin() + static_cast<std::ptrdiff_t>(next_), count, room.begin());
  next_ += count;
  return count;
}

std::string read_all(spooler::JobSource& source, std::size_t room) {
  std::string text;
  std::vector<std::uint8_t> portion(room);
  for (std::size_t count = source.read(portion); count > 0; count = source.read(portion)) {
    EXPECT_LE(count, room);
    text.append(portion.begin(), portion.begin() + static_cast<std::ptrdiff_t>(count));
  }
  return text;
}

std::string write_script(const std::string& name, const std::string& lines) {
  write_file(name, "#!/bin/sh\n" + lines);
  fs::permissions(name, fs::perms::owner_all);
  return fs::absolute(name);
}

std::string link_filter() {
  if (!fs::exists("zqeuctorlx")) {
    fs::create_symlink(RLX_SANDBOXED_PROGRAM, "zqeuctorlx");
  }
  return fs::absolute("zqeuctorlx");
}

std::size_t open_descriptors() {
  const auto entries = fs::directory_iterator("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

bool comes_true(const std::function<bool()>& holds) {
  using namespace std::chrono_literals;
  for (int i = 0; i < 1000; ++i) {
    if (holds()) {
      return true;
    }
    std::this_thread::sleep_for(10ms);
  }
  return false;
}

bool is_running(int process) {
  std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
  std::string line;
  std::getline(stat, line);
  const std::size_t name_end = line.rfind(')');
  return name_end != std::string::npos && line.substr(name_end).find(") Z") != 0;
}

}  // namespace rlx::testing
