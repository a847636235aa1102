// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_MANUFACTURING_SECURITY_MANAGER_H
#define KESTREL_MANUFACTURING_SECURITY_MANAGER_H

#include <linux/ioctl.h>
#include <stdint.h>

#include <nwl/expected>

#include "core/file_owner.h"

namespace kestrel::manufacturing {

inline constexpr size_t kDeviceIdLength = 64;

/// What the driver of the security processor tells about the device.
struct DeviceStateRecord {
  uint8_t other_state[68];
  uint8_t device_id[kDeviceIdLength];
};
static_assert(sizeof(DeviceStateRecord) == 132);

inline constexpr uint32_t kGetDeviceState = _IOWR('p', 0x01, DeviceStateRecord);
static_assert(kGetDeviceState == 0xC0847001);

/// Owns the descriptors of the two security device nodes, both for the length of one call.
class SecurityManager {
 public:
  /// Opens both. One that cannot be opened is found out by whoever needs it.
  SecurityManager();
  ~SecurityManager();
  SecurityManager(const SecurityManager&) = delete;
  SecurityManager& operator=(const SecurityManager&) = delete;

  /// Asks the driver. The error is ENOTCONN where there is no driver to ask, and otherwise the
  /// driver's own negative answer.
  nwl::Expected<DeviceStateRecord> QueryDeviceState() const;

 private:
  // Not asked anything, but held open while the other is.
  FileOwner lodestone_;
  FileOwner warden_;
};
static_assert(sizeof(SecurityManager) == 8);

}  // namespace kestrel::manufacturing

#endif  // KESTREL_MANUFACTURING_SECURITY_MANAGER_H
