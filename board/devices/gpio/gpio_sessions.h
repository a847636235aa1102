// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_GPIO_GPIO_SESSIONS_H
#define KESTREL_BOARD_DEVICES_GPIO_GPIO_SESSIONS_H

#include <memory>

#include "devices/device.h"
#include "devices/gpio/gpio_chip.h"

namespace kestrel::board::gpio {

inline constexpr char kChipPath[] = "/dev/gpiochip0";
/// What faults call the descriptor of a line handle.
inline constexpr char kLineDescriptor[] = "line";

/// An open descriptor of the chip. Lines requested through it stay with their own descriptors.
std::unique_ptr<Session> OpenChip(std::shared_ptr<GpioChip> chip);

/// The requests of the chip and of line handles, for faults.
std::vector<NamedRequest> Requests();

}  // namespace kestrel::board::gpio

#endif  // KESTREL_BOARD_DEVICES_GPIO_GPIO_SESSIONS_H
