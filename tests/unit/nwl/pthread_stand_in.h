// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_NWL_PTHREAD_STAND_IN_H
#define KESTREL_TESTS_UNIT_NWL_PTHREAD_STAND_IN_H

#include <pthread.h>

#include <atomic>

namespace kestrel::test {

/// Watches one mutex through the program's own pthread_mutex_lock and pthread_mutex_unlock. Every
/// other mutex goes on to the C library.
struct WatchedMutex {
  const void* address = nullptr;
  int lock_result = 0;    ///< when not 0, what the lock returns without locking
  int unlock_result = 0;  ///< when not 0, what the unlock returns without unlocking
  int locks = 0;
  int unlocks = 0;
};

extern WatchedMutex g_watched_mutex;

/// The calls of both functions so far, for whatever mutex.
extern std::atomic<int> g_all_locks;
extern std::atomic<int> g_all_unlocks;

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_NWL_PTHREAD_STAND_IN_H
