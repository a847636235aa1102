// SPDX-License-Identifier: Apache-2.0
#include "quiet_terminal.h"

namespace kestrelctl {

QuietTerminal::QuietTerminal(int descriptor) : descriptor_(descriptor) {
  if (tcgetattr(descriptor, &before_) != 0) {
    return;
  }
  termios quiet = before_;
  quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  // Lines, and a visible end of them.
  quiet.c_lflag |= ICANON | ISIG | ECHONL;
  is_quiet_ = tcsetattr(descriptor, TCSANOW, &quiet) == 0;
  tcflush(descriptor, TCIFLUSH);
}

QuietTerminal::~QuietTerminal() {
  // Not TCSAFLUSH: a terminal that has stopped its output must not keep the program.
  if (is_quiet_) {
    tcflush(descriptor_, TCIFLUSH);
    tcsetattr(descriptor_, TCSANOW, &before_);
  }
}

}  // namespace kestrelctl
