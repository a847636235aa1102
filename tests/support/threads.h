// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_THREADS_H
#define KESTREL_TESTS_SUPPORT_THREADS_H

#include <cstddef>
#include <thread>
#include <vector>

namespace kestrel::test {

/// Calls `function` with 0 to `count` - 1, each on a thread of its own, and waits for all of them.
template <typename Function>
void OnThreads(size_t count, const Function& function) {
  std::vector<std::thread> threads;
  threads.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    threads.emplace_back([&function, i] { function(i); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_THREADS_H
