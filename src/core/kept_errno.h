// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_CORE_KEPT_ERRNO_H
#define KESTREL_CORE_KEPT_ERRNO_H

#include <errno.h>

namespace kestrel {

/// Leaves errno at the end of its scope as it was at the beginning.
class KeptErrno {
 public:
  KeptErrno() = default;
  ~KeptErrno() { errno = value_; }
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;

  int value() const { return value_; }

 private:
  const int value_ = errno;
};

}  // namespace kestrel

#endif  // KESTREL_CORE_KEPT_ERRNO_H
