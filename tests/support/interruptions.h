#pragma once

#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>

namespace rlx::testing {

/// Fires signals that cut blocking reads and writes short, as long as it lives.
class Interruptions {
 public:
  Interruptions() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, &saved_);
    const itimerval often{{0, 500}, {0, 500}};
    setitimer(ITIMER_REAL, &often, nullptr);
  }
  ~Interruptions() {
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &saved_, nullptr);
  }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;

 private:
  struct sigaction saved_ {};
};

/// For a thread beside them: reads a descriptor to its end, slowly, not hearing the signals.
inline std::string read_slowly(int descriptor) {
  sigset_t alarm;
  sigemptyset(&alarm);
  sigaddset(&alarm, SIGALRM);
  pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
  std::string all;
  std::array<char, 5000> part{};
  for (ssize_t got = 0; (got = read(descriptor, part.data(), part.size())) > 0;) {
    all.append(part.data(), static_cast<std::size_t>(got));
    usleep(200);
  }
  return all;
}

}  // namespace rlx::testing
