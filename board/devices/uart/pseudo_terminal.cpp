// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/pseudo_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>

#include "devices/uart/serial_settings.h"
#include "host/error.h"

namespace kestrel::board::uart {

PseudoTerminal::PseudoTerminal() : wire_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
  char path[64];
  if (!wire_.valid() || grantpt(wire_.get()) != 0 || unlockpt(wire_.get()) != 0 ||
      ptsname_r(wire_.get(), path, sizeof path) != 0) {
    ThrowErrno("a pseudo-terminal for a serial port");
  }
  path_ = path;
  // The kernel tells that nobody has the programs' side open only when somebody has had it.
  const UniqueFd first = OpenFile();
  const termios settings = FreshSettings(Settings());
  if (!first.valid() || tcsetattr(first.get(), TCSANOW, &settings) != 0) {
    ThrowErrno(path_);
  }
}

bool PseudoTerminal::IsOpen() const {
  pollfd wire{wire_.get(), 0, 0};
  poll(&wire, 1, 0);
  return (wire.revents & POLLHUP) == 0;
}

UniqueFd PseudoTerminal::OpenFile() const {
  return UniqueFd(ioctl(wire_.get(), TIOCGPTPEER, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
}

UniqueFd PseudoTerminal::Open() const {
  const bool is_first = !IsOpen();
  UniqueFd opened = OpenFile();
  if (is_first && opened.valid()) {
    tcflush(opened.get(), TCIFLUSH);
    // Output that an XOFF has stopped starts again only after it has been stopped this way too.
    tcflow(opened.get(), TCOOFF);
    tcflow(opened.get(), TCOON);
    ioctl(opened.get(), TIOCNXCL);
  }
  return opened;
}

termios PseudoTerminal::Settings() const {
  termios settings{};
  tcgetattr(wire_.get(), &settings);
  return settings;
}

}  // namespace kestrel::board::uart
