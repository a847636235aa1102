// SPDX-License-Identifier: Apache-2.0
#include "uart/open_errno.h"

#include <errno.h>

namespace kestrel::uart {

int translateUartOpenErrno(int saved) {
  switch (saved) {
    case EPERM:
    case EFAULT:
    case ENODEV:
    case EINVAL:
      errno = EIO;
      break;
    default:
      break;
  }
  return errno;
}

}  // namespace kestrel::uart
