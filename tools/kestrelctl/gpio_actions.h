// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_GPIO_ACTIONS_H
#define KESTREL_TOOLS_KESTRELCTL_GPIO_ACTIONS_H

#include <kestrel/gpio.h>

#include <chrono>
#include <vector>

#include "arguments.h"
#include "output.h"

namespace kestrelctl {

struct Setting {
  std::vector<LineAndLevel> lines;
  GpioDriveMode drive;
  Milliseconds hold;
};

// Each does the work of one command, reports what fails, and returns the exit status.
int GetLines(const std::vector<GpioLineId>& numbers, Format format);
int SetLines(const Setting& setting, Format format);
int WatchLines(const std::vector<GpioLineId>& numbers, Milliseconds interval, Format format);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_GPIO_ACTIONS_H
