// SPDX-License-Identifier: Apache-2.0
#include "support/broken_standard_error.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace kestrel::test {
namespace {

int SavedStandardError() {
  const int saved = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (saved < 0) {
    abort();
  }
  return saved;
}

void RestoreStandardError(int saved) {
  dup2(saved, STDERR_FILENO);
  close(saved);
}

}  // namespace

ClosedStandardError::ClosedStandardError() : saved_(SavedStandardError()) { close(STDERR_FILENO); }

ClosedStandardError::~ClosedStandardError() { RestoreStandardError(saved_); }

FullStandardError::FullStandardError() : saved_(SavedStandardError()) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  if (full < 0 || dup2(full, STDERR_FILENO) < 0) {
    abort();
  }
  close(full);
}

FullStandardError::~FullStandardError() { RestoreStandardError(saved_); }

}  // namespace kestrel::test
