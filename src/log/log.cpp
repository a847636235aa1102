// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/log.h>

#include "log/debug_log.h"

namespace {

// Both exports come here, so that neither goes through the other's symbol, which anything may
// stand in for.
int Debug(const char* fmt, va_list args) {
  kestrel::log::Log& log = kestrel::log::GetLog();
  if (fmt == nullptr) {
    errno = EFAULT;
    return -1;
  }
  return log.Write(fmt, args);
}

}  // namespace

int Log_DebugVarArgs(const char* fmt, va_list args) { return Debug(fmt, args); }

int Log_Debug(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = Debug(fmt, args);
  va_end(args);
  return result;
}
