#include "support/wide_pipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
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
  EXPECT_GT(fcntl(ends[0], F_GETPIPE_SZ), usual);
  close(ends[0]);
  close(ends[1]);
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
