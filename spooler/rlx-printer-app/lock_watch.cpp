#include "rlx-printer-app/lock_watch.h"

#include <utility>

namespace rlx::printer_app {

LockWatch::LockWatch(std::function<void()> touch, std::function<void()> help,
                     std::chrono::milliseconds patience)
    : touch_(std::move(touch)), help_(std::move(help)), patience_(patience) {
  touching_ = std::thread([this] { touch_again(); });
  watching_ = std::thread([this] { watch(); });
}

LockWatch::~LockWatch() {
  done_.ask();
  touching_.join();
  watching_.join();
}

void LockWatch::touch_again() {
  constexpr int kTimesInPatience = 4;
  do {
    touch_();
    ++touches_;
  } while (done_.pause(static_cast<int>(patience_.count() / kTimesInPatience)));
}

void LockWatch::watch() {
  unsigned seen = touches_;
  while (done_.pause(static_cast<int>(patience_.count()))) {
    const unsigned now = touches_;
    if (now == seen) {
      help_();
      return;
    }
    seen = now;
  }
}

}  // namespace rlx::printer_app
