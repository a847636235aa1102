// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_WIFI_WATCHED_MEMORY_H
#define KESTREL_TESTS_UNIT_WIFI_WATCHED_MEMORY_H

#include <cstddef>

namespace kestrel::test {

/// What is looked for. Nothing but a secret contains it.
inline constexpr char kSecret[] = "s3cRetZq";
inline constexpr size_t kSecretLength = sizeof kSecret - 1;

/// How often the secret stands in `size` bytes of memory.
int CopiesIn(const void* memory, size_t size);

/// While it exists, memory that this program gives back is searched for the secret. A program that
/// names watched_memory.cpp allocates and gives back through it.
class MemoryWatch {
 public:
  MemoryWatch();
  ~MemoryWatch();
  MemoryWatch(const MemoryWatch&) = delete;
  MemoryWatch& operator=(const MemoryWatch&) = delete;

  int CopiesGivenBack() const;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_WIFI_WATCHED_MEMORY_H
