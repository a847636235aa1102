// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_GPIO_LINE_FLAGS_H
#define KESTREL_BOARD_DEVICES_GPIO_LINE_FLAGS_H

#include <cstdint>

#include "devices/gpio/gpio_chip.h"

namespace kestrel::board::gpio {

/// The kernel's rules for the flags of a line-handle request.
bool AreValidRequestFlags(uint32_t flags);

/// GPIOLINE_FLAG_* of a line, as GPIO_GET_LINEINFO_IOCTL reports them.
uint32_t InfoFlags(const Line& line);

/// "push-pull", "open-drain" or "open-source" for an output.
const char* DriveName(const Line& line);

}  // namespace kestrel::board::gpio

#endif  // KESTREL_BOARD_DEVICES_GPIO_LINE_FLAGS_H
