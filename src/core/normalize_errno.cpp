// SPDX-License-Identifier: Apache-2.0
#include "core/normalize_errno.h"

#include <errno.h>
#include <stdint.h>

namespace kestrel {
namespace {

constexpr uint32_t kArgumentErrors = 1U << EBADF | 1U << EFAULT | 1U << EINVAL;
static_assert(kArgumentErrors == 0x404200);

bool LooksLikeAnArgumentError(int err) {
  return err >= 0 && err <= EINVAL && (kArgumentErrors >> err & 1U) != 0;
}

}  // namespace

int normalize_errno(int err) {
  if (LooksLikeAnArgumentError(err)) {
    errno = EIO;
  }
  return errno;
}

}  // namespace kestrel
