// SPDX-License-Identifier: Apache-2.0
#include "host/error.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>

namespace kestrel::board {

void PrintDiagnostic(std::string text) {
  // It may quote a file or an argument that has line ends in it.
  std::replace(text.begin(), text.end(), '\n', ' ');
  std::cerr << "kestrel-board: " + text + '\n';
}

void ThrowErrno(const std::string& what) {
  const int saved_errno = errno;
  throw BoardError(what + ": " + strerror(saved_errno));
}

}  // namespace kestrel::board
