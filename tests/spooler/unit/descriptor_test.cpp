#include "running/descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <thread>
#include <vector>

#include "spooler/unit/spooler_rig.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;

bool is_open(int descriptor) {
  return fcntl(descriptor, F_GETFD) >= 0;
}

TEST(Descriptor, ClosesWhatItOwns) {
  int number = -1;
  {
    const Descriptor descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
    number = descriptor.number();
    ASSERT_TRUE(is_open(number));
  }
  EXPECT_FALSE(is_open(number));
}

TEST(Descriptor, MovesItsDescriptor) {
  Descriptor first(open("/dev/null", O_RDONLY | O_CLOEXEC));
  const int number = first.number();
  Descriptor second(std::move(first));
  EXPECT_EQ(second.number(), number);
  Descriptor third(open("/dev/null", O_RDONLY | O_CLOEXEC));
  const int overwritten = third.number();
  third = std::move(second);
  EXPECT_EQ(third.number(), number);
  EXPECT_FALSE(is_open(overwritten));
  EXPECT_TRUE(is_open(number));
  Descriptor& same = third;
  third = std::move(same);
  EXPECT_TRUE(is_open(number));
  third.reset();
  EXPECT_FALSE(third.is_open());
  EXPECT_FALSE(is_open(number));
  third.reset();
}

TEST(Pipe, IsInheritedByNoProgram) {
  const Pipe pipe = make_pipe();
  EXPECT_EQ(fcntl(pipe.read_end.number(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(fcntl(pipe.write_end.number(), F_GETFD), FD_CLOEXEC);
}

TEST(Pipe, LeavesTheStandardDescriptorsFree) {
  const Descriptor saved(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3));
  close(STDIN_FILENO);
  const Pipe pipe = make_pipe();
  const bool free = !is_open(STDIN_FILENO);
  dup2(saved.number(), STDIN_FILENO);
  EXPECT_TRUE(free);
  EXPECT_GT(pipe.read_end.number(), 2);
  EXPECT_EQ(fcntl(pipe.read_end.number(), F_GETFD), FD_CLOEXEC);
  put_bytes(pipe.write_end.number(), "x");
  std::array<std::uint8_t, 2> room{};
  EXPECT_EQ(read_some(pipe.read_end.number(), room, ""), 1U);
}

TEST(ReadSome, TellsWhatCouldNotBeRead) {
  std::array<std::uint8_t, 8> room{};
  try {
    read_some(-1, room, "the job");
    FAIL();
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code().value(), EBADF);
    EXPECT_STREQ(error.what(), "the job: Bad file descriptor");
  }
}

TEST(ReadSome, WaitsWhereNothingIsThereYet) {
  Pipe pipe = make_pipe();
  fcntl(pipe.read_end.number(), F_SETFL, O_NONBLOCK);
  std::thread writer([&pipe] {
    usleep(20000);
    put_bytes(pipe.write_end.number(), "abc");
    pipe.write_end.reset();
  });
  std::array<std::uint8_t, 8> room{};
  EXPECT_EQ(read_some(pipe.read_end.number(), room, ""), 3U);
  EXPECT_EQ(read_some(pipe.read_end.number(), room, ""), 0U);
  writer.join();
}

TEST(WriteAll, WaitsWhereNotAllIsTakenAtOnce) {
  PipeReader reader;
  fcntl(reader.descriptor(), F_SETFL, O_NONBLOCK);
  const std::string text(3000000, 'x');
  EXPECT_EQ(write_all(reader.descriptor(), as_bytes(text)), 0);
  EXPECT_TRUE(reader.text() == text);
}

TEST(WriteAll, TellsWhyItFailed) {
  const IgnoredBrokenPipe ignored;
  Pipe pipe = make_pipe();
  pipe.read_end.reset();
  EXPECT_EQ(write_all(pipe.write_end.number(), as_bytes("x")), EPIPE);
  EXPECT_EQ(write_all(-1, as_bytes("x")), EBADF);
  EXPECT_EQ(write_all(-1, {}), 0);
  const Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
  EXPECT_EQ(write_all(full.number(), as_bytes("x")), ENOSPC);
}

}  // namespace
}  // namespace rlx::spooler
