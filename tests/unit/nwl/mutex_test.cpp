// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <pthread.h>
#include <string.h>

#include <nwl/mutex>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

static_assert(sizeof(nwl::Mutex) == sizeof(pthread_mutex_t));
static_assert(std::is_trivially_destructible_v<nwl::Mutex>);
static_assert(!std::is_copy_constructible_v<nwl::Mutex>);
static_assert(!std::is_copy_constructible_v<nwl::LockGuard>);

// Compiles only when a mutex needs no code to run before it can be used.
constexpr nwl::Mutex kNeedsNoConstruction;

TEST(Mutex, HasDefaultAttributes) {
  constexpr pthread_mutex_t kFresh = PTHREAD_MUTEX_INITIALIZER;
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): every byte is set by the initialiser
  EXPECT_EQ(memcmp(static_cast<const void*>(&kNeedsNoConstruction), &kFresh, sizeof kFresh), 0);
}

TEST(Mutex, LocksAgainAfterUnlock) {
  nwl::Mutex mutex;
  mutex.lock();
  mutex.unlock();
  mutex.lock();
  mutex.unlock();
}

TEST(Mutex, LetsOneThreadInAtATime) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 5000;
  nwl::Mutex mutex;
  int count = 0;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        const nwl::LockGuard guard(mutex);
        ++count;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(count, kThreads * kRounds);
}

}  // namespace
