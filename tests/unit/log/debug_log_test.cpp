// SPDX-License-Identifier: Apache-2.0
#include "log/debug_log.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "support/outcome.h"

namespace kestrel::log {
namespace {

using test::Observe;
using test::Returns;
using vesta::test::support::test_placeholder;

int WriteTo(Log& log, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = log.Write(fmt, args);
  va_end(args);
  return result;
}

TEST(DebugLog, IsOneObject) { EXPECT_EQ(&GetLog(), &GetLog()); }

TEST(DebugLog, CanStandInForAnotherPlaceholder) {
  EXPECT_TRUE((std::is_convertible_v<Log*, test_placeholder*>));
  EXPECT_TRUE(std::has_virtual_destructor_v<test_placeholder>);
}

TEST(DebugLog, AddsNoDataToThePlaceholder) {
  EXPECT_EQ(sizeof(Log), sizeof(test_placeholder));
  EXPECT_EQ(sizeof(Log), sizeof(void*));
}

TEST(DebugLog, WritesWithoutTheExports) {
  Log log;
  EXPECT_THAT(Observe([&] { return WriteTo(log, "%s-%d", "text", 7); }), Returns(0, "text-7"));
}

}  // namespace
}  // namespace kestrel::log
