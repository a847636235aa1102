// SPDX-License-Identifier: Apache-2.0
#include "failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kestrelctl {
namespace {

std::string InParentheses(int error, const std::vector<Meaning>& meanings) {
  for (const Meaning& meaning : meanings) {
    if (meaning.error == error) {
      return std::string(" (") + meaning.text + ")";
    }
  }
  return "";
}

}  // namespace

int ReportFailure(const std::string& what, const std::vector<Meaning>& meanings) {
  const int error = errno;
  const char* const name = strerrorname_np(error);
  const std::string name_or_number = name != nullptr ? name : std::to_string(error);
  fprintf(stderr, "kestrelctl: %s: %s: %s%s\n", what.c_str(), name_or_number.c_str(),
          strerror(error), InParentheses(error, meanings).c_str());
  return kFailed;
}

int ReportProblem(const std::string& message) {
  fprintf(stderr, "kestrelctl: %s\n", message.c_str());
  return kFailed;
}

int ReportUsageError(const std::string& message) {
  std::string line = message;
  std::replace(line.begin(), line.end(), '\n', ' ');
  fprintf(stderr, "kestrelctl: %s\n", line.c_str());
  return kUsageError;
}

}  // namespace kestrelctl
