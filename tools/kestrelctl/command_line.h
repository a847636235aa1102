// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_COMMAND_LINE_H
#define KESTREL_TOOLS_KESTRELCTL_COMMAND_LINE_H

namespace kestrelctl {

/// Parses the arguments of the program and does what they ask for. Returns the exit status.
int RunCommandLine(int argc, char** argv);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_COMMAND_LINE_H
