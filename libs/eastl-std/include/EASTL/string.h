// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_EASTL_STD_STRING_H
#define KESTREL_EASTL_STD_STRING_H
#include <stdarg.h>
#include <stdio.h>
#include <string>
namespace eastl {
class string : public std::string {
 public:
  struct CtorSprintf {};
  using std::string::string;
  string(CtorSprintf, const char* format, ...) __attribute__((format(printf, 3, 4))) {
    char buffer[64];
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    std::string::assign(buffer);
  }
};
}  // namespace eastl
#endif  // KESTREL_EASTL_STD_STRING_H
