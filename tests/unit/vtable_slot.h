// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_VTABLE_SLOT_H
#define KESTREL_TESTS_UNIT_VTABLE_SLOT_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace kestrel::test {

/// The place of a virtual method in its class's virtual table, the first being 0. The destructor
/// takes two places. -1 when the method is not virtual.
template <typename Method>
ptrdiff_t VtableSlot(Method method) {
  struct {
    ptrdiff_t pointer;
    ptrdiff_t adjustment;
  } parts;
  static_assert(sizeof parts == sizeof method);
  memcpy(&parts, &method, sizeof parts);
#if defined(__arm__) || defined(__aarch64__)
  // Code addresses may be odd here, so the mark of a virtual method is in the adjustment.
  const bool is_virtual = (parts.adjustment & 1) != 0;
  const ptrdiff_t offset = parts.pointer;
#else
  const bool is_virtual = (parts.pointer & 1) != 0;
  const ptrdiff_t offset = parts.pointer - 1;
#endif
  return is_virtual ? offset / static_cast<ptrdiff_t>(sizeof(void*)) : -1;
}

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_VTABLE_SLOT_H
