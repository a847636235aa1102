// SPDX-License-Identifier: Apache-2.0
#include <nwl/assertion>
#include <nwl/mutex>

namespace nwl {

void Mutex::lock() {
  const int result = pthread_mutex_lock(&mutex_);
  if (result != 0) {
    assertion_failed("result == 0", "libs/libnwl/src/mutex", 25, "lock");
  }
}

void Mutex::unlock() {
  const int result = pthread_mutex_unlock(&mutex_);
  if (result != 0) {
    assertion_failed("result == 0", "libs/libnwl/src/mutex", 51, "unlock");
  }
}

}  // namespace nwl
