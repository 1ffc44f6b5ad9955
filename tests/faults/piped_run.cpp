#include "faults/piped_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

namespace rlx::testing {

namespace {

/// A turn without anything to move lasts so long.
constexpr int kTurnMilliseconds = 1;

void make_nonblocking(int descriptor) {
  EXPECT_EQ(fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK), 0);
}

/// While it lives, a program that has ended does not end the tests with it.
class NoBrokenPipes {
 public:
  NoBrokenPipes() : saved_(std::signal(SIGPIPE, SIG_IGN)) {}
  ~NoBrokenPipes() { std::signal(SIGPIPE, saved_); }
  NoBrokenPipes(const NoBrokenPipes&) = delete;
  NoBrokenPipes& operator=(const NoBrokenPipes&) = delete;

 private:
  void (*saved_)(int);
};

/// Both ends of both pipes; the program's ends are closed once it runs.
class Pipes {
 public:
  explicit Pipes(bool program_nonblocking) {
    EXPECT_EQ(pipe2(input_.data(), O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(output_.data(), O_CLOEXEC), 0);
    make_nonblocking(host());
    make_nonblocking(printer());
    if (program_nonblocking) {
      make_nonblocking(input_[0]);
      make_nonblocking(output_[1]);
    }
  }
  ~Pipes() { close(printer()); }
  Pipes(const Pipes&) = delete;
  Pipes& operator=(const Pipes&) = delete;

  int host() const { return input_[1]; }
  int printer() const { return output_[0]; }

  pid_t start(FaultRig& rig, const Plan& plan, int messages) const {
    const pid_t process = rig.start(plan, {input_[0], output_[1], messages});
    close(input_[0]);
    close(output_[1]);
    return process;
  }

 private:
  std::array<int, 2> input_{};
  std::array<int, 2> output_{};
};

/// Sends a portion of what is left; closes the pipe behind the last one, or when the program has
/// ended before.
void feed(int host, std::string_view& left, std::size_t portion) {
  if (left.empty()) {
    return;
  }
  const ssize_t sent = write(host, left.data(), std::min(left.size(), portion));
  if (sent > 0) {
    left.remove_prefix(static_cast<std::size_t>(sent));
  } else if (errno == EPIPE) {
    left = {};
  }
  if (left.empty()) {
    close(host);
  }
}

/// Takes a portion. @return false at the end.
bool take(int printer, std::string& all, std::size_t portion) {
  std::string part(portion, '\0');
  const ssize_t got = read(printer, part.data(), part.size());
  if (got > 0) {
    all.append(part, 0, static_cast<std::size_t>(got));
  }
  return got != 0;
}

void wait_a_turn(int printer) {
  pollfd wait{printer, POLLIN, 0};
  poll(&wait, 1, kTurnMilliseconds);
}

}  // namespace

Outcome run_between_pipes(FaultRig& rig, std::string_view job, const PipedRun& how,
                          const Plan& plan) {
  const Pipes pipes(how.nonblocking);
  const int messages = open_memory_file("");
  feed(pipes.host(), job, how.portion);
  const pid_t process = pipes.start(rig, plan, messages);
  const NoBrokenPipes no_broken_pipes;  // from now on: the program takes signals as they come
  Outcome outcome;
  bool printing = true;
  for (int turn = 0; printing; ++turn) {
    feed(pipes.host(), job, how.portion);
    how.disturb(process);
    if (turn >= how.idle_turns) {
      wait_a_turn(pipes.printer());
      printing = take(pipes.printer(), outcome.output, how.portion);
    } else {
      usleep(100);
    }
  }
  outcome.status = FaultRig::wait_for(process);
  outcome.messages = memory_file_bytes(messages);
  outcome.tally = rig.tally();
  close(messages);
  return outcome;
}

void interrupt(pid_t process) {
  kill(process, SIGUSR1);
}

void pause_and_continue(pid_t process) {
  siginfo_t end{};
  kill(process, SIGSTOP);
  // One that has ended meanwhile stays as it is, to be waited for later.
  waitid(P_PID, static_cast<id_t>(process), &end, WSTOPPED | WEXITED | WNOWAIT);
  kill(process, SIGCONT);
}

}  // namespace rlx::testing
