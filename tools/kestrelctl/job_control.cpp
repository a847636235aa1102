// SPDX-License-Identifier: Apache-2.0
#include "job_control.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace kestrelctl {
namespace {

sigset_t SetOf(int signal) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  return set;
}

/// Stops as if the signal had not been caught, until somebody continues the program. Where nobody
/// could, in a process group without a shell, the kernel does not stop it.
void Stop() {
  const sigset_t stop = SetOf(SIGTSTP);
  raise(SIGTSTP);
  sigprocmask(SIG_UNBLOCK, &stop, nullptr);
  sigprocmask(SIG_BLOCK, &stop, nullptr);
}

}  // namespace

JobControl::JobControl() {
  sigset_t signals = SetOf(SIGTSTP);
  sigaddset(&signals, SIGCONT);
  signals_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  if (signals_ >= 0) {
    sigprocmask(SIG_BLOCK, &signals, nullptr);
  }
}

JobControl::~JobControl() { close(signals_); }

void JobControl::Heed(const ChangedTerminal& terminal) const {
  signalfd_siginfo signal{};
  while (read(signals_, &signal, sizeof signal) == static_cast<ssize_t>(sizeof signal)) {
    if (signal.ssi_signo == SIGTSTP) {
      terminal.Restore();
      Stop();
    }
    // After a stop that cannot be caught (SIGSTOP) the shell has changed the terminal as well.
    terminal.Resume();
  }
}

}  // namespace kestrelctl
