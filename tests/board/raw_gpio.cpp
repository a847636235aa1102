// SPDX-License-Identifier: Apache-2.0
#include "raw_gpio.h"

#include <fcntl.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>

namespace kestrel::test {

int OpenChipDevice(int flags) {
  const int chip = open("/dev/gpiochip0", O_RDONLY | O_CLOEXEC | flags);
  return chip < 0 ? -errno : chip;
}

int RequestLine(int chip, uint32_t line, uint32_t flags, uint8_t value) {
  return RequestLines(chip, {line}, flags, {value});
}

int RequestLines(int chip, std::initializer_list<uint32_t> lines, uint32_t flags,
                 std::initializer_list<uint8_t> values) {
  gpiohandle_request request{};
  std::copy(lines.begin(), lines.end(), request.lineoffsets);
  std::copy(values.begin(), values.end(), request.default_values);
  request.lines = static_cast<uint32_t>(lines.size());
  request.flags = flags;
  std::copy_n("tester", 7, request.consumer_label);
  return ioctl(chip, GPIO_GET_LINEHANDLE_IOCTL, &request) < 0 ? -errno : request.fd;
}

int SetLine(int handle, uint8_t value) {
  gpiohandle_data data{};
  data.values[0] = value;
  return ioctl(handle, GPIOHANDLE_SET_LINE_VALUES_IOCTL, &data) < 0 ? -errno : 0;
}

int GetLine(int handle) {
  gpiohandle_data data{};
  return ioctl(handle, GPIOHANDLE_GET_LINE_VALUES_IOCTL, &data) < 0 ? -errno : data.values[0];
}

gpioline_info LineInfo(int chip, uint32_t line) {
  gpioline_info info{};
  info.line_offset = line;
  if (ioctl(chip, GPIO_GET_LINEINFO_IOCTL, &info) < 0) {
    info.flags = UINT32_MAX;
  }
  return info;
}

}  // namespace kestrel::test
