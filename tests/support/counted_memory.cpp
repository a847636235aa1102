// SPDX-License-Identifier: Apache-2.0
#include "support/counted_memory.h"

#include <cstdlib>
#include <new>

namespace kestrel::test {

int g_allocations = 0;
int g_live = 0;
int g_last_allowed = -1;

}  // namespace kestrel::test

void* operator new(std::size_t size) {
  using namespace kestrel::test;
  if (g_allocations == g_last_allowed) {
    throw std::bad_alloc();
  }
  void* const memory = malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  ++g_allocations;
  ++g_live;
  return memory;
}

void operator delete(void* memory) noexcept {
  kestrel::test::g_live -= memory != nullptr ? 1 : 0;
  free(memory);
}

void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
