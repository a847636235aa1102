// SPDX-License-Identifier: Apache-2.0
#include "host/error.h"

#include <cerrno>
#include <cstring>

namespace kestrel::board {

void ThrowErrno(const std::string& what) {
  const int saved_errno = errno;
  throw BoardError(what + ": " + strerror(saved_errno));
}

}  // namespace kestrel::board
