// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "on_board.h"

namespace kestrel::test {
namespace {

TEST(WaitForNetworkExample, EndsAtOnceWhenNetworkingIsReady) {
  EXPECT_THAT(RunOnBoard({WAIT_FOR_NETWORK}), Ends(0, "", "networking is ready\n"));
  EXPECT_THAT(RunOnBoard({WAIT_FOR_NETWORK, "0"}), Ends(0, "", "networking is ready\n"));
}

TEST(WaitForNetworkExample, WaitsForNetworking) {
  const SharedBoard board;
  board.Board({"network", "down"});
  const Words command =
      board.Exec({"sh", "-c", "echo started; exec \"$0\" 3600", WAIT_FOR_NETWORK});
  BackgroundProgram waiting(command);
  ASSERT_TRUE(waiting.WaitForOutput("started"));
  board.Board({"network", "ready"});
  EXPECT_THAT(waiting.Wait(), Ends(0, "started\n", "networking is ready\n"));
}

TEST(WaitForNetworkExample, GivesUp) {
  const SharedBoard board;
  board.Board({"network", "down"});
  EXPECT_THAT(RunProgram(board.Exec({WAIT_FOR_NETWORK, "0"})),
              Ends(1, "", "wait_for_network: not ready after 0 seconds\n"));
  board.Board({"network", "absent"});
  EXPECT_THAT(RunProgram(board.Exec({WAIT_FOR_NETWORK, "0"})),
              Ends(1, "",
                   "[Kestrel:Networking] error determining device networking state: 2\n"
                   "wait_for_network: not ready after 0 seconds\n"));
}

TEST(WaitForNetworkExample, RefusesWrongArguments) {
  for (const Words& command :
       {Words{WAIT_FOR_NETWORK, "x"}, Words{WAIT_FOR_NETWORK, ""}, Words{WAIT_FOR_NETWORK, "-1"},
        Words{WAIT_FOR_NETWORK, "86401"}, Words{WAIT_FOR_NETWORK, "1", "2"}}) {
    EXPECT_THAT(RunProgram(command),
                Ends(2, "", "usage: wait_for_network [SECONDS], at most 86400\n"));
  }
}

}  // namespace
}  // namespace kestrel::test
