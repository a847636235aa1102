// SPDX-License-Identifier: Apache-2.0
#include "manufacturing/security_manager.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/ioctl.h>

namespace kestrel::manufacturing {
namespace {

constexpr char kLodestonePath[] = "/dev/lodestone";
constexpr char kWardenPath[] = "/dev/warden";

int32_t OpenNode(const char* path) { return open(path, O_RDONLY | O_CLOEXEC); }

}  // namespace

SecurityManager::SecurityManager()
    : lodestone_(OpenNode(kLodestonePath)), warden_(OpenNode(kWardenPath)) {}

SecurityManager::~SecurityManager() {
  // In the order of opening, which is not that of the members' own destruction.
  lodestone_.Close();
  warden_.Close();
}

nwl::Expected<DeviceStateRecord> SecurityManager::QueryDeviceState() const {
  if (warden_.get() == -1) {
    return nwl::error_code{ENOTCONN, &nwl::generic_category()};
  }
  DeviceStateRecord record{};
  const int result = ioctl(warden_.get(), kGetDeviceState, &record);
  if (result < 0) {
    return nwl::error_code{result, &nwl::generic_category()};
  }
  return record;
}

}  // namespace kestrel::manufacturing
