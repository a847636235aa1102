// SPDX-License-Identifier: Apache-2.0
// kestrelctl uart with a person in front of it.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>

#include "support/terminal_program.h"
#include "uart_board.h"

namespace kestrel::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using Clock = std::chrono::steady_clock;

const std::string kGreeting = " at 115200 bits per second; Ctrl-] leaves\r\n";
const std::string kLeaveKey = "\x1d";

class KestrelctlUartTerminal : public testing::Test {
 protected:
  /// Waits until the port answers what is typed, which is then raw.
  static bool IsTalking(TerminalProgram& program) {
    if (!program.WaitForScreen(kGreeting)) {
      return false;
    }
    program.Type("ready");
    return program.WaitForScreen("ready");
  }

  const UartBoard board_;
};

TEST_F(KestrelctlUartTerminal, ShowsWhatThePortAnswersAndNothingElse) {
  TerminalProgram program(board_.Uart({"2"}));
  ASSERT_TRUE(program.WaitForScreen("UART 2" + kGreeting));
  program.Type("once");
  ASSERT_TRUE(program.WaitForScreen("once"));
  program.Type(kLeaveKey);
  EXPECT_EQ(program.Wait(), 0);
  EXPECT_EQ(program.screen(), "UART 2" + kGreeting + "once\r\n");
}

TEST_F(KestrelctlUartTerminal, PassesKeysOnThatHaveAMeaningElsewhere) {
  TerminalProgram program(board_.Uart({"2", "--hex"}));
  ASSERT_TRUE(program.WaitForScreen(kGreeting));
  program.Type("\x03\x04\x11\x13\x1a\x1c\r\n");
  EXPECT_TRUE(program.WaitForScreen("03 04 11 13 1a 1c 0d 0a"));
  program.Type("end" + kLeaveKey + "lost");
  EXPECT_EQ(program.Wait(), 0);
}

TEST_F(KestrelctlUartTerminal, OpensThePortAsAsked) {
  TerminalProgram program(board_.Uart({"2", "--baud", "9600", "--flow", "xon-xoff"}));
  ASSERT_TRUE(program.WaitForScreen("UART 2 at 9600 bits per second; Ctrl-] leaves\r\n"));
  EXPECT_EQ(board_.Port(2).at("speed"), 9600);
  EXPECT_THAT(board_.Port(2).at("flow_control").dump(), HasSubstr("xon"));
}

TEST_F(KestrelctlUartTerminal, SendsWhatWasTypedBeforeLeaving) {
  BackgroundProgram receiver(board_.Uart({"1", "--receive", "--bytes", "4"}));
  ASSERT_TRUE(board_.WaitUntilOpen(1));
  TerminalProgram program(board_.Uart({"0"}));
  ASSERT_TRUE(program.WaitForScreen(kGreeting));
  program.Type("last" + kLeaveKey + "lost");
  EXPECT_EQ(program.Wait(), 0);
  EXPECT_EQ(receiver.Wait().standard_output, "last");
}

TEST_F(KestrelctlUartTerminal, EndsALineOfHexadecimalAfterAPause) {
  TerminalProgram program(board_.Uart({"2", "--hex"}));
  ASSERT_TRUE(program.WaitForScreen(kGreeting));
  program.Type("one");
  EXPECT_TRUE(program.WaitForScreen(
      "00000000  6f 6e 65                                         |one|\r\n"));
  program.Type("two");
  EXPECT_TRUE(program.WaitForScreen(
      "00000003  74 77 6f                                         |two|\r\n"));
}

TEST_F(KestrelctlUartTerminal, RestoresTheTerminalWhenLeft) {
  TerminalProgram program(board_.Uart({"2"}));
  ASSERT_TRUE(IsTalking(program));
  EXPECT_FALSE(HaveSameModes(program.Settings(), program.InitialSettings()));
  program.Type(kLeaveKey);
  EXPECT_EQ(program.Wait(), 0);
  EXPECT_TRUE(HaveSameModes(program.Settings(), program.InitialSettings()));
}

TEST_F(KestrelctlUartTerminal, IsLeftAtOnceUnlessThePortHasStopped) {
  // A port that has stopped is waited for for a second; a busy machine may take as long, at times.
  constexpr std::chrono::seconds kPatience(1);
  Clock::duration fastest = Clock::duration::max();
  for (int i = 0; i < 10 && fastest >= kPatience; ++i) {
    TerminalProgram program(board_.Uart({"2"}));
    ASSERT_TRUE(IsTalking(program));
    const auto start = Clock::now();
    program.Type(kLeaveKey);
    ASSERT_TRUE(program.WaitForScreen("ready\r\n"));
    fastest = std::min(fastest, Clock::now() - start);
    EXPECT_EQ(program.Wait(), 0);
  }
  EXPECT_LT(fastest, kPatience);
}

