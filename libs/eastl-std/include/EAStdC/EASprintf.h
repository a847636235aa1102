// SPDX-License-Identifier: Apache-2.0
#ifndef EASTL_STD_EASTDC_EASPRINTF_H
#define EASTL_STD_EASTDC_EASPRINTF_H

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>

namespace EA::StdC {

__attribute__((format(printf, 3, 0))) inline int Vsnprintf(char* destination, size_t n,
                                                           const char* format, va_list arguments) {
  return vsnprintf(destination, n, format, arguments);
}

}  // namespace EA::StdC

#endif  // EASTL_STD_EASTDC_EASPRINTF_H
