#include "support/descriptor_io.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "support/interruptions.h"
#include "support/statuses.h"

namespace rlx {
namespace {

constexpr useconds_t kAWhile = 20'000;

std::span<const std::uint8_t> view(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A pipe whose two ends do not block.
class NonBlockingPipe {
 public:
  NonBlockingPipe() { EXPECT_EQ(pipe2(ends_.data(), O_NONBLOCK | O_CLOEXEC), 0); }
  ~NonBlockingPipe() {
    close(ends_[0]);
    close_writing_end();
  }
  NonBlockingPipe(const NonBlockingPipe&) = delete;
  NonBlockingPipe& operator=(const NonBlockingPipe&) = delete;

  int reading_end() const { return ends_[0]; }
  int writing_end() const { return ends_[1]; }
  void close_writing_end() {
    if (ends_[1] >= 0) {
      close(ends_[1]);
      ends_[1] = -1;
    }
  }

 private:
  std::array<int, 2> ends_{};
};

std::string varied_text(std::size_t count) {
  std::string text(count, '\0');
  for (std::size_t i = 0; i < count; ++i) {
    text[i] = static_cast<char>(i * 13 + i / 251);
  }
  return text;
}

/// Reads all with read_some, as many bytes at a time as the buffer holds.
std::string read_all(int descriptor, std::size_t buffer_bytes) {
  std::vector<std::uint8_t> buffer(buffer_bytes);
  std::string all;
  for (ssize_t count = 0; (count = read_some(descriptor, buffer)) > 0;) {
    all.append(reinterpret_cast<const char*>(buffer.data()), static_cast<std::size_t>(count));
  }
  return all;
}

TEST(DescriptorIo, ReadGivesWhatIsThereAndThenTheEnd) {
  NonBlockingPipe pipe;
  ASSERT_EQ(write(pipe.writing_end(), "abcde", 5), 5);
  pipe.close_writing_end();
  std::array<std::uint8_t, 3> room{};
  EXPECT_EQ(read_some(pipe.reading_end(), room), 3);
  EXPECT_EQ(room[2], 'c');
  EXPECT_EQ(read_some(pipe.reading_end(), room), 2);
  EXPECT_EQ(read_some(pipe.reading_end(), room), 0);
}

TEST(DescriptorIo, ReadWaitsForADescriptorThatDoesNotBlock) {
  NonBlockingPipe pipe;
  std::thread writer([&] {
    for (const char* const part : {"a", "bc", "d"}) {
      usleep(kAWhile);
      EXPECT_GT(write(pipe.writing_end(), part, std::string_view(part).size()), 0);
    }
    usleep(kAWhile);
    pipe.close_writing_end();
  });
  EXPECT_EQ(read_all(pipe.reading_end(), 100), "abcd");
  writer.join();
}

TEST(DescriptorIo, WriteWaitsForADescriptorThatDoesNotBlock) {
  NonBlockingPipe pipe;
  const std::string text = varied_text(1'000'003);
  std::string caught;
  std::thread reader([&] {
    usleep(kAWhile);
    caught = read_all(pipe.reading_end(), 5000);
  });
  EXPECT_EQ(write_whole(pipe.writing_end(), view(text)), 0);
  pipe.close_writing_end();
  reader.join();
  EXPECT_TRUE(caught == text);
}

TEST(DescriptorIo, WriteSomeGivesWhatWasTakenAtOnce) {
  const NonBlockingPipe pipe;
  const auto room = static_cast<std::size_t>(fcntl(pipe.writing_end(), F_GETPIPE_SZ));
  EXPECT_EQ(write_some(pipe.writing_end(), view(varied_text(room + 1000))),
            static_cast<ssize_t>(room));
}

TEST(DescriptorIo, SignalsChangeNothing) {
  NonBlockingPipe pipe;
  const std::string text = varied_text(300'001);
  std::string caught;
  const testing::Interruptions interruptions;
  std::thread reader([&] { caught = read_all(pipe.reading_end(), 700); });
  EXPECT_EQ(write_whole(pipe.writing_end(), view(text)), 0);
  pipe.close_writing_end();
  reader.join();
  EXPECT_TRUE(caught == text);
}

TEST(DescriptorIo, FailuresComeBackWithTheirErrno) {
  std::array<std::uint8_t, 1> room{};
  errno = 0;
  EXPECT_EQ(read_some(-1, room), -1);
  EXPECT_EQ(errno, EBADF);
  errno = 0;
  EXPECT_EQ(write_some(-1, view("a")), -1);
  EXPECT_EQ(errno, EBADF);
  errno = 0;
  EXPECT_EQ(write_whole(-1, view("a")), ST_IOERR);
  EXPECT_EQ(errno, EBADF);
}

TEST(DescriptorIo, WritingNothingIsNoFailure) {
  EXPECT_EQ(write_whole(-1, {}), 0);
}

TEST(DescriptorIo, AWriteThatTakesNothingIsAFailure) {
  // A device that takes nothing is hard to come by: no bytes offered gives the same result.
  const NonBlockingPipe pipe;
  errno = 0;
  EXPECT_EQ(write_some(pipe.writing_end(), {}), -1);
  EXPECT_EQ(errno, EIO);
}

}  // namespace
}  // namespace rlx
