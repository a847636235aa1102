// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_FUZZ_SUPPORT_PROMISE_H
#define KESTREL_TESTS_FUZZ_SUPPORT_PROMISE_H

#include <cstdlib>

namespace kestrel::fuzz {

/// Ends the program when the library has not done what it promises for every input. The stack that
/// is printed then says which promise it was.
inline void Promise(bool kept) {
  if (!kept) {
    std::abort();
  }
}

}  // namespace kestrel::fuzz

#endif  // KESTREL_TESTS_FUZZ_SUPPORT_PROMISE_H
