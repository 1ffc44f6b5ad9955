#include "input/raw_input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "job/status.h"
#include "support/descriptors.h"
#include "support/filter_state.h"
#include "support/input_stream.h"
#include "support/interruptions.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using namespace rlx::testing;

class RawInput : public FilterTest {};

/// Bytes whose order shows: 251 is prime, so no two chunks look alike.
std::string numbered_bytes(std::size_t count) {
  std::string bytes(count, '\0');
  for (std::size_t i = 0; i < count; ++i) {
    bytes[i] = static_cast<char>(i % 251);
  }
  return bytes;
}

std::string take_window() {
  std::string bytes(reinterpret_cast<const char*>(the_filter().source.raw.window.next),
                    the_filter().source.raw.window.size());
  the_filter().source.raw.window.next = the_filter().source.raw.window.end;
  return bytes;
}

std::string take_all_windows() {
  std::string all;
  while (raw_refill(the_filter().source.raw) == ST_OK) {
    EXPECT_FALSE(the_filter().source.raw.window.empty());
    all += take_window();
  }
  return all;
}

TEST_F(RawInput, AnEmptyInputEndsAtOnce) {
  const StandardInput input("");
  EXPECT_TRUE(the_filter().source.raw.window.empty());
  EXPECT_EQ(raw_refill(the_filter().source.raw), ST_EOF);
  EXPECT_TRUE(the_filter().source.raw.window.empty());
}

TEST_F(RawInput, ReadsThatAreInterruptedGoOn) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  const int saved = dup(STDIN_FILENO);
  dup2(ends[0], STDIN_FILENO);
  const pid_t writer = fork();
  if (writer == 0) {
    usleep(20000);  // many signals later
    _exit(write(ends[1], "late", 4) == 4 ? 0 : 1);
  }
  close(ends[1]);
  {
    const Interruptions interruptions;
    EXPECT_EQ(raw_refill(the_filter().source.raw), ST_OK);
    EXPECT_EQ(take_window(), "late");
    EXPECT_EQ(raw_refill(the_filter().source.raw), ST_EOF);
  }
  dup2(saved, STDIN_FILENO);
  close(saved);
  close(ends[0]);
  EXPECT_EQ(waitpid(writer, nullptr, 0), writer);
}

TEST_F(RawInput, GivesAllBytesInOrderAroundTheBufferSize) {
  for (const std::size_t size :
       {1UL, 65535UL, 65536UL, 65537UL, 131071UL, 131072UL, 131073UL, 200000UL}) {
    reset_filter();
    const std::string bytes = numbered_bytes(size);
    const StandardInput input(bytes);
    EXPECT_TRUE(take_all_windows() == bytes) << size;
    EXPECT_EQ(raw_refill(the_filter().source.raw), ST_EOF) << size;
  }
}

TEST_F(RawInput, ReadsPiecesOfTheWholeBufferFromAFile) {
  const StandardInput input(numbered_bytes(100000));
  ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
  EXPECT_EQ(the_filter().source.raw.window.size(), kInputBufferBytes);
}

TEST_F(RawInput, GivesWhatHasArrivedWithoutWaitingForMore) {
  const PiecewiseInput input({"a", "bc", "def"});
  ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
  EXPECT_EQ(take_window(), "a");
  ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
  EXPECT_EQ(take_window(), "bc");
  ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
  EXPECT_EQ(take_window(), "def");
  EXPECT_EQ(raw_refill(the_filter().source.raw), ST_EOF);
}

TEST_F(RawInput, TheEndStaysEvenIfMoreBytesCome) {
  const StandardInput input("a");
  EXPECT_EQ(take_all_windows(), "a");
  const StandardInput more("b");
  EXPECT_EQ(raw_refill(the_filter().source.raw), ST_EOF);
  std::array<std::uint8_t, 4> bytes{};
  std::size_t count = 1;
  EXPECT_EQ(raw_read(the_filter().source.raw, bytes, count), ST_EOF);
  EXPECT_EQ(count, 0U);
}

TEST_F(RawInput, AReadErrorStaysWithItsErrno) {
  const StandardInput saved("");
  const int directory = open("/", O_RDONLY | O_DIRECTORY);
  ASSERT_GE(directory, 0);
  dup2(directory, STDIN_FILENO);
  close(directory);
  for (int call = 0; call < 3; ++call) {
    errno = 0;
    EXPECT_EQ(raw_refill(the_filter().source.raw), ST_IOERR);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_TRUE(the_filter().source.raw.window.empty());
  }
  const StandardInput more("b");
  EXPECT_EQ(raw_refill(the_filter().source.raw), ST_IOERR);
}

TEST_F(RawInput, AReadErrorBehindBytesComesBehindThem) {
  const FailingInput input("abc");
  EXPECT_EQ(take_all_windows(), "abc");
  for (int call = 0; call < 3; ++call) {
    errno = 0;
    EXPECT_EQ(raw_refill(the_filter().source.raw), ST_IOERR);
    EXPECT_EQ(errno, ECONNRESET);
  }
}

TEST_F(RawInput, AClosedDescriptorIsAReadError) {
  const StandardInput saved("");
  close(STDIN_FILENO);
  EXPECT_EQ(raw_refill(the_filter().source.raw), ST_IOERR);
  EXPECT_EQ(errno, EBADF);
}

