// SPDX-License-Identifier: Apache-2.0
#include "raw_terminal.h"

namespace kestrelctl {

RawTerminal::RawTerminal(int descriptor) : descriptor_(descriptor) {
  if (tcgetattr(descriptor, &before_) != 0) {
    return;
  }
  termios raw = before_;
  cfmakeraw(&raw);
  raw.c_oflag = before_.c_oflag;
  is_raw_ = tcsetattr(descriptor, TCSANOW, &raw) == 0;
}

RawTerminal::~RawTerminal() {
  // Not TCSADRAIN: a terminal that has stopped its output must not keep the program.
  if (is_raw_) {
    tcsetattr(descriptor_, TCSANOW, &before_);
  }
}

}  // namespace kestrelctl
