// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_OUTPUT_H
#define KESTREL_TOOLS_KESTRELCTL_OUTPUT_H

#include <string>

namespace kestrelctl {

enum class Format { kText, kJson };

/// Writes `text` to standard output at once. Returns false after reporting a failure.
bool Print(const std::string& text);

/// Reports what the next Print would: that nobody reads standard output. Returns kFailed.
int ReportLostReader();

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_OUTPUT_H
