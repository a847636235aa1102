// SPDX-License-Identifier: Apache-2.0
#include "library_diagnostics.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdio>

namespace kestrelctl {
namespace {

bool g_show = false;

/// Makes standard error the file `target`. Returns what it was, or -1 when nothing has changed.
int ReplaceStandardError(int target) {
  const int before = target < 0 ? -1 : fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (before >= 0) {
    dup2(target, STDERR_FILENO);
  }
  return before;
}

void RestoreStandardError(int before) {
  if (before >= 0) {
    dup2(before, STDERR_FILENO);
    close(before);
  }
}

std::string ContentOf(int file) {
  std::string content;
  std::array<char, 512> buffer;
  ssize_t count = 0;
  while ((count = pread(file, buffer.data(), buffer.size(), static_cast<off_t>(content.size()))) >
         0) {
    content.append(buffer.data(), static_cast<size_t>(count));
  }
  return content;
}

}  // namespace

void ShowLibraryDiagnostics(bool show) { g_show = show; }

LibraryCall::LibraryCall() {
  const int nowhere = g_show ? -1 : open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0) {
    return;
  }
  standard_error_ = ReplaceStandardError(nowhere);
  close(nowhere);
}

LibraryCall::~LibraryCall() {
  const int error_of_the_call = errno;
  RestoreStandardError(standard_error_);
  errno = error_of_the_call;
}

CollectedLibraryCall::CollectedLibraryCall(std::string& printed)
    : printed_(printed),
      collection_(memfd_create("diagnostics", MFD_CLOEXEC)),
      standard_error_(ReplaceStandardError(collection_)) {}

CollectedLibraryCall::~CollectedLibraryCall() {
  RestoreStandardError(standard_error_);
  printed_ = ContentOf(collection_);
  close(collection_);
  if (g_show) {
    fputs(printed_.c_str(), stderr);
  }
}

}  // namespace kestrelctl
