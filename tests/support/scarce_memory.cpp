// SPDX-License-Identifier: Apache-2.0
#include "support/scarce_memory.h"

#include <atomic>
#include <cstddef>
#include <new>

namespace {

std::atomic<bool> g_scarce{false};

}  // namespace

namespace kestrel::test {

ScarceMemory::ScarceMemory() { g_scarce = true; }

ScarceMemory::~ScarceMemory() { g_scarce = false; }

}  // namespace kestrel::test

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return g_scarce ? nullptr : ::operator new(size);
}
