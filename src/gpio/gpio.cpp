// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/gpio.h>
#include <linux/gpio.h>

#include "core/refuse.h"
#include "gpio/gpio_manager.h"
#include "gpio/line_request.h"
#include "gpio/line_values.h"

using kestrel::Refuse;

namespace {

bool IsLevel(GpioLevel level) { return level == GpioLevel_Low || level == GpioLevel_High; }

}  // namespace

int GPIO_OpenAsOutput(GpioLineId line, GpioDriveMode mode, GpioLevel initial) {
  kestrel::gpio::GpioManager& manager = kestrel::gpio::GetGpioManager();
  const uint32_t flags = kestrel::gpio::OutputFlags(mode);
  if (flags == 0 || !IsLevel(initial)) {
    return Refuse(EINVAL);
  }
  return manager.OpenLine(line, flags, initial);
}

int GPIO_OpenAsInput(GpioLineId line) {
  return kestrel::gpio::GetGpioManager().OpenLine(line, GPIOHANDLE_REQUEST_INPUT,
                                                  kestrel::gpio::kNoLevel);
}

int GPIO_SetValue(int fd, GpioLevel value) {
  kestrel::gpio::GetGpioManager();
  if (!IsLevel(value)) {
    return Refuse(EINVAL);
  }
  if (fd < 0) {
    return Refuse(EBADF);
  }
  return kestrel::gpio::SetLineLevel(fd, value);
}

int GPIO_GetValue(int fd, GpioLevel* value) {
  kestrel::gpio::GetGpioManager();
  if (value == nullptr) {
    return Refuse(EFAULT);
  }
  if (fd < 0) {
    return Refuse(EBADF);
  }
  return kestrel::gpio::GetLineLevel(fd, value);
}
