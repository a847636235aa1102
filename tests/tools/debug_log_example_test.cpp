// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "on_board.h"

namespace kestrel::test {
namespace {

TEST(DebugLogExample, WritesToStandardError) {
  EXPECT_THAT(RunOnBoard({DEBUG_LOG}),
              Ends(0, "", "starting with 2 sensors\n[heating] 21.5 degrees, valve open\n"));
}

TEST(DebugLogExample, FailsWithoutStandardError) {
  EXPECT_EQ(RunProgram({"sh", "-c", "\"$0\" 2>/dev/full", DEBUG_LOG}).status, 1);
}

}  // namespace
}  // namespace kestrel::test
