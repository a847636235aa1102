// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_GPIO_DEVICE_FAILURE_H
#define KESTREL_GPIO_DEVICE_FAILURE_H

namespace kestrel::gpio {

/// Reports the device call that has just failed: prints "[Kestrel:GPIO] Problem …" with errno as
/// the call left it, then leaves in errno what the caller of the library is to see. Returns -1.
int ReportDeviceFailure(const char* problem);

}  // namespace kestrel::gpio

#endif  // KESTREL_GPIO_DEVICE_FAILURE_H
