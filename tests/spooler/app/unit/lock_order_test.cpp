#include "rlx-printer-app/lock_order.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <thread>

namespace rlx::printer_app {
namespace {

/// Two locks that are taken in both orders, as PAPPL does: the one of the system first by readers,
/// the one of a printer first by a writer.
TEST(LockOrder, WhoReadsTheSystemLetsAWriterPass) {
  pthread_rwlock_t system = PTHREAD_RWLOCK_INITIALIZER;
  pthread_rwlock_t printer = PTHREAD_RWLOCK_INITIALIZER;
  keep_lock_order(reinterpret_cast<pappl_system_t*>(&system));
  int rounds = 0;
  std::atomic<bool> has_printer = false;
  std::atomic<bool> reads_system = false;
  std::thread writer([&] {
    pthread_rwlock_wrlock(&printer);
    has_printer = true;
    while (!reads_system) {
      std::this_thread::yield();
    }
    pthread_rwlock_wrlock(&system);
    ++rounds;
    pthread_rwlock_unlock(&system);
    pthread_rwlock_unlock(&printer);
  });
  while (!has_printer) {
    std::this_thread::yield();
  }
  // Twice, as a function that lists printers may be called by another one that does.
  pthread_rwlock_rdlock(&system);
  pthread_rwlock_rdlock(&system);
  reads_system = true;
  pthread_rwlock_rdlock(&printer);
  EXPECT_EQ(rounds, 1);
  pthread_rwlock_unlock(&printer);
  pthread_rwlock_unlock(&system);
  pthread_rwlock_unlock(&system);
  writer.join();
  // All is free again.
  EXPECT_EQ(pthread_rwlock_trywrlock(&system), 0);
  EXPECT_EQ(pthread_rwlock_trywrlock(&printer), 0);
  pthread_rwlock_unlock(&system);
  pthread_rwlock_unlock(&printer);
  keep_lock_order(nullptr);
}

}  // namespace
}  // namespace rlx::printer_app
