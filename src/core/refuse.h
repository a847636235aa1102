// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_CORE_REFUSE_H
#define KESTREL_CORE_REFUSE_H

#include <errno.h>

namespace kestrel {

/// Leaves `error` in errno and returns what an exported function returns for an argument that it
/// refuses.
inline int Refuse(int error) {
  errno = error;
  return -1;
}

}  // namespace kestrel

#endif  // KESTREL_CORE_REFUSE_H
