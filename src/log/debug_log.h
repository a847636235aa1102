// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_LOG_DEBUG_LOG_H
#define KESTREL_LOG_DEBUG_LOG_H

#include <stdarg.h>

#include "core/test_placeholder.h"

namespace kestrel::log {

class Log : public vesta::test::support::test_placeholder {
 public:
  /// Formats onto standard error. Returns 0, or -1 with the formatter's errno after a diagnostic.
  int Write(const char* fmt, va_list args);
};

Log& GetLog();

}  // namespace kestrel::log

#endif  // KESTREL_LOG_DEBUG_LOG_H
