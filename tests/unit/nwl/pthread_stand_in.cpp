// SPDX-License-Identifier: Apache-2.0
#include "unit/nwl/pthread_stand_in.h"

#include <dlfcn.h>

namespace kestrel::test {

WatchedMutex g_watched_mutex;
std::atomic<int> g_all_locks{0};
std::atomic<int> g_all_unlocks{0};

namespace {

using Call = int (*)(pthread_mutex_t*);

Call RealCall(const char* name) { return reinterpret_cast<Call>(dlsym(RTLD_NEXT, name)); }

}  // namespace
}  // namespace kestrel::test

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  using kestrel::test::g_watched_mutex;
  ++kestrel::test::g_all_locks;
  if (mutex == g_watched_mutex.address) {
    ++g_watched_mutex.locks;
    if (g_watched_mutex.lock_result != 0) {
      return g_watched_mutex.lock_result;
    }
  }
  return kestrel::test::RealCall("pthread_mutex_lock")(mutex);
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  using kestrel::test::g_watched_mutex;
  ++kestrel::test::g_all_unlocks;
  if (mutex == g_watched_mutex.address) {
    ++g_watched_mutex.unlocks;
    if (g_watched_mutex.unlock_result != 0) {
      return g_watched_mutex.unlock_result;
    }
  }
  return kestrel::test::RealCall("pthread_mutex_unlock")(mutex);
}
