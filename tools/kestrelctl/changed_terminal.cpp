// SPDX-License-Identifier: Apache-2.0
#include "changed_terminal.h"

namespace kestrelctl {
namespace {

termios Raw(const termios& before) {
  termios raw = before;
  cfmakeraw(&raw);
  raw.c_oflag = before.c_oflag;
  return raw;
}

termios Quiet(const termios& before) {
  termios quiet = before;
  quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  // Lines, and a visible end of them.
  quiet.c_lflag |= ICANON | ISIG | ECHONL;
  return quiet;
}

}  // namespace

ChangedTerminal::ChangedTerminal(int descriptor, TerminalMode mode)
    : descriptor_(descriptor), mode_(mode) {
  if (tcgetattr(descriptor, &before_) != 0) {
    return;
  }
  changed_ = mode == TerminalMode::kRaw ? Raw(before_) : Quiet(before_);
  is_changed_ = Resume();
}

ChangedTerminal::~ChangedTerminal() {
  if (is_changed_) {
    Restore();
  }
}

// Neither TCSADRAIN nor TCSAFLUSH here: a terminal that has stopped its output must not keep the
// program.

void ChangedTerminal::Restore() const {
  if (mode_ == TerminalMode::kQuiet) {
    tcflush(descriptor_, TCIFLUSH);
  }
  tcsetattr(descriptor_, TCSANOW, &before_);
}

bool ChangedTerminal::Resume() const {
  const bool is_set = tcsetattr(descriptor_, TCSANOW, &changed_) == 0;
  if (is_set && mode_ == TerminalMode::kQuiet) {
    tcflush(descriptor_, TCIFLUSH);
  }
  return is_set;
}

}  // namespace kestrelctl
