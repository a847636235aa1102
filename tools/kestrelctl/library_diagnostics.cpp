// SPDX-License-Identifier: Apache-2.0
#include "library_diagnostics.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace kestrelctl {
namespace {

bool g_show = false;

}  // namespace

void ShowLibraryDiagnostics(bool show) { g_show = show; }

LibraryCall::LibraryCall() {
  const int nowhere = g_show ? -1 : open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0) {
    return;
  }
  standard_error_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (standard_error_ >= 0) {
    dup2(nowhere, STDERR_FILENO);
  }
  close(nowhere);
}

LibraryCall::~LibraryCall() {
  const int error_of_the_call = errno;
  if (standard_error_ >= 0) {
    dup2(standard_error_, STDERR_FILENO);
    close(standard_error_);
  }
  errno = error_of_the_call;
}

}  // namespace kestrelctl
