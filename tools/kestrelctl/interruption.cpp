// SPDX-License-Identifier: Apache-2.0
#include "interruption.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace kestrelctl {

Interruption::Interruption(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) {
    sigaddset(&set, signal);
  }
  signals_ = signalfd(-1, &set, SFD_CLOEXEC);
  sigprocmask(SIG_BLOCK, nullptr, &before_);
  if (signals_ >= 0) {
    sigprocmask(SIG_BLOCK, &set, nullptr);
  }
}

Interruption::~Interruption() { close(signals_); }

void Interruption::LetGo() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }

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
