// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "uart_board.h"

namespace kestrel::test {
namespace {

TEST(UartEchoExample, SendsBackWhatComes) {
  const UartBoard board;
  BackgroundProgram echo(board.Exec({UART_ECHO, "1", "6"}));
  ASSERT_TRUE(board.WaitUntilOpen(1));
  const std::string line = "printf abcdef | \"$0\" uart 0 --send - --receive --bytes 6";
  EXPECT_THAT(RunProgram(board.Exec({"sh", "-c", line, KESTRELCTL})), Ends(0, "abcdef", ""));
  EXPECT_THAT(echo.Wait(), Ends(0, "", "echoing on UART 1\nechoed 6 bytes\n"));
}

TEST(UartEchoExample, EndsWhenThePortHangsUp) {
  const BoardFolder folder;
  ASSERT_EQ(RunProgram(folder.Board({"start", "gone"})).status, 0);
  BackgroundProgram echo(
      folder.Board({"exec", "gone", "--", "sh", "-c", "exec \"$0\" 2>&1", UART_ECHO}));
  ASSERT_TRUE(echo.WaitForOutput("echoing on UART 0\n"));
  ASSERT_EQ(RunProgram(folder.Board({"stop", "gone"})).status, 0);
  EXPECT_THAT(echo.Wait(), Ends(0, "echoing on UART 0\nechoed 0 bytes\n", ""));
}

TEST(UartEchoExample, SaysThatThePortIsTaken) {
  EXPECT_THAT(RunOnBoard({UART_ECHO}, {"flock:/dev/ttyS0=EWOULDBLOCK"}),
              Ends(1, "",
                   "[Kestrel:UART] Unable to open device exclusively: Resource temporarily "
                   "unavailable (11).\n"
                   "uart_echo: cannot open the port: Resource temporarily unavailable\n"));
}

TEST(UartEchoExample, SaysThatThePortDoesNotTakeItsSettings) {
  const UartBoard board;
  board.Board({"uart", "0", "--forget", "speed"});
  EXPECT_THAT(RunProgram(board.Exec({UART_ECHO})),
              Ends(1, "",
                   "[Kestrel:UART] Could not set the attributes of the device.\n"
                   "uart_echo: cannot open the port: Input/output error\n"));
}

TEST(UartEchoExample, RefusesWrongArguments) {
  for (const Words& command : {Words{UART_ECHO, "x"}, Words{UART_ECHO, "0", "-1"},
                               Words{UART_ECHO, ""}, Words{UART_ECHO, "0", "1", "2"}}) {
    EXPECT_THAT(RunProgram(command),
                Ends(2, "", "usage: uart_echo [UART [BYTES]], numbers from 0 on\n"));
  }
}

}  // namespace
}  // namespace kestrel::test
