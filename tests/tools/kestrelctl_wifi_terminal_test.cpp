// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include "support/terminal_program.h"
#include "wifi_board.h"

namespace kestrel::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

const std::string kQuestion = "passphrase of \"Kestrel Lab\": ";

class KestrelctlWifiTerminal : public testing::Test {
 protected:
  static bool ShowsKeys(const TerminalProgram& program) {
    return (program.Settings().c_lflag & ECHO) != 0;
  }

  const WifiBoard board_;
};

TEST_F(KestrelctlWifiTerminal, AsksForThePassphraseWithoutShowingIt) {
  for (const Words& options :
       {Words{"--ask-passphrase"}, Words{"--security", "wpa2"}, Words{"--passphrase-file", "-"}}) {
    Words arguments = {"add", "Kestrel Lab"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    TerminalProgram program(board_.Wifi(arguments));
    ASSERT_TRUE(program.WaitForScreen(kQuestion));
    program.Type("kestrel-lab\n");
    EXPECT_EQ(program.Wait(), 0);
    EXPECT_EQ(program.screen(), kQuestion + "\r\nadded \"Kestrel Lab\", wpa2\r\n");
    EXPECT_TRUE(HaveSameModes(program.Settings(), program.InitialSettings()));
    EXPECT_TRUE(board_.WaitForState("COMPLETED"));
    EXPECT_EQ(board_.Run({"forget", "Kestrel Lab"}).status, 0);
  }
}

TEST_F(KestrelctlWifiTerminal, TakesNoAnswerForABadPassphrase) {
  for (const std::string keys : {"\n", "\x04", "short\n"}) {
    TerminalProgram program(board_.Wifi({"add", "Kestrel Lab", "--ask-passphrase"}));
    ASSERT_TRUE(program.WaitForScreen(kQuestion));
    program.Type(keys);
    EXPECT_EQ(program.Wait(), 1);
    EXPECT_THAT(program.screen(),
                EndsWith("kestrelctl: a passphrase has 8 to 63 printable ASCII characters\r\n"));
    EXPECT_TRUE(HaveSameModes(program.Settings(), program.InitialSettings()));
  }
  EXPECT_EQ(board_.Commands(), "");
}

class SignalAtTheQuestion : public KestrelctlWifiTerminal,
                            public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, SignalAtTheQuestion,
                         testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT));

TEST_P(SignalAtTheQuestion, RestoresTheTerminal) {
  TerminalProgram program(board_.Wifi({"add", "Kestrel Lab", "--ask-passphrase"}));
  ASSERT_TRUE(program.WaitForScreen(kQuestion));
  EXPECT_FALSE(ShowsKeys(program));
  program.Type("kestrel-l");
  program.Signal(GetParam());
  EXPECT_EQ(program.Wait(), 1);
  EXPECT_EQ(program.screen(), kQuestion + "\r\nkestrelctl: interrupted\r\n");
  EXPECT_TRUE(HaveSameModes(program.Settings(), program.InitialSettings()));
  EXPECT_EQ(board_.Commands(), "");
}

class StopAtTheQuestion : public KestrelctlWifiTerminal, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, StopAtTheQuestion, testing::Values(SIGTSTP, SIGSTOP));

TEST_P(StopAtTheQuestion, IsFollowedByTheQuestionAgainWithoutShowingTheAnswer) {
  TerminalProgram shell(
      ShellThatContinues(board_.Wifi({"add", "Kestrel Lab", "--ask-passphrase"})));
  ASSERT_TRUE(shell.WaitForScreen(kQuestion));
  const termios quiet = shell.Settings();
  shell.SignalJob(GetParam());
  ASSERT_TRUE(shell.WaitForScreen("stopped "));
  ASSERT_TRUE(shell.WaitForModes(shell.InitialSettings()));
  shell.Type("\n");
  ASSERT_TRUE(shell.WaitForModes(quiet));
  ASSERT_TRUE(shell.WaitForMatch(kQuestion + "[^]*" + kQuestion));
  shell.Type("kestrel-lab\n");
  EXPECT_EQ(shell.Wait(), 0);
  EXPECT_THAT(shell.screen(), EndsWith("\r\nadded \"Kestrel Lab\", wpa2\r\n"));
  EXPECT_THAT(shell.screen(), Not(HasSubstr("kestrel-lab")));
}

