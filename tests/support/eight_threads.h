// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_EIGHT_THREADS_H
#define KESTREL_TESTS_SUPPORT_EIGHT_THREADS_H

#include <array>
#include <cstddef>
#include <thread>

namespace kestrel::test {

/// Calls `function` with 0 to 7, each on a thread of its own, and waits for all of them.
template <typename Function>
void OnEightThreads(const Function& function) {
  std::array<std::thread, 8> threads;
  for (size_t i = 0; i < threads.size(); ++i) {
    threads[i] = std::thread([&function, i] { function(i); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_EIGHT_THREADS_H
