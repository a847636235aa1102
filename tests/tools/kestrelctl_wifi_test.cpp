// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "wifi_board.h"

namespace kestrel::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

const std::string kStoredListHeader = "SECURITY  ENABLED  CONNECTED  NAME\n";
const std::string kBadPassphrase =
    "kestrelctl: a passphrase has 8 to 63 printable ASCII characters\n";

class KestrelctlWifi : public testing::Test {
 protected:
  std::string PassphraseFile(const std::string& content) const {
    return files_.Write("passphrase", content);
  }

  const TemporaryDirectory files_;
  const WifiBoard board_;
};

TEST_F(KestrelctlWifi, AddsAnOpenNetworkToWhichTheDeviceConnects) {
  EXPECT_THAT(board_.Run({"list"}), Ends(0, kStoredListHeader, ""));
  EXPECT_THAT(board_.Run({"add", "Kestrel Guest"}), Ends(0, "added \"Kestrel Guest\", open\n", ""));
  ASSERT_TRUE(board_.WaitForState("COMPLETED"));
  EXPECT_THAT(board_.Run({"list"}),
              Ends(0, kStoredListHeader + "open      yes      yes        \"Kestrel Guest\"\n", ""));
  EXPECT_THAT(board_.Run({"current"}), Ends(0,
                                            "name       \"Kestrel Guest\"\n"
                                            "security   open\n"
                                            "address    02:00:00:00:00:02\n"
                                            "channel    36\n"
                                            "frequency  5180 MHz\n",
                                            ""));
}

TEST_F(KestrelctlWifi, ConnectsWithAPassphraseFromAFileWhateverEndsItsLine) {
  for (const std::string end : {"", "\n", "\r\n"}) {
    const std::string file = PassphraseFile("kestrel-lab" + end);
    EXPECT_THAT(board_.Run({"add", "Kestrel Lab", "--passphrase-file", file}),
                Ends(0, "added \"Kestrel Lab\", wpa2\n", ""));
    EXPECT_TRUE(board_.WaitForState("COMPLETED")) << end;
    EXPECT_THAT(board_.Run({"forget", "Kestrel Lab"}), Ends(0, "forgot 1 network\n", ""));
  }
}

TEST_F(KestrelctlWifi, ConnectsWithAPassphraseFromStandardInput) {
  EXPECT_THAT(board_.RunShell("{ printf kestrel-; sleep 0.1; echo lab; } |"
                              "\"$0\" wifi add 'Kestrel Lab' --passphrase-file - --security wpa2"),
              Ends(0, "added \"Kestrel Lab\", wpa2\n", ""));
  EXPECT_TRUE(board_.WaitForState("COMPLETED"));
}

TEST_F(KestrelctlWifi, NeverConnectsWithAWrongPassphrase) {
  const std::string file = PassphraseFile("kestrel-lax");
  EXPECT_EQ(board_.Run({"add", "Kestrel Lab", "--passphrase-file", file}).status, 0);
  // The daemon has tried, and does so no more.
  ASSERT_TRUE(board_.WaitForState("DISCONNECTED"));
  EXPECT_THAT(board_.Run({"list"}),
              Ends(0, kStoredListHeader + "wpa2      no       no         \"Kestrel Lab\"\n", ""));
  EXPECT_THAT(board_.Run({"current"}), Ends(1, "not connected\n", ""));
}

TEST_F(KestrelctlWifi, ShowsNoPassphrase) {
  const std::string file = PassphraseFile("kestrel-lab\n");
  for (const Words& arguments :
       {Words{"add", "Kestrel Lab", "--passphrase-file", file, "--verbose"},
        Words{"add", "Kestrel Lab", "--passphrase-file", file, "--verbose"}, Words{"list", "-v"}}) {
    const ProgramResult result = board_.Run(arguments);
    EXPECT_THAT(result.standard_output + result.standard_error, Not(HasSubstr("kestrel-lab")));
  }
}

TEST_F(KestrelctlWifi, RefusesABadPassphraseBeforeTheDaemonHearsOfIt) {
  for (const std::string& passphrase :
       {std::string(), std::string("short 7"), std::string(64, 'x'), std::string(5000, 'x'),
        std::string("kestrel\x80lab"), std::string("kestrel\tlab"), std::string("kestrel-lab\n\n"),
        std::string("kestrel-lab\0", 12), std::string(63, 'x') + "\r\nx"}) {
    const std::string file = PassphraseFile(passphrase);
    EXPECT_THAT(board_.Run({"add", "Kestrel Lab", "--passphrase-file", file}),
                Ends(1, "", kBadPassphrase))
        << passphrase;
  }
  EXPECT_EQ(board_.Commands(), "");
}

