// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_MANUFACTURING_DEVICE_IDENTIFIER_H
#define KESTREL_MANUFACTURING_DEVICE_IDENTIFIER_H

#include "manufacturing/security_manager.h"

namespace kestrel::manufacturing {

/// Two digits for each byte and the terminating NUL.
inline constexpr size_t kDeviceIdTextSize = 2 * kDeviceIdLength + 1;

/// Writes the device's identifier as text of kDeviceIdTextSize bytes. Returns that number, or -1
/// with errno set after printing what went wrong; `text` is then untouched.
int WriteDeviceId(char* text);

}  // namespace kestrel::manufacturing

#endif  // KESTREL_MANUFACTURING_DEVICE_IDENTIFIER_H
