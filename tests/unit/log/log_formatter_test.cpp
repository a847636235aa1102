// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <kestrel/log.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "support/outcome.h"

namespace kestrel::test {
namespace {

bool g_formatter_fails = false;

/// A formatter that fails with a count and an errno that the C library's never gives.
class FailingFormatter {
 public:
  FailingFormatter() { g_formatter_fails = true; }
  ~FailingFormatter() { g_formatter_fails = false; }
  FailingFormatter(const FailingFormatter&) = delete;
  FailingFormatter& operator=(const FailingFormatter&) = delete;
};

TEST(LogFormatter, HasItsCountAndErrnoReported) {
  const FailingFormatter failing;
  EXPECT_THAT(Observe([] { return Log_Debug("%d", 5); }),
              Fails(EIO,
                    "[Kestrel:Log] error formatting debug message: -7 and errno: "
                    "Input/output error\n"));
}

TEST(LogFormatter, HasItsZeroTakenForSuccess) {
  EXPECT_THAT(Observe([] { return Log_Debug("%s", ""); }), Returns(0));
}

}  // namespace
}  // namespace kestrel::test

extern "C" int vfprintf(FILE* stream, const char* format, va_list arguments) {
  if (kestrel::test::g_formatter_fails) {
    errno = EIO;
    return -7;
  }
  using Call = int (*)(FILE*, const char*, va_list);
  return reinterpret_cast<Call>(dlsym(RTLD_NEXT, "vfprintf"))(stream, format, arguments);
}
