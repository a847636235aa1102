// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <regex>
#include <thread>

#include "support/descriptors.h"
#include "support/terminal_program.h"
#include "wifi_board.h"

namespace kestrel::test {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;

const std::string kHeader =
    "SIGNAL          CHANNEL  FREQUENCY  SECURITY  ADDRESS            NAME\n";
const std::string kListHeader = "bssid / frequency / signal level / flags / ssid\\n";

/// A scan that never ends.
const std::string kEndlessScan = "[wifi]\nscan-time = 600000\n";

class KestrelctlWifiScan : public testing::Test {
 protected:
  /// The networks that JSON tells, by the end of their addresses.
  static json ByAddress(const std::string& output) {
    json networks;
    const json all = json::parse(output);
    for (const json& network : all.at("networks")) {
      networks[network.at("bssid").get<std::string>().substr(15)] = network;
    }
    return networks;
  }

  const WifiBoard board_;
};

TEST_F(KestrelctlWifiScan, ShowsWhatTheScanBeforeHasFound) {
  EXPECT_THAT(board_.Run({"scan"}), Ends(0, kHeader, ""));
  EXPECT_EQ(board_.Commands(), "SCAN\nSCAN_RESULTS\n");
}

/// How many orders to scan the board's daemon has got.
long OrdersToScan(const WifiBoard& board) {
  const std::string commands = "\n" + board.Commands();
  const std::regex order("\nSCAN(?=\n)");
  return std::distance(std::sregex_iterator(commands.begin(), commands.end(), order), {});
}

void WaitForOrdersToScan(const WifiBoard& board, long count) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (OrdersToScan(board) < count && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_GE(OrdersToScan(board), count);
}

TEST(KestrelctlWifiScanThatWaits, HoldsNoMoreDescriptorsAfterManyQuestions) {
  const WifiBoard board(kEndlessScan);
  const BackgroundProgram scan(board.Wifi({"scan", "--wait", "600"}));
  WaitForOrdersToScan(board, 2);
  const size_t before = DescriptorsBetweenCallsOf(scan.pid());
  WaitForOrdersToScan(board, OrdersToScan(board) + 3);
  EXPECT_EQ(DescriptorsBetweenCallsOf(scan.pid()), before);
}

TEST_F(KestrelctlWifiScan, ShowsTheStrongestFirstAndNamesThatNoTerminalObeys) {
  EXPECT_THAT(
      board_.Run({"scan", "--wait"}),
      Ends(0,
           kHeader +
               "####   -48 dBm        6   2437 MHz  wpa2      02:00:00:00:00:01  \"Kestrel Lab\"\n"
               "###-   -61 dBm       36   5180 MHz  open      02:00:00:00:00:02  \"Kestrel "
               "Guest\"\n"
               "##--   -70 dBm       14   2484 MHz  wpa2      02:00:00:00:00:03  \"Caf\\xc3\\xa9 "
               "\\xe2\\x9c\\x93\"\n"
               "##--   -71 dBm        1   2412 MHz  unknown   02:00:00:00:00:04  "
               "\"\\x1b]0;x\\x07\"\n"
               "##--   -72 dBm        1   2412 MHz  open      02:00:00:00:00:05  "
               "\"a\\xe2\\x80\\xaeb\\xc2\\x9b\"\n"
               "##--   -73 dBm        1   2412 MHz  unknown   02:00:00:00:00:06  "
               "\"\\xff/\\xed\\xa0\\x80/\\xe2\\x9c\"\n"
               "#---   -80 dBm        1   2412 MHz  wpa2      02:00:00:00:00:07  "
               "\"\\\"a\\\\b\\\"\"\n"
               "----   -89 dBm        -   2400 MHz  wpa2      02:00:00:00:00:08  (hidden)\n"
               "----   -90 dBm        1   2412 MHz  wpa2      02:00:00:00:00:09  "
               "\"\\x01\\x02\\x03\\x04\\x05\\x06\\x07\\x08\"...\n",
           ""));
}

TEST_F(KestrelctlWifiScan, ShowsTextOfOtherScriptsWhereTheLocaleHasThem) {
  const std::string shown = RunProgram(board_.Wifi({"scan", "--wait"}, "C.UTF-8")).standard_output;
  EXPECT_THAT(shown, HasSubstr("  \"Caf\xc3\xa9 \xe2\x9c\x93\"\n"));
  EXPECT_THAT(shown, HasSubstr("  \"\\x1b]0;x\\x07\"\n"));
  EXPECT_THAT(shown, HasSubstr("  \"a\\xe2\\x80\\xaeb\\xc2\\x9b\"\n"));
  EXPECT_THAT(shown, HasSubstr("  \"\\xff/\\xed\\xa0\\x80/\\xe2\\x9c\"\n"));
}

TEST_F(KestrelctlWifiScan, TellsANameOfAnotherEncodingByItsBytes) {
  board_.Script(
      Rule("SCAN", "OK\\n") +
      Rule("SCAN_RESULTS", kListHeader + R"(02:00:00:00:00:0a\t2412\t-50\t[ESS]\tCaf\\xe9 Bar\n)"));
  EXPECT_THAT(RunProgram(board_.Wifi({"scan"}, "C.UTF-8")).standard_output,
              EndsWith(R"(  "Caf\xe9 Bar")"
                       "\n"));
  const json network = ByAddress(board_.Run({"scan", "--json"}).standard_output).at("0a");
  EXPECT_EQ(network.at("ssid"), nullptr);
  EXPECT_EQ(network.at("ssid_hex"), "436166e920426172");
}

class UnseenCharacter : public KestrelctlWifiScan,
                        public testing::WithParamInterface<const char*> {};

/// The first and the last of each range, as the daemon writes their bytes.
INSTANTIATE_TEST_SUITE_P(Of, UnseenCharacter,
                         testing::Values(R"(\xc2\xad)", R"(\xcd\x8f)", R"(\xd8\x9c)",
                                         R"(\xe1\x85\x9f)", R"(\xe1\xa0\x8b)", R"(\xe2\x80\x8b)",
                                         R"(\xe2\x80\xae)", R"(\xe2\x81\xa0)", R"(\xe3\x85\xa4)",
                                         R"(\xef\xb8\x80)", R"(\xef\xb8\x8f)", R"(\xef\xbb\xbf)",
                                         R"(\xf3\xa0\x84\x80)"));

TEST_P(UnseenCharacter, IsShownByItsBytes) {
  std::string in_toml = std::regex_replace(GetParam(), std::regex(R"(\\)"), R"(\\)");
  board_.Script(Rule("SCAN", "OK\\n") +
                Rule("SCAN_RESULTS", kListHeader + R"(02:00:00:00:00:0a\t2412\t-50\t[ESS]\ta)" +
                                         in_toml + R"(b\n)"));
  EXPECT_THAT(RunProgram(board_.Wifi({"scan"}, "C.UTF-8")).standard_output,
              HasSubstr("  \"a" + std::string(GetParam()) + "b\"\n"));
}

TEST_F(KestrelctlWifiScan, PrintsJsonFromWhichEveryByteOfANameCanBeHad) {
  const std::string output = board_.Run({"scan", "--wait", "20", "--json"}).standard_output;
  EXPECT_TRUE(
      std::all_of(output.begin(), output.end() - 1, [](char c) { return c >= 0x20 && c < 0x7F; }));
  const json networks = ByAddress(output);
  EXPECT_EQ(networks.at("01"), json({{"ssid", "Kestrel Lab"},
                                     {"ssid_hex", "4b65737472656c204c6162"},
                                     {"ssid_cut", false},
                                     {"hidden", false},
                                     {"bssid", "02:00:00:00:00:01"},
                                     {"security", "wpa2"},
                                     {"channel", 6},
                                     {"frequency_mhz", 2437},
                                     {"signal_dbm", -48}}));
  EXPECT_EQ(networks.at("03").at("ssid"), "Caf\xc3\xa9 \xe2\x9c\x93");
  EXPECT_EQ(networks.at("04").at("ssid"), "\x1b]0;x\x07");
  EXPECT_EQ(networks.at("05").at("ssid_hex"), "61e280ae62c29b");
  EXPECT_THAT(output, HasSubstr(R"("a\u202eb\u009b")"));
  EXPECT_EQ(networks.at("06").at("ssid"), nullptr);
  EXPECT_EQ(networks.at("06").at("ssid_hex"), "ff2feda0802fe29c");
  EXPECT_EQ(networks.at("08").at("hidden"), true);
  EXPECT_EQ(networks.at("08").at("ssid_hex"), "0000000000");
  EXPECT_EQ(networks.at("08").at("channel"), nullptr);
  EXPECT_EQ(networks.at("09").at("ssid_cut"), true);
  EXPECT_EQ(networks.at("09").at("ssid_hex"), "0102030405060708");
}

TEST_F(KestrelctlWifiScan, ToldByTheDaemonInAnyOrderIsSorted) {
  board_.Script(Rule("SCAN_RESULTS", kListHeader +
                                         "02:00:00:00:00:0a\\t2412\\t-128\\t[ESS]\\tfar\\n"
                                         "02:00:00:00:00:0b\\t2412\\t-1\\t[ESS]\\tnear\\n"
                                         "02:00:00:00:00:0c\\t2412\\t-128\\t[ESS]\\tfar, too\\n"));
  EXPECT_THAT(
      board_.Run({"scan"}),
      Ends(0,
           kHeader +
               "####    -1 dBm        1   2412 MHz  open      02:00:00:00:00:0b  \"near\"\n"
               "----  -128 dBm        1   2412 MHz  open      02:00:00:00:00:0a  \"far\"\n"
               "----  -128 dBm        1   2412 MHz  open      02:00:00:00:00:0c  \"far, too\"\n",
           ""));
}

TEST_F(KestrelctlWifiScan, KnowsTheChannelsOfEveryBand) {
  struct Case {
    int mhz;
    json channel;
  };
  const Case cases[] = {{2412, 1},   {2472, 13},      {2484, 14},    {4920, 184},
                        {5180, 36},  {5885, 177},     {5935, 2},     {5955, 1},
                        {7115, 233}, {2413, nullptr}, {868, nullptr}};
  std::string list = kListHeader;
  for (const Case& one : cases) {
    list += "02:00:00:00:00:0a\\t" + std::to_string(one.mhz) + R"(\t-50\t[ESS]\tx\n)";
  }
  board_.Script(Rule("SCAN_RESULTS", list));
  const json networks = json::parse(board_.Run({"scan", "--json"}).standard_output).at("networks");
  ASSERT_EQ(networks.size(), std::size(cases));
  for (size_t i = 0; i < networks.size(); ++i) {
    EXPECT_EQ(networks[i].at("frequency_mhz"), cases[i].mhz);
    EXPECT_EQ(networks[i].at("channel"), cases[i].channel) << cases[i].mhz;
  }
}

TEST_F(KestrelctlWifiScan, SurvivesTextsThatFillAReply) {
  for (const size_t size : {33U, 255U, 256U, 1900U, 2047U}) {
    board_.Script(Rule("SCAN", "OK\\n") +
                  Rule("SCAN_RESULTS", kListHeader +
                                           "02:00:00:00:00:0a\\t2412\\t-50\\t[ESS]\\tshort\\n"
                                           "02:00:00:00:00:0b\\t2412\\t-60\\t[ESS]\\t" +
                                           std::string(size, 'x') + "\\n"));
    const ProgramResult result = board_.Run({"scan"});
    EXPECT_EQ(result.status, 0) << size;
    EXPECT_THAT(result.standard_output, HasSubstr(" \"short\"\n")) << size;
  }
}

TEST_F(KestrelctlWifiScan, DoesNotEndANameInTheMiddleOfAnEscape) {
  for (const size_t before : {28U, 29U, 30U, 31U}) {
    const std::string begin(before, 'a');
    std::string list = kListHeader;
    list += R"(02:00:00:00:00:0a\t2412\t-50\t[ESS]\t)" + begin + R"(\\x41 and more\n)";
    board_.Script(Rule("SCAN", "OK\\n") + Rule("SCAN_RESULTS", list));
    // The first 32 characters hold all of the escape, or a part that means nothing.
    const std::string shown = begin + (before == 28 ? "A" : "");
    EXPECT_THAT(board_.Run({"scan"}).standard_output, EndsWith(" \"" + shown + "\"...\n"));
  }
}

TEST_F(KestrelctlWifiScan, ShowsAllOfANameThatEndsLikeAnEscape) {
  const std::string name = std::string(28, 'a') + R"(\\xZZ)";
  board_.Script(Rule("SCAN", "OK\\n") +
                Rule("SCAN_RESULTS", kListHeader + R"(02:00:00:00:00:0a\t2412\t-50\t[ESS]\t)" +
                                         name + R"( and more\n)"));
  EXPECT_THAT(board_.Run({"scan"}).standard_output, EndsWith(" \"" + name + "\"...\n"));
}

TEST(KestrelctlWifiScanThatLasts, IsRefusedAnotherUnlessItIsWaitedFor) {
  const WifiBoard board(kEndlessScan);
  EXPECT_EQ(board.Run({"scan"}).status, 0);
  EXPECT_THAT(board.Run({"scan"}),
              Ends(1, "",
                   "kestrelctl: scan: EINVAL: Invalid argument (the Wi-Fi daemon refused, as it "
                   "does while a scan is running; --wait waits for that)\n"));
  EXPECT_THAT(board.Run({"scan", "--wait", "0.6"}),
              Ends(1, "",
                   "kestrelctl: scan: the time is up: the Wi-Fi daemon is still scanning, or "
                   "refuses to\n"));
}

TEST(KestrelctlWifiScanThatLasts, ShowsOnATerminalHowLongItWaitsAndStopsOnASignal) {
  const WifiBoard board(kEndlessScan);
  TerminalProgram waiting(board.Wifi({"scan", "--wait"}));
  ASSERT_TRUE(waiting.WaitForScreen("\rscanning: 0 of 15 seconds\x1b[K"));
  ASSERT_TRUE(waiting.WaitForMatch("\rscanning: [1-9][0-9]? of 15 seconds\x1b\\[K"));
  waiting.Type("\x03");
  EXPECT_EQ(waiting.Wait(), 1);
  EXPECT_THAT(waiting.screen(), EndsWith("\r\x1b[Kkestrelctl: scan: interrupted\r\n"));
}

TEST_F(KestrelctlWifiScan, ThatRunsAlreadyIsWaitedForAndLeavesNoTraceOnATerminal) {
  EXPECT_EQ(board_.Run({"scan"}).status, 0);
  TerminalProgram waiting(board_.Wifi({"scan", "--wait", "20"}));
  EXPECT_EQ(waiting.Wait(), 0);
  EXPECT_THAT(waiting.screen(), HasSubstr("\r\x1b[KSIGNAL "));
  EXPECT_THAT(waiting.screen(), HasSubstr(" \"Kestrel Lab\"\r\n"));
}

}  // namespace
}  // namespace kestrel::test
