// SPDX-License-Identifier: Apache-2.0
#include <nwl/assertion>

// <assert.h> hides it when NDEBUG is defined.
extern "C" [[noreturn]] void __assert_fail(const char* expression, const char* file,
                                           unsigned int line, const char* function) noexcept;

namespace nwl {

void assertion_failed(const char* expression, const char* file, unsigned int line,
                      const char* function) noexcept {
  __assert_fail(expression, file, line, function);
}

}  // namespace nwl
