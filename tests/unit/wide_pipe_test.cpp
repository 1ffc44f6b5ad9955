#include "support/wide_pipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "support/descriptors.h"

namespace rlx {
namespace {

TEST(WidePipe, APipeHoldsMoreThanUsual) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  const int usual = fcntl(ends[0], F_GETPIPE_SZ);
  widen_pipe(ends[1]);
  EXPECT_EQ(fcntl(ends[0], F_GETPIPE_SZ), 2 * usual);
  close(ends[0]);
  close(ends[1]);
}

TEST(WidePipe, AWiderPipeIsNotShrunk) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  const int wide = fcntl(ends[0], F_SETPIPE_SZ, 1 << 20);
  ASSERT_EQ(wide, 1 << 20);
  widen_pipe(ends[0]);
  widen_pipe(ends[1]);
  EXPECT_EQ(fcntl(ends[0], F_GETPIPE_SZ), wide);
  close(ends[0]);
  close(ends[1]);
}

int new_pipe_size() {
  std::array<int, 2> ends{};
  return pipe(ends.data()) == 0 ? fcntl(ends[0], F_GETPIPE_SZ) : -1;
}

/// The pipes of a number of large jobs, all of one user. @return what a further pipe of his holds.
int size_after_large_jobs(int jobs) {
  constexpr uid_t kNobody = 65534;
  const rlimit many{2000, 2000};
  setrlimit(RLIMIT_NOFILE, &many);
  if (getuid() == 0 && setuid(kNobody) != 0) {
    return -1;
  }
  for (int pipes = 0; pipes < 2 * jobs; ++pipes) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
      return -1;
    }
    widen_pipe(ends[1]);
  }
  return new_pipe_size();
}

TEST(WidePipe, ManyLargeJobsLeaveTheUserHisShare) {
  const int usual = new_pipe_size();
  std::array<int, 2> answer{};
  ASSERT_EQ(pipe(answer.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    const int size = size_after_large_jobs(150);
    _exit(write(answer[1], &size, sizeof size) == sizeof size ? 0 : 1);
  }
  int size = 0;
  EXPECT_EQ(read(answer[0], &size, sizeof size), static_cast<ssize_t>(sizeof size));
  EXPECT_EQ(size, usual);
  waitpid(child, nullptr, 0);
  close(answer[0]);
  close(answer[1]);
}

TEST(WidePipe, WhatIsNoPipeIsLeftAndSoIsErrno) {
  const testing::ScratchDirectory scratch;
  testing::write_file("file", "text");
  const int file = open("file", O_RDONLY | O_CLOEXEC);
  errno = ENOENT;
  widen_pipe(file);
  widen_pipe(-1);
  EXPECT_EQ(errno, ENOENT);
  close(file);
}

}  // namespace
}  // namespace rlx
