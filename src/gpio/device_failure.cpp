// SPDX-License-Identifier: Apache-2.0
#include "gpio/device_failure.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>

#include "core/normalize_errno.h"

namespace kestrel::gpio {

int ReportDeviceFailure(const char* problem) {
  const int saved_errno = errno;
  fprintf(stderr, "[Kestrel:GPIO] Problem %s: %s (%d)\n", problem, strerror(saved_errno),
          saved_errno);
  errno = normalize_errno(saved_errno);
  return -1;
}

}  // namespace kestrel::gpio
