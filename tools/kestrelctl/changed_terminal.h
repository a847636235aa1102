// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_CHANGED_TERMINAL_H
#define KESTREL_TOOLS_KESTRELCTL_CHANGED_TERMINAL_H

#include <termios.h>

namespace kestrelctl {

enum class TerminalMode {
  /// Every key comes at once and as it is, without echo or signals. What is written to the terminal
  /// is shown as before.
  kRaw,
  /// Lines are read without being shown. What has been typed and not been read is dropped when the
  /// mode begins and when it ends.
  kQuiet,
};

/// A terminal in another mode until the end of the scope.
class ChangedTerminal {
 public:
  ChangedTerminal(int descriptor, TerminalMode mode);
  ~ChangedTerminal();
  ChangedTerminal(const ChangedTerminal&) = delete;
  ChangedTerminal& operator=(const ChangedTerminal&) = delete;

  /// Otherwise errno tells why not.
  bool is_changed() const { return is_changed_; }

  /// Gives the terminal back for a while.
  void Restore() const;
  /// Changes the mode again; false with errno when that fails.
  bool Resume() const;

 private:
  int descriptor_;
  TerminalMode mode_;
  termios before_{};
  termios changed_{};
  bool is_changed_ = false;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_CHANGED_TERMINAL_H
