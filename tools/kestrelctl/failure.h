// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_FAILURE_H
#define KESTREL_TOOLS_KESTRELCTL_FAILURE_H

#include <string>
#include <vector>

namespace kestrelctl {

// Exit statuses.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsageError = 2;
inline constexpr int kNoAnswer = 3;  ///< of commands to which 0 and 1 are two answers

/// What an errno means where it came up.
struct Meaning {
  int error;
  const char* text;
};

/// Prints "kestrelctl: WHAT: NAME: text" with the name and the text of errno, and its meaning, if
/// one of `meanings` is for it, in parentheses. Returns kFailed.
int ReportFailure(const std::string& what, const std::vector<Meaning>& meanings = {});

/// Prints "kestrelctl: MESSAGE" about a failure that has no errno. Returns kFailed.
int ReportProblem(const std::string& message);

/// Prints "kestrelctl: MESSAGE" in one line, whatever was typed. Returns kUsageError.
int ReportUsageError(const std::string& message);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_FAILURE_H