TEST_F(KestrelctlWifi, TakesTheShortestAndTheLongestPassphrase) {
  for (const size_t size : {8U, 63U}) {
    const std::string file = PassphraseFile(std::string(size, '~') + "\n");
    EXPECT_EQ(board_.Run({"add", std::to_string(size), "--passphrase-file", file}).status, 0);
  }
  EXPECT_EQ(board_.Run({"list"}).standard_output, kStoredListHeader +
                                                      "wpa2      yes      no         \"8\"\n"
                                                      "wpa2      yes      no         \"63\"\n");
}

TEST_F(KestrelctlWifi, TellsWhichPassphraseFileCannotBeRead) {
  EXPECT_THAT(board_.Run({"add", "x", "--passphrase-file", "/nowhere"}),
              Ends(1, "", "kestrelctl: /nowhere: ENOENT: No such file or directory\n"));
  EXPECT_THAT(board_.Run({"add", "x", "--passphrase-file", "/"}),
              Ends(1, "", "kestrelctl: /: EISDIR: Is a directory\n"));
  EXPECT_THAT(board_.RunShell("\"$0\" wifi add x --passphrase-file - </"),
              Ends(1, "", "kestrelctl: standard input: EISDIR: Is a directory\n"));
}

TEST_F(KestrelctlWifi, AddsNoNameTwice) {
  EXPECT_EQ(board_.Run({"add", "Home"}).status, 0);
  const std::string file = PassphraseFile("kestrel-lab");
  EXPECT_THAT(board_.Run({"add", "Home", "--passphrase-file", file}),
              Ends(1, "",
                   "kestrelctl: \"Home\": EEXIST: File exists (a network of that name is stored "
                   "already; forget it first)\n"));
}

TEST_F(KestrelctlWifi, TakesNamesAsTextAndInHexadecimal) {
  EXPECT_THAT(board_.Run({"add", "--hex", "2d2d \"quoted\""}).status, 2);
  EXPECT_THAT(board_.Run({"add", "--hex", "2D2d6f6464"}), Ends(0, "added \"--odd\", open\n", ""));
  EXPECT_THAT(board_.Run({"forget", "--", "--odd"}), Ends(0, "forgot 1 network\n", ""));
  EXPECT_THAT(board_.Run({"add", std::string(32, '~')}).status, 0);
  EXPECT_THAT(board_.Run({"forget", "--hex", "7e7e"}).status, 1);
  EXPECT_EQ(board_.Run({"list"}).standard_output,
            kStoredListHeader + "open      yes      no         \"" + std::string(32, '~') + "\"\n");
}

