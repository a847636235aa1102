// SPDX-License-Identifier: Apache-2.0
#include "gpio/gpio_manager.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/gpio.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <nwl/mutex>

#include "gpio/device_failure.h"
#include "gpio/line_request.h"

namespace kestrel::gpio {
namespace {

constexpr char kChipPath[] = "/dev/gpiochip0";

nwl::Mutex g_chip_mutex;

bool IsLineOfChip(GpioLineId line, const gpiochip_info& info) {
  return line >= 0 && static_cast<uint32_t>(line) < info.lines;
}

}  // namespace

GpioManager::~GpioManager() {
  if (chip_fd_ >= 0) {
    close(chip_fd_);
  }
}

int32_t GpioManager::EnsureChipIsOpen() {
  if (chip_fd_ < 0) {
    const nwl::LockGuard guard(g_chip_mutex);
    if (chip_fd_ < 0) {
      chip_fd_ = open(kChipPath, O_RDONLY);
    }
  }
  return chip_fd_;
}

int32_t GpioManager::OpenLine(GpioLineId line, uint32_t flags, GpioLevel level) {
  const int32_t chip_fd = EnsureChipIsOpen();
  if (chip_fd < 0) {
    return ReportDeviceFailure("opening GPIO chip");
  }
  gpiochip_info info{};
  if (ioctl(chip_fd, GPIO_GET_CHIPINFO_IOCTL, &info) < 0) {
    return ReportDeviceFailure("getting GPIO info");
  }
  if (!IsLineOfChip(line, info)) {
    errno = ENODEV;
    return -1;
  }
  gpiohandle_request request;
  FillLineRequest(line, flags, level, &request);
  if (ioctl(chip_fd, GPIO_GET_LINEHANDLE_IOCTL, &request) < 0) {
    return ReportDeviceFailure("opening GPIO");
  }
  return request.fd;
}

GpioManager& GetGpioManager() {
  static GpioManager instance;
  return instance;
}

}  // namespace kestrel::gpio
