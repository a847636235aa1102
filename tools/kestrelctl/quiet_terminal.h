// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_QUIET_TERMINAL_H
#define KESTREL_TOOLS_KESTRELCTL_QUIET_TERMINAL_H

#include <termios.h>

namespace kestrelctl {

/// Keeps a terminal from showing what is typed, and restores it at the end of the scope. What has
/// been typed and not been read is dropped at both ends.
class QuietTerminal {
 public:
  explicit QuietTerminal(int descriptor);
  ~QuietTerminal();
  QuietTerminal(const QuietTerminal&) = delete;
  QuietTerminal& operator=(const QuietTerminal&) = delete;

  /// Otherwise errno tells why not.
  bool is_quiet() const { return is_quiet_; }

 private:
  int descriptor_;
  termios before_{};
  bool is_quiet_ = false;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_QUIET_TERMINAL_H
