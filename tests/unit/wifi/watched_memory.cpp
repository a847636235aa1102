// SPDX-License-Identifier: Apache-2.0
#include "unit/wifi/watched_memory.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace kestrel::test {
namespace {

std::atomic<bool> g_is_watching{false};
std::atomic<int> g_copies_given_back{0};

void GiveBack(void* memory) {
  if (g_is_watching && memory != nullptr) {
    g_copies_given_back += CopiesIn(memory, malloc_usable_size(memory));
  }
  free(memory);
}

}  // namespace

int CopiesIn(const void* memory, size_t size) {
  int copies = 0;
  const char* position = static_cast<const char*>(memory);
  const char* const end = position + size;
  const void* found = nullptr;
  while ((found = memmem(position, static_cast<size_t>(end - position), kSecret, kSecretLength)) !=
         nullptr) {
    ++copies;
    position = static_cast<const char*>(found) + 1;
  }
  return copies;
}

MemoryWatch::MemoryWatch() {
  g_copies_given_back = 0;
  g_is_watching = true;
}

MemoryWatch::~MemoryWatch() { g_is_watching = false; }

int MemoryWatch::CopiesGivenBack() const { return g_copies_given_back; }

}  // namespace kestrel::test

void* operator new(size_t size) {
  void* const memory = malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void operator delete(void* memory) noexcept { kestrel::test::GiveBack(memory); }
void operator delete(void* memory, size_t) noexcept { kestrel::test::GiveBack(memory); }
