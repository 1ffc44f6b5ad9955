#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>

namespace rlx::testing {

/// Makes a socket file.
inline void make_socket(const std::string& path) {
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof address.sun_path);
  std::memcpy(address.sun_path, path.c_str(), path.size());
  EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  close(descriptor);
}

/// What can stand where a file is expected and is none that could be read to its end.
struct OddFile {
  const char* kind;
  std::function<void(const std::string& path)> make;
};

inline const std::array<OddFile, 7>& odd_files() {
  const auto link = [](const char* target) {
    return [target](const std::string& path) { std::filesystem::create_symlink(target, path); };
  };
  static const std::array<OddFile, 7> kinds{{
      {"FIFO", [](const std::string& path) { EXPECT_EQ(mkfifo(path.c_str(), 0600), 0); }},
      {"socket", make_socket},
      {"directory", [](const std::string& path) { std::filesystem::create_directory(path); }},
      {"link to /dev/zero", link("/dev/zero")},
      {"link to /dev/full", link("/dev/full")},
      {"link to /dev/null", link("/dev/null")},
      {"link to a terminal", link("/dev/ptmx")},
  }};
  return kinds;
}

/// Calls `look` once for each kind of odd file, with the file at `path` meanwhile.
inline void for_each_odd_file(const std::string& path, const std::function<void()>& look) {
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  if (!folder.empty()) {
    std::filesystem::create_directories(folder);
  }
  for (const OddFile& file : odd_files()) {
    SCOPED_TRACE(file.kind);
    file.make(path);
    look();
    std::filesystem::remove_all(path);
  }
}

}  // namespace rlx::testing
