// SPDX-License-Identifier: Apache-2.0
// What EASTL leaves to its user to define. Memory from these two operators goes back through the
// plain operator delete[], so they can only hand on to the plain operator new[].
#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>

#include <new>

void* operator new[](size_t size, const char* name, int flags, unsigned debug_flags,
                     const char* file, int line);
void* operator new[](size_t size, size_t alignment, size_t alignment_offset, const char* name,
                     int flags, unsigned debug_flags, const char* file, int line);

void* operator new[](size_t size, const char*, int, unsigned, const char*, int) {
  return ::operator new[](size);
}

void* operator new[](size_t size, size_t, size_t, const char*, int, unsigned, const char*, int) {
  return ::operator new[](size);
}

#ifndef KESTREL_HAS_EASTDC
namespace EA::StdC {

int Vsnprintf(char* destination, size_t n, const char* format, va_list arguments);

int Vsnprintf(char* destination, size_t n, const char* format, va_list arguments) {
  return vsnprintf(destination, n, format, arguments);
}

}  // namespace EA::StdC
#endif
