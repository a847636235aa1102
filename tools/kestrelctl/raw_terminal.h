// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_RAW_TERMINAL_H
#define KESTREL_TOOLS_KESTRELCTL_RAW_TERMINAL_H

#include <termios.h>

namespace kestrelctl {

/// Makes a terminal give every key at once and as it is, without echo or signals, and restores it
/// at the end of the scope. What is written to it is shown as before.
class RawTerminal {
 public:
  explicit RawTerminal(int descriptor);
  ~RawTerminal();
  RawTerminal(const RawTerminal&) = delete;
  RawTerminal& operator=(const RawTerminal&) = delete;

  /// Otherwise errno tells why not.
  bool is_raw() const { return is_raw_; }

 private:
  int descriptor_;
  termios before_{};
  bool is_raw_ = false;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_RAW_TERMINAL_H
