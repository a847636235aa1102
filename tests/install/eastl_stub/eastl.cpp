// SPDX-License-Identifier: Apache-2.0
// Stands for libEASTL.a: it asks of its user what the real one asks, and its
// function is visible to everybody, as the real library's are.
#include <stddef.h>

void* operator new[](size_t size, const char* name, int flags, unsigned debug_flags,
                     const char* file, int line);
void* operator new[](size_t size, size_t alignment, size_t alignment_offset, const char* name,
                     int flags, unsigned debug_flags, const char* file, int line);

namespace eastl {

bool AllocateAsTheLibraryDoes();

bool AllocateAsTheLibraryDoes() {
  char* plain = new ("EASTL", 0, 0U, __FILE__, __LINE__) char[10];
  char* aligned = new (size_t{16}, size_t{0}, "EASTL", 0, 0U, __FILE__, __LINE__) char[10];
  const bool allocated = plain != nullptr && aligned != nullptr;
  delete[] plain;
  delete[] aligned;
  return allocated;
}

}  // namespace eastl
