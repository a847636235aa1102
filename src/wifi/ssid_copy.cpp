// SPDX-License-Identifier: Apache-2.0
#include "wifi/ssid_copy.h"

#include <stddef.h>
#include <string.h>

namespace wifi {
namespace {

size_t BytesToCopy(size_t length, [[maybe_unused]] const uint8_t* ssid,
                   [[maybe_unused]] const void* array_end) {
#ifdef KESTREL_BOUND_SSID_COPY
  const auto room = static_cast<size_t>(static_cast<const uint8_t*>(array_end) - ssid);
  return length < room ? length : room;
#else
  return length;
#endif
}

}  // namespace

uint8_t CopySsid(const eastl::string& text, uint8_t* ssid, const void* array_end) {
  const size_t count = BytesToCopy(text.size(), ssid, array_end);
  memcpy(ssid, text.data(), count);
  return static_cast<uint8_t>(count);
}

}  // namespace wifi
