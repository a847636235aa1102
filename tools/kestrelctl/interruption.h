// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_INTERRUPTION_H
#define KESTREL_TOOLS_KESTRELCTL_INTERRUPTION_H

#include <chrono>

namespace kestrelctl {

enum class WaitEnd { kTime, kSignal, kLostReader };

/// From its making on, SIGINT and SIGTERM end a wait instead of the program.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  /// Waits for as long as `time`, or until nobody can read any more what is written to the
  /// descriptor `output`. Returns what ended the wait.
  WaitEnd WaitFor(std::chrono::milliseconds time, int output = -1) const;

 private:
  int signals_;  ///< readable once a signal has come
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_INTERRUPTION_H