class EndingSignal : public KestrelctlUartTerminal, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, EndingSignal, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT));

TEST_P(EndingSignal, RestoresTheTerminal) {
  TerminalProgram program(board_.Uart({"2"}));
  ASSERT_TRUE(IsTalking(program));
  program.Signal(GetParam());
  EXPECT_EQ(program.Wait(), 0);
  EXPECT_TRUE(HaveSameModes(program.Settings(), program.InitialSettings()));
}

TEST_F(KestrelctlUartTerminal, GivesTheTerminalBackWhileItIsStopped) {
  TerminalProgram shell(ShellThatContinues(board_.Uart({"2"})));
  ASSERT_TRUE(IsTalking(shell));
  shell.SignalJob(SIGTSTP);
  EXPECT_TRUE(shell.WaitForScreen("stopped as it was\r\n"));
}

class StoppingSignal : public KestrelctlUartTerminal, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, StoppingSignal, testing::Values(SIGTSTP, SIGSTOP));

TEST_P(StoppingSignal, IsFollowedByARawTerminalAgain) {
  TerminalProgram shell(ShellThatContinues(board_.Uart({"2"})));
  ASSERT_TRUE(IsTalking(shell));
  const termios raw = shell.Settings();
  shell.SignalJob(GetParam());
  ASSERT_TRUE(shell.WaitForScreen("stopped "));
  ASSERT_TRUE(shell.WaitForModes(shell.InitialSettings()));
  shell.Type("\n");
  EXPECT_TRUE(shell.WaitForModes(raw));
  shell.Type("again");
  EXPECT_TRUE(shell.WaitForScreen("again"));
  shell.Type(kLeaveKey);
  EXPECT_EQ(shell.Wait(), 0);
  EXPECT_TRUE(HaveSameModes(shell.Settings(), shell.InitialSettings()));
}

TEST_F(KestrelctlUartTerminal, RestoresTheTerminalWhenThePortFails) {
  TerminalProgram program(board_.Uart({"2"}));
  ASSERT_TRUE(IsTalking(program));
  board_.Board({"fault", "read:/dev/ttyS2=EIO"});
  program.Type("x");
  EXPECT_EQ(program.Wait(), 1);
  EXPECT_THAT(program.screen(), EndsWith("\r\nkestrelctl: UART 2: EIO: Input/output error\r\n"));
  EXPECT_TRUE(HaveSameModes(program.Settings(), program.InitialSettings()));
}

TEST(KestrelctlUartTerminalHangUp, RestoresTheTerminal) {
  const BoardFolder folder;
  ASSERT_EQ(RunProgram(folder.Board({"start", "gone", "--config", UART_BOARD_CONFIG})).status, 0);
  TerminalProgram program(folder.Board({"exec", "gone", "--", KESTRELCTL, "uart", "2"}));
  ASSERT_TRUE(program.WaitForScreen(kGreeting));
  program.Type("ready");
  ASSERT_TRUE(program.WaitForScreen("ready"));
  ASSERT_EQ(RunProgram(folder.Board({"stop", "gone"})).status, 0);
  EXPECT_EQ(program.Wait(), 1);
  EXPECT_THAT(program.screen(), HasSubstr("\r\nkestrelctl: UART 2: the port has hung up"));
  EXPECT_TRUE(HaveSameModes(program.Settings(), program.InitialSettings()));
}

TEST_F(KestrelctlUartTerminal, EndsWhenItsTerminalGoes) {
  TerminalProgram program(board_.Uart({"2"}));
  ASSERT_TRUE(IsTalking(program));
  program.HangUp();
  EXPECT_LT(program.Wait(), 128);
}

TEST_F(KestrelctlUartTerminal, TellsHowFarALongFileHasCome) {
  const BackgroundProgram other(board_.HoldOpen(1));
  ASSERT_TRUE(board_.WaitUntilOpen(1));
  const TemporaryDirectory files;
  const std::string file = files.Write("f", std::string(5000000, 'x'));
  TerminalProgram program(board_.Uart({"0", "--send", file}));
  ASSERT_TRUE(program.WaitForScreen(" of 5000000 bytes\x1b[K"));
  program.Type("\x03");
  EXPECT_EQ(program.Wait(), 1);
  EXPECT_THAT(program.screen(), HasSubstr("\r\x1b[Kkestrelctl: UART 0: interrupted: sent "));
}

}  // namespace
}  // namespace kestrel::test