TEST_F(KestrelctlWifiTerminal, DropsWhatWasTypedBeforeAStop) {
  TerminalProgram shell(
      ShellThatContinues(board_.Wifi({"add", "Kestrel Lab", "--ask-passphrase"})));
  ASSERT_TRUE(shell.WaitForScreen(kQuestion));
  shell.Type("kestrel-l");
  shell.SignalJob(SIGTSTP);
  ASSERT_TRUE(shell.WaitForScreen("stopped as it was"));
  ASSERT_TRUE(shell.WaitForModes(shell.InitialSettings()));
  shell.Type("\n");
  ASSERT_TRUE(shell.WaitForMatch(kQuestion + "[^]*" + kQuestion));
  EXPECT_THAT(shell.screen(), HasSubstr("read ''"));
  shell.Type("ab\n");
  EXPECT_EQ(shell.Wait(), 1);
  EXPECT_THAT(shell.screen(), HasSubstr("a passphrase has 8 to 63 printable ASCII characters"));
}

TEST_F(KestrelctlWifiTerminal, EndsAtTheQuestionByCtrlC) {
  TerminalProgram program(board_.Wifi({"add", "Kestrel Lab", "--ask-passphrase"}));
  ASSERT_TRUE(program.WaitForScreen(kQuestion));
  program.Type("\x03");
  EXPECT_EQ(program.Wait(), 1);
  EXPECT_THAT(program.screen(), EndsWith("\r\nkestrelctl: interrupted\r\n"));
}

TEST_F(KestrelctlWifiTerminal, CanBeInterruptedAfterTheQuestion) {
  board_.Script("[[rule]]\ncommand = \"LIST_NETWORKS\"\naction = \"silence\"\n");
  TerminalProgram program(board_.Wifi({"add", "Kestrel Lab", "--ask-passphrase"}));
  ASSERT_TRUE(program.WaitForScreen(kQuestion));
  program.Type("kestrel-lab\n");
  ASSERT_TRUE(board_.WaitForCommand("LIST_NETWORKS"));
  program.Signal(SIGINT);
  EXPECT_EQ(program.Wait(), 128 + SIGINT);
}

TEST_F(KestrelctlWifiTerminal, AsksBeforeItForgetsAllNetworks) {
  struct Case {
    std::string keys;
    int status;
    std::string answer;
  };
  const std::string question = "Forget all 2 stored networks? [y/N] ";
  EXPECT_EQ(board_.Run({"add", "one"}).status, 0);
  EXPECT_EQ(board_.Run({"add", "two"}).status, 0);
  for (const Case& one : {Case{"n\n", 1, "kestrelctl: nothing has been forgotten"},
                          Case{"\n", 1, "kestrelctl: nothing has been forgotten"},
                          Case{"yeah\n", 1, "kestrelctl: nothing has been forgotten"},
                          Case{"\x04", 1, "kestrelctl: nothing has been forgotten"},
                          Case{"y\n", 0, "forgot 2 networks"}}) {
    TerminalProgram program(board_.Wifi({"forget", "--all"}));
    ASSERT_TRUE(program.WaitForScreen(question));
    EXPECT_THAT(board_.Commands(), Not(HasSubstr("REMOVE_NETWORK")));
    program.Type(one.keys);
    EXPECT_EQ(program.Wait(), one.status);
    EXPECT_THAT(program.screen(), EndsWith("\r\n" + one.answer + "\r\n"));
  }
  EXPECT_THAT(board_.Commands(), HasSubstr("REMOVE_NETWORK"));
}

TEST_F(KestrelctlWifiTerminal, CountsNetworksToForgetThatHaveNoName) {
  board_.Script(
      Rule("LIST_NETWORKS", R"(network id / ssid / bssid / flags\n0\tx\tany\t\n1\t\tany\t\n)") +
      Rule("GET_NETWORK 0 ssid", R"(\"x\")") + Rule("GET_NETWORK 1 ssid", "-") +
      Rule("GET_NETWORK ? key_mgmt", "NONE") + Rule("*_NETWORK ?", "OK\\n"));
  TerminalProgram program(board_.Wifi({"forget", "--all"}));
  ASSERT_TRUE(program.WaitForScreen("Forget all 2 stored networks? [y/N] "));
  program.Type("y\n");
  EXPECT_EQ(program.Wait(), 0);
  EXPECT_THAT(program.screen(), EndsWith("\r\nforgot 2 networks\r\n"));
}

TEST_F(KestrelctlWifiTerminal, DoesNotAskWithoutNeed) {
  TerminalProgram none(board_.Wifi({"forget", "--all"}));
  EXPECT_EQ(none.Wait(), 0);
  EXPECT_EQ(none.screen(), "forgot 0 networks\r\n");
  EXPECT_EQ(board_.Run({"add", "one"}).status, 0);
  TerminalProgram sure(board_.Wifi({"forget", "--all", "--yes"}));
  EXPECT_EQ(sure.Wait(), 0);
  EXPECT_EQ(sure.screen(), "forgot 1 network\r\n");
}

}  // namespace
}  // namespace kestrel::test
