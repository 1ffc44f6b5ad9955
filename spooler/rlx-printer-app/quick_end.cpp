#include "rlx-printer-app/quick_end.h"

#include <atomic>
#include <csignal>
#include <utility>

#include "rlx-printer-app/printer_device.h"

namespace rlx::printer_app {

namespace {

constexpr int kStartMilliseconds = 5;
constexpr int kLookMilliseconds = 200;
/// What a job that prints gets to end; systemd gives the server a minute.
constexpr std::chrono::seconds kPatience(45);

std::atomic<bool> has_signal = false;
static_assert(std::atomic<bool>::is_always_lock_free);

/// PAPPL does not hear of it: it would delete what threads of clients still use.
void take(int /*number*/) {
  has_signal = true;
}

/// Takes the signals from PAPPL, once it has taken them. @return false before.
bool take_signals() {
  struct sigaction action {};
  if (sigaction(SIGTERM, nullptr, &action) != 0 || action.sa_handler == SIG_DFL ||
      action.sa_handler == SIG_IGN) {
    return false;
  }
  if (action.sa_handler != take) {
    action.sa_handler = take;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
  }
  return true;
}

}  // namespace

QuickEnd::QuickEnd(pappl_system_t* system, JobQueue& queue, std::function<void()> end)
    : system_(system), queue_(queue), end_(std::move(end)) {
  thread_ = std::thread([this] { watch(); });
}

QuickEnd::~QuickEnd() {
  done_.ask();
  thread_.join();
}

bool QuickEnd::is_asked() const {
  return has_signal || (papplSystemIsRunning(system_) && papplSystemIsShutdown(system_));
}

void QuickEnd::watch() {
  while (!is_asked()) {
    if (!done_.pause(take_signals() ? kLookMilliseconds : kStartMilliseconds)) {
      return;
    }
  }
  queue_.rest();
  close_printers();
  const Clock::time_point latest = Clock::now() + kPatience;
  while (jobs_at_printers() > 0 && Clock::now() < latest) {
    if (!done_.pause(kLookMilliseconds)) {
      return;
    }
  }
  end_();
}

}  // namespace rlx::printer_app
