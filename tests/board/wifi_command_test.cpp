// SPDX-License-Identifier: Apache-2.0
// kestrel-board wifi, and the configuration of the daemon.
#include "wifi_board.h"

namespace kestrel::test {
namespace {

using nlohmann::json;

class WifiCommands : public WifiBoard {
 protected:
  void ExpectRefused(const std::string& configuration, const std::string& reason) {
    const std::string path = files_.Write("bad.toml", configuration);
    ExpectUsageError({"run", "--config", path, "true"}, path + reason);
  }
};

TEST_F(WifiCommands, FreshBoardHearsTwoAccessPoints) {
  Start("bench");
  EXPECT_EQ(Board({"wifi"}).standard_output,
            "wifi: daemon running, DISCONNECTED\n"
            "  access point 02:00:00:00:00:00  2437 MHz   -48 dBm  wpa2       \"Kestrel Lab\"\n"
            "  access point 02:00:00:00:00:01  2412 MHz   -61 dBm  open       \"Kestrel Guest\"\n");
  EXPECT_NE(Board({"show"}).standard_output.find("\nwifi: daemon running, DISCONNECTED\n"),
            std::string::npos);
}

TEST_F(WifiCommands, StateIsShownWithoutPassphrases) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  for (const std::string command :
       {"ADD_NETWORK", "SET_NETWORK 0 ssid \"Kestrel Lab\"", "SET_NETWORK 0 psk \"kestrel-lab\"",
        "SET_NETWORK 0  PSK \"kestrel-lab\"", "SET_NETWORK 0 sae_password \"kestrel-lab psk \"",
        "SET_NETWORK 0 password \"kestrel-lab\"", "SET_NETWORK 0 wep_key0 \"kestrel-lab\"",
        "ENABLE_NETWORK 0"}) {
    client.Ask(command);
  }
  client.AskUntil("STATUS", "COMPLETED");
  client.Ask("LIST_NETWORKS");
  EXPECT_EQ(Show().at("socket"), "/var/volatile/tmp/wlan0_request_socket");
  const std::string shown = Board({"wifi"}).standard_output;
  const std::string process = std::to_string(getpid());
  const std::vector<std::string> lines = {
      "wifi: daemon running, COMPLETED",
      R"(  network 0  "Kestrel Lab"  WPA-PSK WPA-EAP, current)",
      "  " + process + R"(: SET_NETWORK 0 ssid "Kestrel Lab" -> OK\n)",
      "  " + process + ": SET_NETWORK 0 psk ******** -> OK\\n",
      "  " + process + ": SET_NETWORK 0  psk ******** -> FAIL\\n",
      "  " + process + ": SET_NETWORK 0 sae_password ******** -> FAIL\\n",
      "  " + process + ": SET_NETWORK 0 password ******** -> FAIL\\n",
      "  " + process + ": SET_NETWORK 0 wep_key******** -> FAIL\\n"};
  for (const std::string& line : lines) {
    EXPECT_NE(shown.find(line + "\n"), std::string::npos) << line << "\n" << shown;
  }
  EXPECT_NE(shown.find("  client " + process + ", "), std::string::npos) << shown;
  EXPECT_EQ((shown + Board({"show", "--json"}).standard_output).find("kestrel-lab"),
            std::string::npos);
  const json network = Show().at("networks").at(0);
  EXPECT_EQ(network.at("psk"), "********");
  EXPECT_EQ(network.at("current"), true);
}

TEST_F(WifiCommands, LongAndUnprintableCommandsAreShownShortened) {
  Start("bench");
  const WifiClient client(SocketPath());
  client.Ask("A\x1b[2J" + std::string(100, 'b'));
  const json command = Show().at("commands").at(0);
  EXPECT_EQ(command.at("command"), "A\\e[2J" + std::string(55, 'b') + "... (105 bytes)");
  EXPECT_EQ(command.at("outcome"), "UNKNOWN COMMAND\\n");
}

TEST_F(WifiCommands, ManyNetworksAreShown) {
  json networks = json::array();
  for (int i = 0; i < 5000; ++i) {
    networks.push_back({{"ssid", '"' + std::to_string(i) + '"'}, {"key_mgmt", "NONE"}});
  }
  const std::string file = files_.Write("networks.json", json({{"networks", networks}}).dump());
  StartWith("[wifi]\nnetworks-file = \"" + file + "\"\n");
  EXPECT_EQ(json::parse(Board({"wifi", "--json"}).standard_output).at("networks").size(), 5000U);
  const ProgramResult show = Board({"show"});
  EXPECT_EQ(show.status, 0);
  EXPECT_EQ(show.standard_error, "");
  EXPECT_NE(show.standard_output.find("network 4999  \"4999\""), std::string::npos);
}

TEST_F(WifiCommands, LongScriptIsTaken) {
  std::string script;
  for (int i = 0; i < 3000; ++i) {
    script += "[[rule]]\ncommand = \"NUMBER " + std::to_string(i) + "\"\nreply = \"" +
              std::string(100, 'x') + "\"\n";
  }
  ASSERT_EQ(Start("bench").status, 0);
  const ProgramResult result = Board({"wifi", "--script", files_.Write("long.toml", script)});
  EXPECT_EQ(result.status, 0) << result.standard_error;
  EXPECT_EQ(WifiClient(SocketPath()).Ask("NUMBER 2999"), std::string(100, 'x'));
}

TEST_F(WifiCommands, DaemonCanBeAbsentAndRefuse) {
  StartWith("[wifi]\ndaemon = \"absent\"\n");
  EXPECT_EQ(WifiClient(SocketPath()).error(), ENOENT);
  EXPECT_EQ(Board({"wifi", "--daemon", "refusing"}).standard_output.substr(0, 22),
            "wifi: daemon refusing\n");
  EXPECT_EQ(WifiClient(SocketPath()).error(), ECONNREFUSED);
  Board({"wifi", "--daemon", "running"});
  const WifiClient client(SocketPath());
  EXPECT_EQ(client.Ask("PING"), "PONG\n");
  Board({"wifi", "--daemon", "running"});
  EXPECT_EQ(client.Ask("PING"), "PONG\n") << "it ran already";
  Board({"wifi", "--daemon", "absent"});
  EXPECT_TRUE(client.SeesTheEnd());
  EXPECT_EQ(WifiClient(SocketPath()).error(), ENOENT);
}

TEST_F(WifiCommands, AccessPointsAreConfigured) {
  StartWith(
      "[[wifi.access-point]]\nname-hex = \"00ff\"\nsecurity = \"wep\"\nfrequency = 2412\n"
      "hidden = true\n"
      "[[wifi.access-point]]\nname = \"five\"\nchannel = 149\nsignal = -128\n"
      "bssid = \"AA:bb:CC:dd:EE:00\"\npassphrase = \"eightbytes\"\n");
  const json points = Show().at("access_points");
  EXPECT_EQ(points.at(0), (json{{"name", "\\x00\\xff"},
                                {"bssid", "02:00:00:00:00:00"},
                                {"security", "wep"},
                                {"frequency", 2412},
                                {"signal", -50},
                                {"hidden", true},
                                {"passphrase", nullptr}}));
  EXPECT_EQ(points.at(1), (json{{"name", "five"},
                                {"bssid", "aa:bb:cc:dd:ee:00"},
                                {"security", "wpa2"},
                                {"frequency", 5745},
                                {"signal", -128},
                                {"hidden", false},
                                {"passphrase", "********"}}));
  Stop();
  StartWith("[wifi]\naccess-point = []\n");
  EXPECT_TRUE(Show().at("access_points").empty());
}

TEST_F(WifiCommands, AccessPointsAreAddedAndRemoved) {
  Start("bench");
  EXPECT_EQ(
      Board({"wifi", "add", "x", "--security", "open", "--bssid", "02:00:00:00:00:0a", "--hidden"})
          .status,
      0);
  EXPECT_EQ(Show().at("access_points").at(2).at("hidden"), true);
  EXPECT_EQ(Board({"wifi", "add", "z", "--security", "open"}).status, 0);
  ExpectUsageError({"wifi", "add", "y", "--bssid", "02:00:00:00:00:0A"},
                   "there is an access point with address 02:00:00:00:00:0a already");
  EXPECT_EQ(Board({"wifi", "remove", "z"}).status, 0);
  ExpectUsageError({"wifi", "add", "y", "--security", "open", "--passphrase", "12345678"},
                   "with security open there is no passphrase");
  ExpectUsageError({"wifi", "add", "y", "--channel", "15"},
                   "there is no channel 15 (known: 1 to 14, and 32 to 177 at 5 GHz)");
  ExpectUsageError({"wifi", "add", std::string(33, 'y')}, "a name has at most 32 bytes");
  EXPECT_EQ(Board({"wifi", "remove", "02:00:00:00:00:0A"}).status, 0);
  EXPECT_EQ(Show().at("access_points").size(), 2U);
  ExpectUsageError({"wifi", "signal", "x", "-3"}, "there is no access point 'x'");
}

TEST_F(WifiCommands, NameMayHaveAllOfItsBytes) {
  std::string digits;
  for (int i = 0; i < 32; ++i) {
    digits += "61";
  }
  StartWith("[[wifi.access-point]]\nname-hex = \"" + digits + "\"\n");
  EXPECT_EQ(Show().at("access_points").at(0).at("name"), std::string(32, 'a'));
}

TEST_F(WifiCommands, SignalIsSet) {
  Start("bench");
  const ProgramResult result = Board({"wifi", "signal", "Kestrel Guest", "-90", "--json"});
  const json points = json::parse(result.standard_output).at("access_points");
  EXPECT_EQ(points.at(0).at("signal"), -48);
  EXPECT_EQ(points.at(1).at("signal"), -90);
}

TEST_F(WifiCommands, BadConfigurationIsRefused) {
  ExpectRefused("[wifi]\ndaemon = \"asleep\"\n",
                ":2: 'wifi.daemon' must be one of: absent, refusing, running");
  ExpectRefused("[wifi]\nscan-time = -1\n",
                ":2: 'wifi.scan-time' must be a whole number from 0 to 600000");
  ExpectRefused("[wifi]\nspeed = 1\n",
                ":2: unknown key 'wifi.speed' (known: access-point, association-time, daemon, "
                "ip-address, networks-file, retry-time, rule, scan-time)");
  const std::string table = "[[wifi.access-point]]\n";
  const std::string key = "'wifi.access-point.";
  ExpectRefused(table + "name = \"" + std::string(33, 'n') + "\"\n",
                ":2: " + key + "name' must be a text of at most 32 bytes");
  ExpectRefused(
      table + "name-hex = \"0\"\n",
      ":2: " + key + "name-hex': a name is at most 32 bytes, in pairs of hexadecimal digits");
  ExpectRefused(table + "name = \"a\"\nname-hex = \"00\"\n",
                ":3: " + key + "name-hex': an access point has one name");
  ExpectRefused(table + "security = \"wpa9\"\n",
                ":2: " + key +
                    "security' must be one of: open, wep, wpa, wpa2, wpa-wpa2, wpa2-eap, "
                    "wpa2-wpa3, wpa3");
  ExpectRefused(table + "channel = 15\n", ":2: " + key +
                                              "channel': there is no channel 15 (known: 1 to 14, "
                                              "and 32 to 177 at 5 GHz)");
  ExpectRefused(table + "channel = 1\nfrequency = 2412\n",
                ":2: " + key + "channel': an access point has a channel or a frequency, not both");
  ExpectRefused(table + "signal = 200\n",
                ":2: " + key + "signal' must be a whole number from -128 to 127");
  ExpectRefused(table + "bssid = \"02:00\"\n",
                ":2: " + key + "bssid': an address is written like 02:00:00:00:00:01, not '02:00'");
  ExpectRefused(
      table + "bssid = \"02:00:00:00:00:01\"\n" + table + "\nbssid = \"02:00:00:00:00:01\"\n",
      ":5: " + key + "bssid': there is an access point with address 02:00:00:00:00:01 already");
  ExpectRefused(table + "passphrase = \"short\"\n",
                ":2: " + key + "passphrase': a passphrase has 8 to 63 bytes, none a control byte");
  ExpectRefused(table + "security = \"open\"\npassphrase = \"12345678\"\n",
                ":3: " + key + "passphrase': with security open there is no passphrase");
}

TEST_F(WifiCommands, FaultsNameTheSocketOnlyWhereItFits) {
  ExpectUsageError({"run", "--fault", "connect:/dev/gpiochip0=EIO", "true"},
                   "fault 'connect:/dev/gpiochip0=EIO': the board has nothing called "
                   "'/dev/gpiochip0' to connect (known: /var/volatile/tmp/wlan0_request_socket)");
}

}  // namespace
}  // namespace kestrel::test