TEST_F(RawInput, ReadGivesTheCountWantedWhereverItStartsAroundTheBufferBorder) {
  const std::string all = numbered_bytes(200000);
  for (const std::size_t before : {0UL, 1UL, 65535UL, 65536UL, 65537UL}) {
    for (const std::size_t wanted : {0UL, 1UL, 2UL, 9999UL, 65535UL, 65536UL, 65537UL, 131073UL}) {
      reset_filter();
      const StandardInput input(all);
      std::vector<std::uint8_t> room(200000);
      std::size_t count = 1;
      ASSERT_EQ(raw_read(the_filter().source.raw, std::span(room).first(before), count), ST_OK);
      ASSERT_EQ(count, before);
      ASSERT_EQ(raw_read(the_filter().source.raw, std::span(room).first(wanted), count), ST_OK);
      ASSERT_EQ(count, wanted);
      EXPECT_EQ(std::memcmp(room.data(), all.data() + before, wanted), 0) << before << wanted;
      if (the_filter().source.raw.window.empty()) {
        ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
      }
      EXPECT_EQ(*the_filter().source.raw.window.next,
                static_cast<std::uint8_t>(all[before + wanted]));
    }
  }
}

TEST_F(RawInput, ReadStopsAtTheEndWithTheBytesThatWereThere) {
  for (const std::size_t size : {0UL, 1UL, 5UL, 65536UL, 65537UL}) {
    reset_filter();
    const std::string all = numbered_bytes(size);
    const StandardInput input(all);
    std::vector<std::uint8_t> room(size + 1);
    std::size_t count = 0;
    EXPECT_EQ(raw_read(the_filter().source.raw, room, count), ST_EOF);
    ASSERT_EQ(count, size);
    EXPECT_EQ(std::memcmp(room.data(), all.data(), size), 0);
  }
}

TEST_F(RawInput, ReadOfExactlyTheRestSucceeds) {
  const StandardInput input("abc");
  std::array<std::uint8_t, 3> room{};
  std::size_t count = 0;
  EXPECT_EQ(raw_read(the_filter().source.raw, room, count), ST_OK);
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(raw_read(the_filter().source.raw, {}, count), ST_OK);
  EXPECT_EQ(count, 0U);
}

TEST_F(RawInput, ReadStopsAtAReadErrorWithTheBytesThatWereThere) {
  const FailingInput input("abc");
  std::array<std::uint8_t, 8> room{};
  std::size_t count = 0;
  EXPECT_EQ(raw_read(the_filter().source.raw, room, count), ST_IOERR);
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(std::memcmp(room.data(), "abc", 3), 0);
}

TEST_F(RawInput, ReadGathersPiecesThatArriveOneByOne) {
  const PiecewiseInput input({"a", "bc", "d", "efg"});
  std::array<std::uint8_t, 5> room{};
  std::size_t count = 0;
  EXPECT_EQ(raw_read(the_filter().source.raw, room, count), ST_OK);
  EXPECT_EQ(count, 5U);
  EXPECT_EQ(std::memcmp(room.data(), "abcde", 5), 0);
  EXPECT_EQ(take_window(), "fg");
  EXPECT_EQ(raw_refill(the_filter().source.raw), ST_EOF);
}

// The hook's state: how often it was called, and the pipe that it feeds.
int hook_calls;
int hook_pipe;

void count_hook(void* /*context*/) {
  ++hook_calls;
}

void feeding_hook(void* /*context*/) {
  ++hook_calls;
  EXPECT_EQ(write(hook_pipe, "y", 1), 1);
}

TEST_F(RawInput, TheHookIsNotCalledWhileInputStandsReady) {
  hook_calls = 0;
  const StandardInput input("abc", true);
  the_filter().source.raw.before_waiting = count_hook;
  EXPECT_EQ(take_all_windows(), "abc");
  EXPECT_EQ(hook_calls, 0);
}

TEST_F(RawInput, TheHookIsNotCalledForAFile) {
  hook_calls = 0;
  const StandardInput input(numbered_bytes(200000));
  the_filter().source.raw.before_waiting = count_hook;
  EXPECT_EQ(take_all_windows().size(), 200000U);
  EXPECT_EQ(hook_calls, 0);
}

TEST_F(RawInput, TheHookIsCalledBeforeTheReadThatWaits) {
  hook_calls = 0;
  const StandardInput saved("");
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  dup2(ends[0], STDIN_FILENO);
  close(ends[0]);
  hook_pipe = ends[1];
  the_filter().source.raw.before_waiting = feeding_hook;
  ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
  EXPECT_EQ(take_window(), "y");
  EXPECT_EQ(hook_calls, 1);
  ASSERT_EQ(write(hook_pipe, "z", 1), 1);
  ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
  EXPECT_EQ(take_window(), "z");
  EXPECT_EQ(hook_calls, 1);
  close(hook_pipe);
  EXPECT_EQ(raw_refill(the_filter().source.raw), ST_EOF);
}

TEST_F(RawInput, ResetForgetsBufferEndErrorAndHook) {
  hook_calls = 0;
  the_filter().source.raw.before_waiting = count_hook;
  {
    const StandardInput input("abc");
    ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
  }
  restart_raw_input();
  EXPECT_TRUE(the_filter().source.raw.window.empty());
  {
    const StandardInput input("");
    EXPECT_EQ(raw_refill(the_filter().source.raw), ST_EOF);
  }
  restart_raw_input();
  {
    const FailingInput input("");
    EXPECT_EQ(raw_refill(the_filter().source.raw), ST_IOERR);
  }
  restart_raw_input();
  const StandardInput input("d");
  ASSERT_EQ(raw_refill(the_filter().source.raw), ST_OK);
  EXPECT_EQ(take_window(), "d");
  EXPECT_EQ(hook_calls, 0);
}

}  // namespace
}  // namespace rlx
