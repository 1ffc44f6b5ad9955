// Stands in the place of the C library's functions of the names below, for PAPPL too: the dynamic
// linker takes a program's own functions before those of libraries.
#include "rlx-printer-app/lock_order.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <cerrno>
#include <ctime>

namespace rlx::printer_app {

namespace {

/// The system's lock is the first thing in it. Where another PAPPL has it elsewhere, nothing is
/// known by this address, and all locks are taken as they are.
std::atomic<const void*> lock_of_system = nullptr;
/// So often this thread reads the system.
thread_local int reads_system = 0;

constexpr long kPatienceNanoseconds = 200'000'000;
constexpr long kPauseNanoseconds = 2'000'000;
constexpr long kNanoseconds = 1'000'000'000;

using Lock = int(pthread_rwlock_t*);
using TimedLock = int(pthread_rwlock_t*, const timespec*);

Lock* library(const char* name) {
  return reinterpret_cast<Lock*>(dlsym(RTLD_NEXT, name));
}

Lock* library_read() {
  static Lock* const lock = library("pthread_rwlock_rdlock");
  return lock;
}

Lock* library_unlock() {
  static Lock* const unlock = library("pthread_rwlock_unlock");
  return unlock;
}

timespec soon() {
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  time.tv_nsec += kPatienceNanoseconds;
  time.tv_sec += time.tv_nsec / kNanoseconds;
  time.tv_nsec %= kNanoseconds;
  return time;
}

/// Lets those go on who wait to write to the system.
void let_others_pass(pthread_rwlock_t* system) {
  for (int i = 0; i < reads_system; ++i) {
    library_unlock()(system);
  }
  const timespec pause{0, kPauseNanoseconds};
  nanosleep(&pause, nullptr);
  for (int i = 0; i < reads_system; ++i) {
    library_read()(system);
  }
}

/// Takes another lock while this thread reads the system.
int take_in_order(pthread_rwlock_t* lock, TimedLock* take) {
  auto* const system = static_cast<pthread_rwlock_t*>(const_cast<void*>(lock_of_system.load()));
  for (;;) {
    const timespec latest = soon();
    const int result = take(lock, &latest);
    if (result != ETIMEDOUT) {
      return result;
    }
    let_others_pass(system);
  }
}

}  // namespace

void keep_lock_order(pappl_system_t* system) {
  lock_of_system = system;
}

}  // namespace rlx::printer_app

extern "C" {

int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept {
  using namespace rlx::printer_app;
  const bool is_system = lock == lock_of_system;
  const int result = reads_system > 0 && !is_system
                         ? take_in_order(lock, pthread_rwlock_timedrdlock)
                         : library_read()(lock);
  reads_system += is_system && result == 0 ? 1 : 0;
  return result;
}

int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
  using namespace rlx::printer_app;
  static Lock* const library_write = library("pthread_rwlock_wrlock");
  return reads_system > 0 && lock != lock_of_system
             ? take_in_order(lock, pthread_rwlock_timedwrlock)
             : library_write(lock);
}

int pthread_rwlock_unlock(pthread_rwlock_t* lock) noexcept {
  using namespace rlx::printer_app;
  reads_system -= lock == lock_of_system && reads_system > 0 ? 1 : 0;
  return library_unlock()(lock);
}
}
