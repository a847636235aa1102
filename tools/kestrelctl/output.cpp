// SPDX-License-Identifier: Apache-2.0
#include "output.h"

#include <cerrno>
#include <cstdio>

#include "failure.h"

namespace kestrelctl {
namespace {

int ReportFailedWrite() { return ReportFailure("standard output"); }

}  // namespace

bool Print(const std::string& text) {
  if (fwrite(text.data(), 1, text.size(), stdout) != text.size() || fflush(stdout) != 0) {
    ReportFailedWrite();
    return false;
  }
  return true;
}

int ReportLostReader() {
  errno = EPIPE;
  return ReportFailedWrite();
}

}  // namespace kestrelctl
