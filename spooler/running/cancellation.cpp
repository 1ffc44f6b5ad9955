#include "running/cancellation.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace rlx::spooler {

namespace {

/// A signal handler has no other way to its object.
std::atomic<Cancellation*> on_signals = nullptr;
static_assert(std::atomic<Cancellation*>::is_always_lock_free);

extern "C" void ask_on_signal(int /*signal*/) {
  const int error = errno;
  if (Cancellation* const cancellation = on_signals; cancellation != nullptr) {
    cancellation->ask();
  }
  errno = error;
}

}  // namespace

Cancellation::Cancellation(const Cancellation* whole) : whole_(whole), pipe_(make_pipe()) {}

bool Cancellation::is_asked() const noexcept {
  return asked_ || (whole_ != nullptr && whole_->is_asked());
}

void Cancellation::ask() noexcept {
  if (!asked_.exchange(true)) {
    // One byte always fits into an empty pipe.
    [[maybe_unused]] const ssize_t put = write(pipe_.write_end.number(), "", 1);
  }
}

bool Cancellation::wait(int descriptor, short events, int milliseconds) const {
  // A negative descriptor is one that nobody waits for.
  const int whole = whole_ == nullptr ? -1 : whole_->pipe_.read_end.number();
  std::array<pollfd, 3> waiting{
      {{descriptor, events, 0}, {pipe_.read_end.number(), POLLIN, 0}, {whole, POLLIN, 0}}};
  while (poll(waiting.data(), waiting.size(), milliseconds) < 0 && errno == EINTR) {
  }
  return !is_asked();
}

bool Cancellation::wait_for(int descriptor, short events) const {
  if (descriptor < 0) {
    // Nothing would ever come of it; reading or writing will say what is wrong.
    return !is_asked();
  }
  return wait(descriptor, events, -1);
}

bool Cancellation::pause(int milliseconds) const {
  return wait(-1, 0, milliseconds);
}

void cancel_on_signals(Cancellation& cancellation) {
  on_signals = &cancellation;
  struct sigaction action = {};
  action.sa_handler = ask_on_signal;
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
    sigaction(signal, &action, nullptr);
  }
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
}

}  // namespace rlx::spooler
