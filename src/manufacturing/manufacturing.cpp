// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/manufacturing.h>

#include "core/refuse.h"
#include "manufacturing/device_identifier.h"

size_t Manufacturing_GetDeviceIdSize() { return kestrel::manufacturing::kDeviceIdTextSize; }

int Manufacturing_GetDeviceId(char* outDeviceId, size_t outDeviceIdSize) {
  if (outDeviceId == nullptr) {
    return kestrel::Refuse(EFAULT);
  }
  if (outDeviceIdSize < kestrel::manufacturing::kDeviceIdTextSize) {
    if (outDeviceIdSize != 0) {
      *outDeviceId = '\0';
    }
    return kestrel::Refuse(ERANGE);
  }
  return kestrel::manufacturing::WriteDeviceId(outDeviceId);
}
