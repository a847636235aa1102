// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_MANUFACTURING_DEVICE_STATE_H
#define KESTREL_BOARD_DEVICES_MANUFACTURING_DEVICE_STATE_H

#include <linux/ioctl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace kestrel::board::manufacturing {

/// What the security processor's driver tells in one piece.
struct DeviceState {
  std::array<uint8_t, 68> other;
  std::array<uint8_t, 64> identifier;
};
static_assert(sizeof(DeviceState) == 132 && offsetof(DeviceState, identifier) == 68);

inline constexpr uint32_t kGetDeviceState = _IOWR('p', 0x01, DeviceState);
static_assert(kGetDeviceState == 0xC0847001);

/// The state of a device of that name, the same on every machine and at all times.
DeviceState DeviceStateOf(const std::string& name);

}  // namespace kestrel::board::manufacturing

#endif  // KESTREL_BOARD_DEVICES_MANUFACTURING_DEVICE_STATE_H
