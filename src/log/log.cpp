// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/log.h>

#include "log/debug_log.h"

int Log_DebugVarArgs(const char* fmt, va_list args) {
  kestrel::log::Log& log = kestrel::log::GetLog();
  if (fmt == nullptr) {
    errno = EFAULT;
    return -1;
  }
  return log.Write(fmt, args);
}

int Log_Debug(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = Log_DebugVarArgs(fmt, args);
  va_end(args);
  return result;
}
