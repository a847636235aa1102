// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_FAILURE_H
#define KESTREL_TOOLS_KESTRELCTL_FAILURE_H

#include <string>

namespace kestrelctl {

// Exit statuses.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsageError = 2;

/// Prints "kestrelctl: WHAT: NAME: text" with the name and the text of errno. Returns kFailed.
int ReportFailure(const std::string& what);

/// Prints "kestrelctl: MESSAGE" in one line, whatever was typed. Returns kUsageError.
int ReportUsageError(const std::string& message);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_FAILURE_H
