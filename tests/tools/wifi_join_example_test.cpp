// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "wifi_board.h"

namespace kestrel::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class WifiJoinExample : public testing::Test {
 protected:
  ProgramResult Run(const Words& arguments) const {
    Words command = {WIFI_JOIN};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return RunProgram(board_.Exec(command));
  }

  std::string StoredNetworks() const { return board_.Run({"list"}).standard_output; }

  const TemporaryDirectory files_;
  const WifiBoard board_;
};

TEST_F(WifiJoinExample, JoinsAnOpenNetwork) {
  const ProgramResult result = Run({"Kestrel Guest"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.standard_output,
            "Kestrel Guest: -61 dBm at 5180 MHz\n"
            "Kestrel Guest: connected to 02:00:00:00:00:02\n");
  EXPECT_THAT(StoredNetworks(), HasSubstr("open      yes      yes        \"Kestrel Guest\"\n"));
}

TEST_F(WifiJoinExample, JoinsWithAPassphraseAndForgetsTheNetwork) {
  const std::string joined =
      "Kestrel Lab: -48 dBm at 2437 MHz\n"
      "Kestrel Lab: connected to 02:00:00:00:00:01\n"
      "Kestrel Lab: forgotten\n";
  const std::string file = files_.Write("passphrase", "kestrel-lab\n");
  const ProgramResult result = Run({"--forget", "Kestrel Lab", file});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.standard_output, joined);
  EXPECT_THAT(StoredNetworks(), EndsWith(" NAME\n"));
  const ProgramResult piped = RunProgram(
      board_.Exec({"sh", "-c", "echo kestrel-lab | \"$0\" --forget 'Kestrel Lab' -", WIFI_JOIN}));
  EXPECT_EQ(piped.status, 0);
  EXPECT_EQ(piped.standard_output, joined);
}

TEST_F(WifiJoinExample, GivesUpWithAWrongPassphraseAndForgetsTheNetwork) {
  const std::string file = files_.Write("passphrase", "kestrel-lax");
  const ProgramResult result = Run({"--seconds", "1", "--forget", "Kestrel Lab", file});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_output, "Kestrel Lab: -48 dBm at 2437 MHz\nKestrel Lab: forgotten\n");
  EXPECT_THAT(result.standard_error,
              EndsWith("wifi_join: not connected after 1 seconds: the passphrase may be wrong\n"));
  EXPECT_THAT(StoredNetworks(), EndsWith(" NAME\n"));
}

TEST_F(WifiJoinExample, TellsWhatItCannotDo) {
  EXPECT_THAT(Run({"--seconds", "0", "x"}),
              Ends(1, "", "wifi_join: no scan has ended within 0 seconds\n"));
  EXPECT_EQ(board_.Run({"add", "Kestrel Guest"}).status, 0);
  ASSERT_TRUE(board_.WaitForState("COMPLETED"));
  EXPECT_THAT(Run({"Kestrel Guest"}).standard_error,
              EndsWith("wifi_join: cannot store the network: File exists\n"));
  EXPECT_THAT(
      Run({"x", "/nowhere"}).standard_error,
      EndsWith("wifi_join: cannot open the passphrase's file: No such file or directory\n"));
  EXPECT_THAT(Run({"x", "/dev/null"}).standard_error,
              EndsWith("wifi_join: cannot read the passphrase: No data available\n"));
  board_.Board({"wifi", "--daemon", "absent"});
  EXPECT_THAT(Run({"x"}), Ends(1, "",
                               "[Kestrel:WifiConfig] Failure performing scan: 22\n"
                               "[Kestrel:WifiConfig] Error performing operation: 22\n"
                               "wifi_join: cannot scan: Input/output error\n"));
}

TEST(WifiJoinExampleArguments, AreRefused) {
  for (const Words& command :
       {Words{WIFI_JOIN}, Words{WIFI_JOIN, "a", "b", "c"}, Words{WIFI_JOIN, "--seconds", "x", "a"},
        Words{WIFI_JOIN, "--seconds", "3601", "a"}, Words{WIFI_JOIN, "--loud", "a"}}) {
    EXPECT_THAT(RunProgram(command), Ends(2, "",
                                          "usage: wifi_join [--forget] [--seconds N] NAME [FILE], "
                                          "at most 3600 seconds\n"));
  }
}

}  // namespace
}  // namespace kestrel::test
