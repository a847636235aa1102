// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "on_board.h"

namespace kestrel::test {
namespace {

TEST(KestrelctlLog, WritesTheTextAndANewline) {
  EXPECT_THAT(Kestrelctl({"log", "door opened"}), Ends(0, "", "door opened\n"));
}

TEST(KestrelctlLog, TakesTheTextAsItIs) {
  EXPECT_THAT(Kestrelctl({"log", "100%s %n%%"}), Ends(0, "", "100%s %n%%\n"));
  EXPECT_THAT(Kestrelctl({"log", ""}), Ends(0, "", "\n"));
  EXPECT_THAT(Kestrelctl({"log", "--", "--dashes--"}), Ends(0, "", "--dashes--\n"));
}

TEST(KestrelctlLog, FailsWhenStandardErrorIsFullOrClosed) {
  for (const std::string redirection : {"2>/dev/full", "2>&-"}) {
    const std::string command = "\"$0\" log lost " + redirection;
    EXPECT_THAT(RunProgram({"sh", "-c", command, KESTRELCTL}), Ends(1, "", "")) << redirection;
  }
}

}  // namespace
}  // namespace kestrel::test
