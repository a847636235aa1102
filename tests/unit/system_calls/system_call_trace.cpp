// SPDX-License-Identifier: Apache-2.0
#include "system_calls/system_call_trace.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace kestrel::test {
namespace {

/// What the child calls before and after the calls that count. Nothing else calls it.
constexpr long kMarker = SYS_getpgid;

[[noreturn]] void RunTraced(const std::function<void()>& function) {
  ptrace(PTRACE_TRACEME);
  raise(SIGSTOP);
  function();
  getpgid(0);
  function();
  getpgid(0);
  _exit(0);
}

/// How stops at system calls are told from those that signals cause.
constexpr int kSystemCallStop = SIGTRAP | 0x80;

/// Lets the child run to its next stop at a system call, with the signals that it gets on the way.
/// Returns whether it has one.
bool Continue(pid_t child) {
  int status = 0;
  long signal_number = 0;
  while (ptrace(PTRACE_SYSCALL, child, nullptr, signal_number) == 0 &&
         waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
    if (WSTOPSIG(status) == kSystemCallStop) {
      return true;
    }
    signal_number = WSTOPSIG(status);
  }
  return false;
}

/// The number of the system call that the stopped child is about to make, or -1.
long EnteredCall(pid_t child) {
  __ptrace_syscall_info info{};
  ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info);
  return info.op == PTRACE_SYSCALL_INFO_ENTRY ? static_cast<long>(info.entry.nr) : -1;
}

}  // namespace

std::vector<long> SystemCallsOf(const std::function<void()>& function) {
  const pid_t child = fork();
  if (child == 0) {
    RunTraced(function);
  }
  waitpid(child, nullptr, 0);
  // Marks the stops at system calls, without which the kernel does not tell about them.
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  std::vector<long> calls;
  int markers = 0;
  while (Continue(child)) {
    const long call = EnteredCall(child);
    if (call == kMarker) {
      ++markers;
    } else if (call != -1 && markers == 1) {
      calls.push_back(call);
    }
  }
  if (markers != 2) {
    throw std::runtime_error("the child could not be traced");
  }
  return calls;
}

}  // namespace kestrel::test
