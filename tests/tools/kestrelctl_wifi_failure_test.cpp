// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "wifi_board.h"

namespace kestrel::test {
namespace {

const std::string kAbsent =
    ": EIO: Input/output error (the Wi-Fi daemon is not running, or does not let this user in)\n";

struct Command {
  Words arguments;
  std::string what;
  int status;
};

const Command kCommands[] = {
    {{"scan"}, "scan", 1},
    {{"scan", "--wait", "60"}, "scan", 1},
    {{"list"}, "stored networks", 1},
    {{"current"}, "current network", 3},
    {{"add", "x"}, "\"x\"", 1},
    {{"forget", "x"}, "stored networks", 1},
    {{"forget", "--all", "--yes"}, "stored networks", 1},
};

TEST(KestrelctlWifiFailure, TellsThatThereIsNoDaemon) {
  for (const std::string presence : {"absent", "refusing"}) {
    const WifiBoard board;
    board.Board({"wifi", "--daemon", presence});
    for (const Command& command : kCommands) {
      EXPECT_THAT(board.Run(command.arguments),
                  Ends(command.status, "", "kestrelctl: " + command.what + kAbsent));
    }
  }
}

TEST(KestrelctlWifiFailure, ShowsWhatTheLibraryPrintsWhenAskedTo) {
  const WifiBoard board;
  board.Board({"wifi", "--daemon", "absent"});
  EXPECT_THAT(board.Run({"scan", "--verbose"}),
              Ends(1, "",
                   "[Kestrel:WifiConfig] Failure performing scan: 22\n"
                   "[Kestrel:WifiConfig] Error performing operation: 22\n"
                   "kestrelctl: scan" +
                       kAbsent));
  EXPECT_THAT(board.Run({"list", "-v"}), Ends(1, "",
                                              "[Kestrel:WifiConfig] Error performing operation: "
                                              "22\nkestrelctl: stored networks" +
                                                  kAbsent));
}

struct Answer {
  std::string rules;
  Words arguments;
  std::string failure;
  int status;
};

void PrintTo(const Answer& answer, std::ostream* stream) { *stream << answer.rules; }

class DaemonsAnswer : public testing::TestWithParam<Answer> {};

TEST_P(DaemonsAnswer, IsExplained) {
  const WifiBoard board;
  board.Script(GetParam().rules);
  EXPECT_THAT(board.Run(GetParam().arguments),
              Ends(GetParam().status, "", "kestrelctl: " + GetParam().failure + "\n"));
}

const std::string kStatus = R"(bssid=02:00:00:00:00:0a\nssid=x\nwpa_state=COMPLETED\n)";

INSTANTIATE_TEST_SUITE_P(
    Each, DaemonsAnswer,
    testing::Values(
        Answer{Rule("SCAN_RESULTS", "FAIL\\n"),
               {"scan"},
               "scan: EINVAL: Invalid argument (the Wi-Fi daemon refused, as it does while a scan "
               "is running; --wait waits for that)",
               1},
        Answer{"[[rule]]\ncommand = \"SCAN\"\naction = \"die\"\n",
               {"scan"},
               "scan: EIO: Input/output error (the Wi-Fi daemon has ended)",
               1},
        Answer{Rule("LIST_NETWORKS", "FAIL\\n"),
               {"list"},
               "stored networks: EINVAL: Invalid argument (the Wi-Fi daemon refused)",
               1},
        Answer{Rule("STATUS", "one line\\n"),
               {"current"},
               "current network: EIO: Input/output error (what the Wi-Fi daemon answered cannot be "
               "understood)",
               3},
        Answer{Rule("ADD_NETWORK", "101\\n"),
               {"add", "x"},
               "\"x\": EIO: Input/output error (the Wi-Fi daemon has too many networks)",
               1},
        Answer{Rule("SAVE_CONFIG", "FAIL\\n"),
               {"add", "x"},
               "\"x\": EINVAL: Invalid argument (the Wi-Fi daemon refused; look at 'kestrelctl "
               "wifi list' for what it has kept)",
               1},
        Answer{Rule("LIST_NETWORKS", "network id / ssid / bssid / flags\\n7\\tx\\tany\\t\\n") +
                   Rule("GET_NETWORK ? ssid", "\\\"x\\\"") + Rule("GET_NETWORK ? key_mgmt", "NONE"),
               {"forget", "--all", "--yes"},
               "stored networks: EINVAL: Invalid argument (the Wi-Fi daemon refused; look at "
               "'kestrelctl wifi list' for what is left)",
               1},
        Answer{Rule("STATUS", "FAIL\\n"),
               {"current"},
               "current network: EINVAL: Invalid argument (the Wi-Fi daemon refused, or tells no "
               "access point's address)",
               3},
        Answer{Rule("STATUS", kStatus + "freq=none\\n"),
               {"current"},
               "current network: ERANGE: Numerical result out of range (the Wi-Fi daemon tells no "
               "frequency)",
               3}));

struct BrokenCall {
  std::string failure;
  std::string meaning;
};

void PrintTo(const BrokenCall& call, std::ostream* stream) { *stream << call.failure; }

class BrokenConnection : public testing::TestWithParam<BrokenCall> {};

INSTANTIATE_TEST_SUITE_P(
    Each, BrokenConnection,
    testing::Values(BrokenCall{"read:/var/volatile/tmp/wlan0_request_socket=EAGAIN",
                               "the Wi-Fi daemon has not answered for 30 seconds"},
                    BrokenCall{"read:/var/volatile/tmp/wlan0_request_socket=ECONNRESET",
                               "the Wi-Fi daemon has ended"},
                    BrokenCall{"writev:/var/volatile/tmp/wlan0_request_socket=EPIPE",
                               "the Wi-Fi daemon has ended"},
                    BrokenCall{"writev:/var/volatile/tmp/wlan0_request_socket=ENOBUFS",
                               "there is no talking to the Wi-Fi daemon; --verbose shows why"}));

TEST_P(BrokenConnection, IsExplained) {
  EXPECT_THAT(
      Kestrelctl({"wifi", "list"}, {GetParam().failure}),
      Ends(1, "",
           "kestrelctl: stored networks: EIO: Input/output error (" + GetParam().meaning + ")\n"));
}

TEST(KestrelctlWifiFailure, IsWhatCannotBePrinted) {
  const WifiBoard board;
  const std::string failure = "kestrelctl: standard output: ENOSPC: No space left on device\n";
  for (const std::string command : {"scan", "list", "add x", "forget x"}) {
    EXPECT_THAT(board.RunShell("\"$0\" wifi " + command + " >/dev/full"), Ends(1, "", failure))
        << command;
  }
  EXPECT_THAT(board.RunShell("\"$0\" wifi current >/dev/full"), Ends(3, "", failure));
}

}  // namespace
}  // namespace kestrel::test
