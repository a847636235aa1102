// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <nwl/mutex>
#include <stdexcept>

#include "unit/nwl/pthread_stand_in.h"

namespace {

using kestrel::test::g_watched_mutex;

constexpr char kLockFailed[] =
    ": libs/libnwl/src/mutex:25: lock: Assertion `result == 0' failed\\.\n(qemu: [^\n]*\n)?$";
constexpr char kUnlockFailed[] =
    ": libs/libnwl/src/mutex:51: unlock: Assertion `result == 0' failed\\.\n(qemu: [^\n]*\n)?$";

class Mutex : public testing::Test {
 protected:
  void SetUp() override { g_watched_mutex.address = &mutex_; }
  void TearDown() override { g_watched_mutex = {}; }

  nwl::Mutex mutex_;
};

using MutexDeathTest = Mutex;
using LockGuard = Mutex;

TEST_F(MutexDeathTest, AbortsWhenItCannotBeLocked) {
  for (const int result : {EINVAL, -1}) {
    g_watched_mutex.lock_result = result;
    EXPECT_EXIT(mutex_.lock(), testing::KilledBySignal(SIGABRT), kLockFailed) << result;
  }
}

TEST_F(MutexDeathTest, AbortsWhenItCannotBeUnlocked) {
  mutex_.lock();
  for (const int result : {EPERM, -1}) {
    g_watched_mutex.unlock_result = result;
    EXPECT_EXIT(mutex_.unlock(), testing::KilledBySignal(SIGABRT), kUnlockFailed) << result;
  }
  g_watched_mutex.unlock_result = 0;
  mutex_.unlock();
}

TEST_F(LockGuard, HoldsTheMutexForItsScope) {
  {
    const nwl::LockGuard guard(mutex_);
    EXPECT_EQ(g_watched_mutex.locks, 1);
    EXPECT_EQ(g_watched_mutex.unlocks, 0);
  }
  EXPECT_EQ(g_watched_mutex.unlocks, 1);
}

TEST_F(LockGuard, ReleasesTheMutexWhileAnExceptionPasses) {
  try {
    const nwl::LockGuard guard(mutex_);
    throw std::runtime_error("passes");
  } catch (const std::runtime_error&) {
    EXPECT_EQ(g_watched_mutex.unlocks, 1);
  }
  EXPECT_EQ(g_watched_mutex.locks, 1);
}

}  // namespace
