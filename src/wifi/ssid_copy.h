// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_SSID_COPY_H
#define KESTREL_WIFI_SSID_COPY_H

#include <EASTL/string.h>
#include <stdint.h>

namespace wifi {

/// Copies the text of a name to the field `ssid` of a record, and returns what belongs into its
/// `ssidLength`. `array_end` is where the caller's array of records ends.
///
/// Applications count on a text of more than 32 bytes to arrive whole, so it runs on into the
/// following fields and records, and by default over `array_end` into slack that the header asks
/// for. Built with KESTREL_BOUND_SSID_COPY, the copy ends at `array_end`.
uint8_t CopySsid(const eastl::string& text, uint8_t* ssid, const void* array_end);

}  // namespace wifi

#endif  // KESTREL_WIFI_SSID_COPY_H
