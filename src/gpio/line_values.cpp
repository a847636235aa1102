// SPDX-License-Identifier: Apache-2.0
#include "gpio/line_values.h"

#include <linux/gpio.h>
#include <sys/ioctl.h>

#include "gpio/device_failure.h"

namespace kestrel::gpio {

int SetLineLevel(int line_fd, GpioLevel level) {
  gpiohandle_data data{};
  data.values[0] = level;
  if (ioctl(line_fd, GPIOHANDLE_SET_LINE_VALUES_IOCTL, &data) < 0) {
    return ReportDeviceFailure("setting GPIO value");
  }
  return 0;
}

int GetLineLevel(int line_fd, GpioLevel* level) {
  gpiohandle_data data{};
  if (ioctl(line_fd, GPIOHANDLE_GET_LINE_VALUES_IOCTL, &data) < 0) {
    return ReportDeviceFailure("getting GPIO value");
  }
  *level = data.values[0] != 0 ? GpioLevel_High : GpioLevel_Low;
  return 0;
}

}  // namespace kestrel::gpio
