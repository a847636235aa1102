// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_INTERRUPTION_H
#define KESTREL_TOOLS_KESTRELCTL_INTERRUPTION_H

#include <signal.h>

#include <chrono>

namespace kestrelctl {

/// From its making on, SIGINT and SIGTERM end a wait instead of the program.
class Interruption {
 public:
  Interruption();

  /// Waits for as long as `time`. Returns true when a signal ended the wait.
  bool WaitFor(std::chrono::milliseconds time) const;

 private:
  sigset_t signals_;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_INTERRUPTION_H
