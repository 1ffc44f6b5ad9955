#include "support/text_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "support/descriptors.h"
#include "support/odd_files.h"

namespace rlx {
namespace {

using testing::ScratchDirectory;
using testing::write_file;

class TextFileTest : public ::testing::Test {
 protected:
  const ScratchDirectory scratch_;
};

/// All lines of a file, with room for `room` bytes each (the NUL among them).
std::vector<std::string> lines_of(const std::string& path, std::size_t room) {
  TextFile file(path.c_str());
  EXPECT_TRUE(file.is_open());
  std::vector<std::string> lines;
  std::vector<char> line(room);
  while (file.read_line(line)) {
    const auto nul = std::ranges::find(line, '\0');
    EXPECT_NE(nul, line.end());
    lines.emplace_back(line.begin(), nul);
  }
  EXPECT_FALSE(file.failed());
  return lines;
}

using Lines = std::vector<std::string>;

TEST_F(TextFileTest, GivesTheLinesWithTheirEnds) {
  write_file("file", "one\n\ntwo words\nlast");
  EXPECT_EQ(lines_of("file", 512), (Lines{"one\n", "\n", "two words\n", "last"}));
}

TEST_F(TextFileTest, AnEmptyFileHasNoLine) {
  write_file("file", "");
  EXPECT_EQ(lines_of("file", 512), Lines{});
}

TEST_F(TextFileTest, ALongLineComesInPieces) {
  write_file("file", "abcdefg\nh\n");
  EXPECT_EQ(lines_of("file", 4), (Lines{"abc", "def", "g\n", "h\n"}));
  EXPECT_EQ(lines_of("file", 8), (Lines{"abcdefg", "\n", "h\n"}));
  EXPECT_EQ(lines_of("file", 9), (Lines{"abcdefg\n", "h\n"}));
  EXPECT_EQ(lines_of("file", 2), (Lines{"a", "b", "c", "d", "e", "f", "g", "\n", "h", "\n"}));
}

TEST_F(TextFileTest, LinesMayCrossTheBufferAnywhere) {
  for (std::size_t before = 4090; before < 4100; ++before) {
    const std::string first(before, 'x');
    write_file("file", first + "\nsecond\nthird");
    EXPECT_EQ(lines_of("file", 9000), (Lines{first + "\n", "second\n", "third"})) << before;
  }
}

/// The numbers of all lines of a file, with room for `room` bytes each.
std::vector<std::size_t> line_numbers_of(const std::string& path, std::size_t room) {
  TextFile file(path.c_str());
  EXPECT_EQ(file.line_number(), 0U);
  std::vector<std::size_t> numbers;
  std::vector<char> line(room);
  while (file.read_line(line)) {
    numbers.push_back(file.line_number());
  }
  EXPECT_EQ(file.line_number(), numbers.empty() ? 0 : numbers.back());
  return numbers;
}

TEST_F(TextFileTest, LinesAreCountedByTheirEnds) {
  using Numbers = std::vector<std::size_t>;
  write_file("file", testing::bytes("ab\0d\n\n\nlast"));
  EXPECT_EQ(line_numbers_of("file", 512), (Numbers{1, 2, 3, 4}));
  EXPECT_EQ(line_numbers_of("file", 3), (Numbers{1, 1, 1, 2, 3, 4, 4}));
  write_file("file", "");
  EXPECT_EQ(line_numbers_of("file", 512), Numbers{});
}

TEST_F(TextFileTest, TellsWhyItIsNotOpenOrCannotBeReadOn) {
  EXPECT_EQ(TextFile("none").error_number(), ENOENT);
  EXPECT_EQ(TextFile("/dev/null").error_number(), 0);
  write_file("file", "one\n");
  EXPECT_EQ(TextFile("file/x").error_number(), ENOTDIR);
  TextFile memory("/proc/self/mem");
  std::array<char, 8> line{};
  EXPECT_FALSE(memory.read_line(line));
  EXPECT_TRUE(memory.failed());
  EXPECT_EQ(memory.error_number(), EIO);
}

TEST_F(TextFileTest, TellsWhyAFileThatIsThereIsNotOpened) {
  write_file("file", "one\n");
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const TextFile file("file");
  EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_FALSE(file.is_open());
  EXPECT_EQ(file.error_number(), EMFILE);
}

TEST_F(TextFileTest, ANulIsAByteOfTheLine) {
  write_file("file", testing::bytes("a\0b\nc"));
  TextFile file("file");
  std::array<char, 8> line{};
  ASSERT_TRUE(file.read_line(line));
  EXPECT_EQ(std::string(line.data(), 5), testing::bytes("a\0b\n\0"));
  ASSERT_TRUE(file.read_line(line));
  EXPECT_STREQ(line.data(), "c");
}

TEST_F(TextFileTest, LinksToRegularFilesAreFollowed) {
  write_file("file", "text\n");
  std::filesystem::create_symlink("file", "link");
  std::filesystem::create_symlink("link", "link2");
  EXPECT_TRUE(is_regular_file("link2"));
  EXPECT_EQ(lines_of("link2", 512), Lines{"text\n"});
}

TEST_F(TextFileTest, WhatIsMissingIsNotOpened) {
  EXPECT_FALSE(is_regular_file("missing"));
  EXPECT_FALSE(TextFile("missing").is_open());
  std::filesystem::create_symlink("missing", "dangling");
  EXPECT_FALSE(TextFile("dangling").is_open());
}

TEST_F(TextFileTest, OnlyRegularFilesAreOpened) {
  testing::for_each_odd_file("odd", [] {
    EXPECT_FALSE(is_regular_file("odd"));
    EXPECT_FALSE(TextFile("odd").is_open());
  });
}

/// The first line of a file.
std::string first_line_of(const std::string& path) {
  TextFile file(path.c_str());
  std::array<char, 512> line{};
  EXPECT_TRUE(file.is_open());
  EXPECT_TRUE(file.read_line(line));
  return line.data();
}

// Where numbers of the system have 32 bits by themselves, sizes have 31.
TEST_F(TextFileTest, AFileMayBeLargerThan2And4GiB) {
  for (const std::uintmax_t gibibytes : {3U, 5U}) {
    write_file("file", "first\n");
    std::filesystem::resize_file("file", gibibytes << 30U);
    EXPECT_TRUE(is_regular_file("file")) << gibibytes;
    EXPECT_EQ(first_line_of("file"), "first\n") << gibibytes;
  }
}

// And seconds since 1970 end in January 2038.
TEST_F(TextFileTest, AFileMayBeOfTheYear2040) {
  write_file("file", "first\n");
  timespec times[2]{};
  times[0].tv_sec = times[1].tv_sec = std::time_t{2'208'988'800};
  ASSERT_EQ(utimensat(AT_FDCWD, "file", static_cast<const timespec*>(times), 0), 0);
  EXPECT_TRUE(is_regular_file("file"));
  EXPECT_EQ(first_line_of("file"), "first\n");
}

TEST_F(TextFileTest, TheDescriptorIsGivenBack) {
  write_file("file", "text\n");
  const int next_descriptor = dup(0);
  close(next_descriptor);
  {
    TextFile file("file");
    EXPECT_EQ(fcntl(next_descriptor, F_GETFD), FD_CLOEXEC);
    file.close();
    EXPECT_EQ(fcntl(next_descriptor, F_GETFD), -1);
  }
  { const TextFile file("file"); }
  EXPECT_EQ(fcntl(next_descriptor, F_GETFD), -1);
  testing::for_each_odd_file("odd", [next_descriptor] {
    const TextFile file("odd");
    EXPECT_EQ(fcntl(next_descriptor, F_GETFD), -1);
  });
}

/// A file server with a lease on the file, which gives it back when somebody asks for the file.
class Leaseholder {
 public:
  explicit Leaseholder(const char* path) {
    std::array<int, 2> ready{};
    EXPECT_EQ(pipe(ready.data()), 0);
    child_ = fork();
    if (child_ == 0) {
      sigset_t asked;
      sigemptyset(&asked);
      sigaddset(&asked, SIGIO);
      sigprocmask(SIG_BLOCK, &asked, nullptr);
      const int file = open(path, O_RDWR);
      const char answer = fcntl(file, F_SETLEASE, F_WRLCK) == 0 ? 'y' : 'n';
      int signal = 0;
      if (write(ready[1], &answer, 1) == 1 && answer == 'y' && sigwait(&asked, &signal) == 0) {
        usleep(50'000);
        fcntl(file, F_SETLEASE, F_UNLCK);
      }
      _exit(0);
    }
    EXPECT_EQ(read(ready[0], &holds_, 1), 1);
    close(ready[0]);
    close(ready[1]);
  }
  ~Leaseholder() {
    kill(child_, SIGIO);
    waitpid(child_, nullptr, 0);
  }
  Leaseholder(const Leaseholder&) = delete;
  Leaseholder& operator=(const Leaseholder&) = delete;

  bool holds() const { return holds_ == 'y'; }

 private:
  pid_t child_ = 0;
  char holds_ = 'n';
};

TEST_F(TextFileTest, ALeaseOnTheFileIsWaitedFor) {
  write_file("file", "text\n");
  const Leaseholder server("file");
  if (!server.holds()) {
    GTEST_SKIP() << "this file system knows no leases";
  }
  EXPECT_EQ(lines_of("file", 512), Lines{"text\n"});
}

/// The memory of the process can be opened and not be read from its start.
TEST_F(TextFileTest, AFileThatCannotBeReadHasFailed) {
  TextFile file("/proc/self/mem");
  ASSERT_TRUE(file.is_open());
  std::array<char, 8> line{};
  EXPECT_FALSE(file.read_line(line));
  EXPECT_TRUE(file.failed());
}

}  // namespace
}  // namespace rlx
