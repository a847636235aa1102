// SPDX-License-Identifier: Apache-2.0
#include "output.h"

#include <cstdio>

#include "failure.h"

namespace kestrelctl {

bool Print(const std::string& text) {
  if (fwrite(text.data(), 1, text.size(), stdout) != text.size() || fflush(stdout) != 0) {
    ReportFailure("standard output");
    return false;
  }
  return true;
}

}  // namespace kestrelctl
