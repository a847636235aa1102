// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "on_board.h"
#include "support/terminal_program.h"

namespace kestrel::test {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

const std::string kNoAnswer =
    "kestrelctl: networking: EBUSY: Device or resource busy (its status file is missing or cannot "
    "be read; --verbose shows why)\n";

TEST(KestrelctlNetwork, TellsBothStatesByTextAndExitStatus) {
  const SharedBoard board;
  EXPECT_THAT(board.Kestrelctl({"network"}), Ends(0, "ready\n", ""));
  board.Board({"network", "down"});
  EXPECT_THAT(board.Kestrelctl({"network"}), Ends(1, "not ready\n", ""));
  board.Board({"network", "bytes", "01ff0102"});
  EXPECT_THAT(board.Kestrelctl({"network"}), Ends(1, "not ready\n", ""));
  board.Board({"network", "bytes", "01ff010203"});
  EXPECT_THAT(board.Kestrelctl({"network"}), Ends(0, "ready\n", ""));
}

TEST(KestrelctlNetwork, PrintsJson) {
  const SharedBoard board;
  EXPECT_EQ(json::parse(board.Kestrelctl({"network", "--json"}).standard_output),
            json({{"ready", true}}));
  board.Board({"network", "down"});
  const ProgramResult result = board.Kestrelctl({"network", "--json"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(json::parse(result.standard_output), json({{"ready", false}}));
}

TEST(KestrelctlNetwork, HasAnExitStatusOfItsOwnForNoAnswer) {
  const SharedBoard board;
  board.Board({"network", "absent"});
  EXPECT_THAT(board.Kestrelctl({"network"}), Ends(3, "", kNoAnswer));
  EXPECT_THAT(
      board.Kestrelctl({"network", "--verbose"}),
      Ends(3, "",
           "[Kestrel:Networking] error determining device networking state: 2\n" + kNoAnswer));
  EXPECT_THAT(
      Kestrelctl({"network", "-v"}, {"open:/var/run/network_status=EMFILE"}),
      Ends(3, "",
           "[Kestrel:Networking] error determining device networking state: 24\n" + kNoAnswer));
}

TEST(KestrelctlNetwork, HasThatExitStatusAlsoWhenItCannotPrint) {
  EXPECT_THAT(RunOnBoard({"sh", "-c", "\"$0\" network >/dev/full", KESTRELCTL}),
              Ends(3, "", "kestrelctl: standard output: ENOSPC: No space left on device\n"));
}

TEST(KestrelctlNetwork, DoesNotWaitForWhatIsReady) {
  const auto start = Clock::now();
  EXPECT_THAT(Kestrelctl({"network", "--wait", "86400"}), Ends(0, "ready\n", ""));
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(60));
}

TEST(KestrelctlNetwork, WaitsUntilReadyAlsoWhenThereIsNoFileAtFirst) {
  for (const std::string before : {"down", "absent"}) {
    const SharedBoard board;
    board.Board({"network", before});
    board.Count("open:/var/run/network_status");
    BackgroundProgram waiting(board.Exec({KESTRELCTL, "network", "--wait", "600"}));
    board.WaitForCalls(3);
    board.Board({"network", "ready"});
    EXPECT_THAT(waiting.Wait(), Ends(0, "ready\n", "")) << before;
  }
}

TEST(KestrelctlNetwork, GivesUpWhenTheTimeIsUp) {
  const SharedBoard board;
  board.Board({"network", "down"});
  const auto start = Clock::now();
  EXPECT_THAT(board.Kestrelctl({"network", "--wait", "0.3"}), Ends(1, "not ready\n", ""));
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(300));
  board.Board({"network", "absent"});
  EXPECT_THAT(board.Kestrelctl({"network", "--wait", "0.3"}), Ends(3, "", kNoAnswer));
}

TEST(KestrelctlNetwork, TellsWhyTheLastOfItsQuestionsHadNoAnswer) {
  const SharedBoard board;
  board.Board({"network", "down"});
  board.Count("open:/var/run/network_status");
  BackgroundProgram waiting(board.Exec({KESTRELCTL, "network", "--wait", "600"}));
  board.WaitForCalls(2);
  board.Board({"network", "absent"});
  board.Board({"fault", "--clear"});
  board.Count("open:/var/run/network_status");
  board.WaitForCalls(2);
  waiting.Signal(SIGTERM);
  EXPECT_THAT(waiting.Wait(), Ends(3, "", kNoAnswer));
}

TEST(KestrelctlNetwork, ShowsOnATerminalHowLongItWaits) {
  const SharedBoard board;
  board.Board({"network", "down"});
  TerminalProgram waiting(board.Exec({KESTRELCTL, "network", "--wait", "600"}));
  ASSERT_TRUE(waiting.WaitForScreen("\rwaiting for networking: 0 of 600 seconds\x1b[K"));
  ASSERT_TRUE(waiting.WaitForMatch("\rwaiting for networking: [1-9][0-9]? of 600 seconds\x1b\\[K"));
  board.Board({"network", "ready"});
  EXPECT_EQ(waiting.Wait(), 0);
  EXPECT_THAT(waiting.screen(), testing::EndsWith("\r\x1b[Kready\r\n"));
}

TEST(KestrelctlNetwork, StopsWaitingOnASignalWithTheLastAnswer) {
  const SharedBoard board;
  board.Board({"network", "down"});
  TerminalProgram interrupted(board.Exec({KESTRELCTL, "network", "--wait", "600"}));
  ASSERT_TRUE(interrupted.WaitForScreen("waiting"));
  interrupted.Type("\x03");
  EXPECT_EQ(interrupted.Wait(), 1);
  EXPECT_THAT(interrupted.screen(), testing::EndsWith("\r\x1b[Knot ready\r\n"));
  TerminalProgram terminated(board.Exec({KESTRELCTL, "network", "--wait", "600"}));
  ASSERT_TRUE(terminated.WaitForScreen("waiting"));
  terminated.Signal(SIGTERM);
  EXPECT_EQ(terminated.Wait(), 1);
}

}  // namespace
}  // namespace kestrel::test
