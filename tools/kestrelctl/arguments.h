// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_ARGUMENTS_H
#define KESTREL_TOOLS_KESTRELCTL_ARGUMENTS_H

#include <kestrel/gpio.h>

#include <chrono>
#include <string>
#include <vector>

namespace kestrelctl {

using Milliseconds = std::chrono::milliseconds;

struct LineAndLevel {
  GpioLineId line;
  GpioLevel level;
};

// Each turns what was typed into its meaning, or throws a CLI::ValidationError whose one line says
// what would have been right.
std::vector<GpioLineId> ParseLines(const std::vector<std::string>& texts);
std::vector<LineAndLevel> ParseAssignments(const std::vector<std::string>& texts);
GpioDriveMode ParseDrive(const std::string& text);
Milliseconds ParseHold(const std::string& seconds);
Milliseconds ParseInterval(const std::string& milliseconds);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_ARGUMENTS_H
