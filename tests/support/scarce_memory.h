// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_SCARCE_MEMORY_H
#define KESTREL_TESTS_SUPPORT_SCARCE_MEMORY_H

namespace kestrel::test {

/// While one exists, the non-throwing operator new of this program finds no memory.
class ScarceMemory {
 public:
  ScarceMemory();
  ~ScarceMemory();
  ScarceMemory(const ScarceMemory&) = delete;
  ScarceMemory& operator=(const ScarceMemory&) = delete;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_SCARCE_MEMORY_H
