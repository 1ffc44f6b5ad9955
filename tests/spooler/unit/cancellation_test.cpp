#include "running/cancellation.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "spooler/unit/spooler_rig.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;

TEST(Cancellation, IsNotAskedForAtFirst) {
  const Cancellation cancellation;
  EXPECT_FALSE(cancellation.is_asked());
  const Pipe pipe = make_pipe();
  put_bytes(pipe.write_end.number(), "x");
  EXPECT_TRUE(cancellation.wait_for(pipe.read_end.number(), POLLIN));
  EXPECT_TRUE(cancellation.wait_for(pipe.write_end.number(), POLLOUT));
}

TEST(Cancellation, Stays) {
  Cancellation cancellation;
  for (int i = 0; i < 100000; ++i) {
    // More often than bytes fit into a pipe.
    cancellation.ask();
  }
  EXPECT_TRUE(cancellation.is_asked());
  const Pipe pipe = make_pipe();
  put_bytes(pipe.write_end.number(), "x");
  EXPECT_FALSE(cancellation.wait_for(pipe.read_end.number(), POLLIN));
}

TEST(Cancellation, EndsTheWaitForADescriptor) {
  Cancellation cancellation;
  const Pipe pipe = make_pipe();
  std::thread asker([&cancellation] {
    usleep(20000);
    cancellation.ask();
  });
  EXPECT_FALSE(cancellation.wait_for(pipe.read_end.number(), POLLIN));
  asker.join();
}

TEST(Cancellation, SeesTheEndOfAPipe) {
  const Cancellation cancellation;
  Pipe pipe = make_pipe();
  pipe.write_end.reset();
  EXPECT_TRUE(cancellation.wait_for(pipe.read_end.number(), POLLIN));
}

TEST(Cancellation, OfTheWholeIsThatOfAPart) {
  Cancellation whole;
  Cancellation part(&whole);
  Cancellation other(&whole);
  part.ask();
  EXPECT_TRUE(part.is_asked());
  EXPECT_FALSE(whole.is_asked());
  EXPECT_FALSE(other.is_asked());
  const Pipe pipe = make_pipe();
  std::thread asker([&whole] {
    usleep(20000);
    whole.ask();
  });
  EXPECT_FALSE(other.wait_for(pipe.read_end.number(), POLLIN));
  EXPECT_TRUE(other.is_asked());
  asker.join();
}

/// In a process of its own: what happens to its signals stays.
void expect_cancelled_by(int signal) {
  SCOPED_TRACE(signal);
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    static Cancellation cancellation;
    cancel_on_signals(cancellation);
    const Pipe pipe = make_pipe();
    const pid_t self = getpid();
    std::thread sender([self, signal] {
      usleep(20000);
      kill(self, signal);
    });
    const bool waited = cancellation.wait_for(pipe.read_end.number(), POLLIN);
    sender.join();
    _exit(!waited && cancellation.is_asked() ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(Cancellation, IsAskedForBySignals) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    expect_cancelled_by(signal);
  }
}

}  // namespace
}  // namespace rlx::spooler
