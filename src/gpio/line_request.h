// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_GPIO_LINE_REQUEST_H
#define KESTREL_GPIO_LINE_REQUEST_H

#include <kestrel/gpio.h>
#include <linux/gpio.h>

namespace kestrel::gpio {

/// The level that stands for "set none": lines opened as inputs have no level of their own.
inline constexpr GpioLevel kNoLevel = 255;

/// The request flags of an output with drive mode `mode`, or 0 when there is no such mode.
uint32_t OutputFlags(GpioDriveMode mode);

/// Fills in the fields that the kernel reads for a request of one line and leaves every other byte
/// of `request` alone.
void FillLineRequest(GpioLineId line, uint32_t flags, GpioLevel level, gpiohandle_request* request);

}  // namespace kestrel::gpio

#endif  // KESTREL_GPIO_LINE_REQUEST_H
