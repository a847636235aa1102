// SPDX-License-Identifier: Apache-2.0
#include "failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kestrelctl {

int ReportFailure(const std::string& what) {
  const int error = errno;
  const char* const name = strerrorname_np(error);
  const std::string name_or_number = name != nullptr ? name : std::to_string(error);
  fprintf(stderr, "kestrelctl: %s: %s: %s\n", what.c_str(), name_or_number.c_str(),
          strerror(error));
  return kFailed;
}

int ReportUsageError(const std::string& message) {
  std::string line = message;
  std::replace(line.begin(), line.end(), '\n', ' ');
  fprintf(stderr, "kestrelctl: %s\n", line.c_str());
  return kUsageError;
}

}  // namespace kestrelctl
