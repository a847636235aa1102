// SPDX-License-Identifier: Apache-2.0
#include "standard_streams.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace kestrelctl {

void PrepareStandardStreams() {
  signal(SIGPIPE, SIG_IGN);
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) < 0) {
      // Read-only, so that writing still fails with EBADF. The lowest free descriptor is `fd`.
      open("/dev/null", O_RDONLY);
    }
  }
}

}  // namespace kestrelctl
