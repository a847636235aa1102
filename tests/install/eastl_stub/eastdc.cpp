// SPDX-License-Identifier: Apache-2.0
// Stands for libEAStdC.a.
#include <EAStdC/EASprintf.h>
#include <stdio.h>

int EA::StdC::Vsnprintf(char* destination, size_t n, const char* format, va_list arguments) {
  return vsnprintf(destination, n, format, arguments);
}
