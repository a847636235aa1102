// SPDX-License-Identifier: Apache-2.0
#include "interruption.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace kestrelctl {

Interruption::Interruption() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  signals_ = signalfd(-1, &signals, SFD_CLOEXEC);
  if (signals_ >= 0) {
    sigprocmask(SIG_BLOCK, &signals, nullptr);
  }
}

Interruption::~Interruption() { close(signals_); }

WaitEnd Interruption::WaitFor(std::chrono::milliseconds time, int output) const {
  // POLLERR and POLLHUP, which tell that the reader has gone, need not be asked for.
  pollfd events[] = {{signals_, POLLIN, 0}, {output, 0, 0}};
  // The kernel itself resumes a poll after a stop and a continue.
  if (poll(events, 2, static_cast<int>(time.count())) <= 0) {
    return WaitEnd::kTime;
  }
  // Ctrl-C ends the reader as well, which is then no failure; the signal may come a little later.
  return poll(events, 1, 0) > 0 ? WaitEnd::kSignal : WaitEnd::kLostReader;
}

}  // namespace kestrelctl
