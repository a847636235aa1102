// SPDX-License-Identifier: Apache-2.0
#ifndef EASTDC_EASPRINTF_H
#define EASTDC_EASPRINTF_H

#include <EABase/eabase.h>
#include <stdarg.h>
#include <stddef.h>

namespace EA {
namespace StdC {

int Vsnprintf(char* destination, size_t n, const char* format, va_list arguments);

}  // namespace StdC
}  // namespace EA

namespace eastl {

bool AllocateAsTheLibraryDoes();

// EASTL's containers refer to its archive; this is what refers to the stub's.
[[maybe_unused]] static const bool kIsLinked = AllocateAsTheLibraryDoes();

}  // namespace eastl

#endif  // EASTDC_EASPRINTF_H
