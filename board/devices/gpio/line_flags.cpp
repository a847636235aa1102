// SPDX-License-Identifier: Apache-2.0
#include "devices/gpio/line_flags.h"

#include <linux/gpio.h>

namespace kestrel::board::gpio {
namespace {

constexpr uint32_t kDrives = GPIOHANDLE_REQUEST_OPEN_DRAIN | GPIOHANDLE_REQUEST_OPEN_SOURCE;
constexpr uint32_t kBiases = GPIOHANDLE_REQUEST_BIAS_PULL_UP | GPIOHANDLE_REQUEST_BIAS_PULL_DOWN |
                             GPIOHANDLE_REQUEST_BIAS_DISABLE;
constexpr uint32_t kKnown = kDirections | kDrives | kBiases | GPIOHANDLE_REQUEST_ACTIVE_LOW;

struct FlagPair {
  uint32_t request;
  uint32_t info;
};

constexpr FlagPair kFlagPairs[] = {
    {GPIOHANDLE_REQUEST_OUTPUT, GPIOLINE_FLAG_IS_OUT},
    {GPIOHANDLE_REQUEST_ACTIVE_LOW, GPIOLINE_FLAG_ACTIVE_LOW},
    {GPIOHANDLE_REQUEST_OPEN_DRAIN, GPIOLINE_FLAG_OPEN_DRAIN},
    {GPIOHANDLE_REQUEST_OPEN_SOURCE, GPIOLINE_FLAG_OPEN_SOURCE},
    {GPIOHANDLE_REQUEST_BIAS_PULL_UP, GPIOLINE_FLAG_BIAS_PULL_UP},
    {GPIOHANDLE_REQUEST_BIAS_PULL_DOWN, GPIOLINE_FLAG_BIAS_PULL_DOWN},
    {GPIOHANDLE_REQUEST_BIAS_DISABLE, GPIOLINE_FLAG_BIAS_DISABLE},
};

bool HasMoreThanOneOf(uint32_t flags, uint32_t choices) {
  const uint32_t chosen = flags & choices;
  return (chosen & (chosen - 1)) != 0;
}

}  // namespace

bool AreValidRequestFlags(uint32_t flags) {
  if ((flags & ~kKnown) != 0 || HasMoreThanOneOf(flags, kDirections) ||
      HasMoreThanOneOf(flags, kDrives) || HasMoreThanOneOf(flags, kBiases)) {
    return false;
  }
  const bool drives_an_output = (flags & GPIOHANDLE_REQUEST_OUTPUT) != 0;
  const bool has_direction = (flags & kDirections) != 0;
  return ((flags & kDrives) == 0 || drives_an_output) && ((flags & kBiases) == 0 || has_direction);
}

uint32_t InfoFlags(const Line& line) {
  uint32_t info = line.IsBusy() ? GPIOLINE_FLAG_KERNEL : 0;
  for (const FlagPair& pair : kFlagPairs) {
    if ((line.flags & pair.request) != 0) {
      info |= pair.info;
    }
  }
  return info;
}

const char* DriveName(const Line& line) {
  if ((line.flags & GPIOHANDLE_REQUEST_OPEN_DRAIN) != 0) {
    return "open-drain";
  }
  return (line.flags & GPIOHANDLE_REQUEST_OPEN_SOURCE) != 0 ? "open-source" : "push-pull";
}

}  // namespace kestrel::board::gpio
