#include "rlx-printer-app/lock_watch.h"

#include <gtest/gtest.h>

#include <mutex>

namespace rlx::printer_app {
namespace {

using std::chrono::milliseconds;

TEST(LockWatch, SaysNothingWhileTheLockIsFree) {
  std::atomic<int> touches = 0;
  std::atomic<bool> was_called = false;
  {
    // Far more than a touch takes, also on a machine that does much else.
    const LockWatch watch([&] { ++touches; }, [&] { was_called = true; }, milliseconds(2000));
    while (touches < 3) {
      std::this_thread::sleep_for(milliseconds(10));
    }
  }
  EXPECT_FALSE(was_called);
}

TEST(LockWatch, CallsForHelpOnceWhenTheLockStaysTaken) {
  std::mutex stuck;
  std::atomic<int> calls = 0;
  stuck.lock();
  {
    const LockWatch watch([&] { const std::lock_guard lock(stuck); }, [&] { ++calls; },
                          milliseconds(50));
    while (calls == 0) {
      std::this_thread::sleep_for(milliseconds(10));
    }
    std::this_thread::sleep_for(milliseconds(200));
    stuck.unlock();
  }
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace rlx::printer_app
