// SPDX-License-Identifier: Apache-2.0
#include "gpio/line_request.h"

#include <string.h>

namespace kestrel::gpio {
namespace {

constexpr char kConsumerLabel[] = "kestrel";
constexpr size_t kConsumerLabelLimit = 31;

constexpr uint32_t kOutputFlagsByDriveMode[] = {
    GPIOHANDLE_REQUEST_OUTPUT,                                   // GpioDriveMode_PushPull
    GPIOHANDLE_REQUEST_OUTPUT | GPIOHANDLE_REQUEST_OPEN_DRAIN,   // GpioDriveMode_OpenDrain
    GPIOHANDLE_REQUEST_OUTPUT | GPIOHANDLE_REQUEST_OPEN_SOURCE,  // GpioDriveMode_OpenSource
};

// The records are the kernel's; the device's kernel and this build must agree on them.
static_assert(sizeof(gpiochip_info) == 68);
static_assert(sizeof(gpiohandle_request) == 364);
static_assert(sizeof(gpiohandle_data) == 64);
static_assert(GPIO_GET_CHIPINFO_IOCTL == 0x8044B401);
static_assert(GPIO_GET_LINEHANDLE_IOCTL == 0xC16CB403);
static_assert(GPIOHANDLE_GET_LINE_VALUES_IOCTL == 0xC040B408);
static_assert(GPIOHANDLE_SET_LINE_VALUES_IOCTL == 0xC040B409);

}  // namespace

uint32_t OutputFlags(GpioDriveMode mode) {
  return mode <= GpioDriveMode_OpenSource ? kOutputFlagsByDriveMode[mode] : 0;
}

void FillLineRequest(GpioLineId line, uint32_t flags, GpioLevel level,
                     gpiohandle_request* request) {
  request->lineoffsets[0] = static_cast<uint32_t>(line);
  request->flags = flags;
  if (level <= GpioLevel_High) {
    request->default_values[0] = level;
  }
  strncpy(request->consumer_label, kConsumerLabel, kConsumerLabelLimit);
  request->lines = 1;
}

}  // namespace kestrel::gpio
