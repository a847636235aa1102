// SPDX-License-Identifier: Apache-2.0
// Uses what the library adds for EASTL as EASTL's containers would. Memory is filled to its end.
#include <EASTL/string.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

void* operator new[](size_t size, const char* name, int flags, unsigned debug_flags,
                     const char* file, int line);
void* operator new[](size_t size, size_t alignment, size_t alignment_offset, const char* name,
                     int flags, unsigned debug_flags, const char* file, int line);

namespace {

constexpr size_t kSize = 5000;

bool FillAndFree(char* memory) {
  memset(memory, 'x', kSize);
  const bool filled = memory[0] == 'x' && memory[kSize - 1] == 'x';
  delete[] memory;
  return filled;
}

bool FormatsTheWholeText() {
  const eastl::string many(kSize, 'y');
  const eastl::string text(eastl::string::CtorSprintf(), "%s-%d", many.c_str(), -5);
  return text == many + "--5";
}

}  // namespace

int main() {
  const bool plain = FillAndFree(new ("EASTL", 0, 0U, __FILE__, __LINE__) char[kSize]);
  const bool aligned =
      FillAndFree(new (size_t{16}, size_t{0}, "EASTL", 0, 0U, __FILE__, __LINE__) char[kSize]);
  const bool formats = FormatsTheWholeText();
  fprintf(stderr, "plain %d, aligned %d, formats %d\n", plain, aligned, formats);
  return plain && aligned && formats ? 0 : 1;
}
