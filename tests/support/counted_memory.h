// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_COUNTED_MEMORY_H
#define KESTREL_TESTS_SUPPORT_COUNTED_MEMORY_H

namespace kestrel::test {

extern int g_allocations;  ///< since the program began
extern int g_live;
extern int g_last_allowed;  ///< the count at which memory runs out, or -1

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_COUNTED_MEMORY_H
