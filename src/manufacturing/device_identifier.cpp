// SPDX-License-Identifier: Apache-2.0
#include "manufacturing/device_identifier.h"

#include <errno.h>
#include <stdio.h>

#include <memory>
#include <new>

#include "core/refuse.h"

namespace kestrel::manufacturing {
namespace {

void WriteHexadecimal(const uint8_t (&bytes)[kDeviceIdLength], char* text) {
  for (const uint8_t byte : bytes) {
    snprintf(text, 3, "%02X", byte);
    text += 2;
  }
}

}  // namespace

int WriteDeviceId(char* text) {
  const std::unique_ptr<SecurityManager> manager(new (std::nothrow) SecurityManager);
  if (manager == nullptr) {
    fputs("Failed to create SecurityManager.\n", stderr);
    fputs("[Kestrel:Manufacturing] error querying device state\n", stderr);
    return Refuse(EPERM);
  }
  const nwl::Expected<DeviceStateRecord> state = manager->QueryDeviceState();
  if (!state.has_value()) {
    fprintf(stderr, "[Kestrel:Manufacturing] error retrieving device state: %d\n",
            state.error().value);
    return Refuse(EACCES);
  }
  WriteHexadecimal(state.value().device_id, text);
  return kDeviceIdTextSize;
}

}  // namespace kestrel::manufacturing
