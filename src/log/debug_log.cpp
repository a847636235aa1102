// SPDX-License-Identifier: Apache-2.0
#include "log/debug_log.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>

namespace kestrel::log {

int Log::Write(const char* fmt, va_list args) {
  const int count = vfprintf(stderr, fmt, args);
  if (count >= 0) {
    return 0;
  }
  const int saved_errno = errno;
  fprintf(stderr, "[Kestrel:Log] error formatting debug message: %d and errno: %s\n", count,
          strerror(saved_errno));
  errno = saved_errno;
  return -1;
}

Log& GetLog() {
  static Log instance;
  return instance;
}

}  // namespace kestrel::log