TEST_F(KestrelctlWifi, PrintsJson) {
  EXPECT_EQ(json::parse(board_.Run({"list", "--json"}).standard_output),
            json({{"networks", json::array()}}));
  const ProgramResult none = board_.Run({"current", "--json"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(json::parse(none.standard_output), json({{"current", nullptr}}));
  const json name = {
      {"ssid", "Kestrel Guest"}, {"ssid_hex", "4b65737472656c204775657374"}, {"ssid_cut", false}};
  json expected = name;
  expected["security"] = "open";
  EXPECT_EQ(json::parse(board_.Run({"add", "Kestrel Guest", "--json"}).standard_output),
            json({{"added", expected}}));
  ASSERT_TRUE(board_.WaitForState("COMPLETED"));
  expected.update({{"enabled", true}, {"connected", true}});
  EXPECT_EQ(json::parse(board_.Run({"list", "--json"}).standard_output),
            json({{"networks", json::array({expected})}}));
  expected = name;
  expected.update({{"security", "open"},
                   {"bssid", "02:00:00:00:00:02"},
                   {"channel", 36},
                   {"frequency_mhz", 5180}});
  EXPECT_EQ(json::parse(board_.Run({"current", "--json"}).standard_output),
            json({{"current", expected}}));
  EXPECT_EQ(json::parse(board_.Run({"forget", "Kestrel Guest", "--json"}).standard_output),
            json({{"forgotten", 1}}));
}

TEST_F(KestrelctlWifi, ForgetsTheNetworkOfThatNameAlone) {
  for (const std::string name : {"one", "two", "three"}) {
    EXPECT_EQ(board_.Run({"add", name}).status, 0);
  }
  EXPECT_THAT(board_.Run({"forget", "two"}), Ends(0, "forgot 1 network\n", ""));
  EXPECT_THAT(board_.Run({"forget", "two"}),
              Ends(1, "",
                   "kestrelctl: \"two\": ENOENT: No such file or directory (no network of that "
                   "name is stored)\n"));
  EXPECT_EQ(board_.Run({"list"}).standard_output, kStoredListHeader +
                                                      "open      yes      no         \"one\"\n"
                                                      "open      yes      no         \"three\"\n");
}

TEST_F(KestrelctlWifi, ListsANetworkWithoutANameAsHidden) {
  board_.Script(Rule("LIST_NETWORKS", R"(network id / ssid / bssid / flags\n0\t\tany\t\n)") +
                Rule("GET_NETWORK 0 ssid", R"(\"\")") + Rule("GET_NETWORK 0 key_mgmt", "NONE"));
  EXPECT_THAT(board_.Run({"list"}),
              Ends(0, kStoredListHeader + "open      yes      no         (hidden)\n", ""));
  const json list = json::parse(board_.Run({"list", "--json"}).standard_output);
  EXPECT_EQ(list.at("networks").at(0).at("ssid"), "");
}

TEST_F(KestrelctlWifi, DoesNotTakeTheBeginningOfAnOverlongNameForTheName) {
  const std::string name(32, 'n');
  board_.Script(
      Rule("LIST_NETWORKS", R"(network id / ssid / bssid / flags\n0\t)" + name + R"(x\tany\t\n)") +
      Rule("GET_NETWORK 0 ssid", R"(\")" + name + R"(x\")") +
      Rule("GET_NETWORK 0 key_mgmt", "NONE") + Rule("*_NETWORK ?", "OK\\n"));
  EXPECT_EQ(board_.Run({"list"}).standard_output,
            kStoredListHeader + "open      yes      no         \"" + name + "\"...\n");
  EXPECT_THAT(board_.Run({"forget", name}),
              Ends(1, "",
                   "kestrelctl: \"" + name +
                       "\": ENOENT: No such file or directory (no network of that name is "
                       "stored)\n"));
  EXPECT_THAT(board_.Commands(), Not(HasSubstr("REMOVE_NETWORK")));
}

TEST_F(KestrelctlWifi, ForgetsAllNetworks) {
  EXPECT_THAT(board_.Run({"forget", "--all", "--yes"}), Ends(0, "forgot 0 networks\n", ""));
  EXPECT_EQ(board_.Run({"add", "one"}).status, 0);
  EXPECT_EQ(board_.Run({"add", "two"}).status, 0);
  EXPECT_THAT(board_.Run({"forget", "--all", "--yes"}), Ends(0, "forgot 2 networks\n", ""));
  EXPECT_THAT(board_.Run({"list"}), Ends(0, kStoredListHeader, ""));
}

TEST_F(KestrelctlWifi, ChoosesAmongNetworksOfOneNameByTheirSecurity) {
  board_.Script(Rule("LIST_NETWORKS",
                     R"(network id / ssid / bssid / flags\n0\tTwin\tany\t\n1\tTwin\tany\t\n)") +
                Rule("GET_NETWORK ? ssid", R"(\"Twin\")") + Rule("GET_NETWORK 0 key_mgmt", "NONE") +
                Rule("GET_NETWORK 1 key_mgmt", "WPA-PSK") + Rule("*_NETWORK ?", "OK\\n"));
  EXPECT_THAT(
      board_.Run({"forget", "Twin"}),
      Ends(1, "", "kestrelctl: \"Twin\": stored both open and wpa2: choose with --security\n"));
  EXPECT_THAT(board_.Commands(), Not(HasSubstr("REMOVE_NETWORK")));
  EXPECT_EQ(board_.Run({"forget", "Twin", "--security", "unknown"}).status, 1);
  EXPECT_THAT(board_.Commands(), Not(HasSubstr("REMOVE_NETWORK")));
  EXPECT_THAT(board_.Run({"forget", "Twin", "--security", "wpa2"}),
              Ends(0, "forgot 1 network\n", ""));
  EXPECT_THAT(board_.Commands(), HasSubstr("REMOVE_NETWORK 1\n"));
  EXPECT_THAT(board_.Commands(), Not(HasSubstr("REMOVE_NETWORK 0\n")));
}

TEST_F(KestrelctlWifi, SurvivesTextsThatFillAReply) {
  for (const size_t size : {33U, 256U, 2000U}) {
    const std::string name(size, 'x');
    board_.Script(Rule("LIST_NETWORKS", R"(network id / ssid / bssid / flags\n0\tx\tany\t\n)") +
                  Rule("GET_NETWORK ? ssid", "\\\"" + name + "\\\"") +
                  Rule("GET_NETWORK ? key_mgmt", "NONE") +
                  Rule("STATUS", "bssid=02:00:00:00:00:0a\\nfreq=2412\\nssid=" + name +
                                     R"(\nkey_mgmt=NONE\nwpa_state=COMPLETED\n)"));
    EXPECT_EQ(board_.Run({"list"}).status, 0) << size;
    EXPECT_EQ(board_.Run({"current"}).status, 0) << size;
    EXPECT_EQ(board_.Run({"forget", name.substr(0, 32)}).status, 1) << size;
  }
}

}  // namespace
}  // namespace kestrel::test
