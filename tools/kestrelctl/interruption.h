// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_INTERRUPTION_H
#define KESTREL_TOOLS_KESTRELCTL_INTERRUPTION_H

#include <signal.h>

#include <chrono>
#include <initializer_list>

namespace kestrelctl {

enum class WaitEnd { kTime, kSignal, kLostReader };

/// From its making on, its signals end a wait instead of the program.
class Interruption {
 public:
  explicit Interruption(std::initializer_list<int> signals = {SIGINT, SIGTERM});
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  /// Waits for as long as `time`, or until nobody can read any more what is written to the
  /// descriptor `output`. Returns what ended the wait.
  WaitEnd WaitFor(std::chrono::milliseconds time, int output = -1) const;

  /// From here on its signals do to the program what they did before.
  void LetGo() const;

  /// A descriptor that can be read once a signal has come.
  int descriptor() const { return signals_; }

 private:
  int signals_;
  sigset_t before_;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_INTERRUPTION_H
