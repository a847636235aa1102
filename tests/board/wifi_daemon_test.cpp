// SPDX-License-Identifier: Apache-2.0
// What the Wi-Fi daemon of a board replies: to the commands of a recorded conversation the same as
// a real one, byte for byte, and what it does by itself.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "wifi_board.h"

namespace kestrel::test {
namespace {

namespace fs = std::filesystem;

/// A recorded reply. The daemon of these tests has no address to tell.
std::string Recorded(const std::string& name) {
  std::ifstream file(std::string(KESTREL_WIFI_DATA) + "/" + name + ".txt", std::ios::binary);
  EXPECT_TRUE(file) << name;
  std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string address = "ip_address=192.168.77.2\n";
  const size_t found = text.find(address);
  return found == std::string::npos ? text : text.erase(found, address.size());
}

struct Exchange {
  const char* command;
  std::string reply;
};

class WifiDaemon : public WifiBoard {
 protected:
  void StartAmongTenAccessPoints() {
    ASSERT_EQ(Start("bench", {"--config", KESTREL_TEN_ACCESS_POINTS}).status, 0);
  }

  void Expect(const WifiClient& client, const std::vector<Exchange>& conversation) {
    for (const Exchange& exchange : conversation) {
      EXPECT_EQ(client.Ask(exchange.command), exchange.reply) << exchange.command;
    }
  }

  void StoreWithWrongPassphrase(const WifiClient& client) {
    Expect(client, {{"ADD_NETWORK", "0\n"},
                    {"SET_NETWORK 0 ssid \"Kestrel Lab\"", "OK\n"},
                    {"SET_NETWORK 0 psk \"kestrel-lib\"", "OK\n"},
                    {"ENABLE_NETWORK 0", "OK\n"}});
  }
};

TEST_F(WifiDaemon, ScansAsRecorded) {
  StartAmongTenAccessPoints();
  const WifiClient client(SocketPath());
  Expect(client, {{"STATUS", Recorded("002-status-idle")},
                  {"LIST_NETWORKS", Recorded("004-list-empty")},
                  {"SCAN_RESULTS", Recorded("005-scan-results-before-any-scan")},
                  {"SCAN", "OK\n"},
                  {"SCAN", "FAIL-BUSY\n"},
                  {"SCAN_RESULTS", Recorded("005-scan-results-before-any-scan")},
                  {"STATUS", Recorded("009-status-while-scanning")}});
  EXPECT_EQ(client.AskUntil("SCAN_RESULTS", "testap"), Recorded("010-scan-results"));
  Expect(client, {{"STATUS", Recorded("002-status-idle")},
                  {"SCAN ", "OK\n"},
                  {"SCAN_RESULTS", Recorded("010-scan-results")}});
}

TEST_F(WifiDaemon, StoresNetworksAsRecorded) {
  StartAmongTenAccessPoints();
  const WifiClient client(SocketPath());
  const std::string digits = "1234567890123456789012345678901234567890123456789012345678901234";
  const std::string psk63 = "SET_NETWORK 0 psk \"" + digits.substr(0, 63) + "\"";
  const std::string psk64 = "SET_NETWORK 0 psk \"" + digits + "\"";
  const std::string key = "SET_NETWORK 0 psk " + digits;
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"LIST_NETWORKS", Recorded("019-list-one-fresh")},
                  {"GET_NETWORK 0 ssid", "FAIL\n"},
                  {"GET_NETWORK 0 psk", "FAIL\n"},
                  {"GET_NETWORK 0 key_mgmt", Recorded("022-get-key_mgmt-default")},
                  {"GET_NETWORK 9 ssid", "FAIL\n"},
                  {"GET_NETWORK x ssid", "FAIL\n"},
                  {"GET_NETWORK 0", "FAIL\n"},
                  {"GET_NETWORK 0 shoe_size", "FAIL\n"},
                  {"ENABLE_NETWORK 0", "OK\n"},
                  {"DISABLE_NETWORK 0", "OK\n"},
                  {"SAVE_CONFIG", "OK\n"},
                  {"SET_NETWORK 0 ssid \"testap\"", "OK\n"},
                  {"GET_NETWORK 0 ssid", "\"testap\""},
                  {"GET_NETWORK x ssid", "\"testap\""},
                  {"SET_NETWORK 0 ssid testap", "FAIL\n"},
                  {"SET_NETWORK 0 ssid \"testap", "FAIL\n"},
                  {"SET_NETWORK 0 ssid \"", "FAIL\n"},
                  {"SET_NETWORK 0 ssid \"\"", "OK\n"},
                  {"GET_NETWORK 0 ssid", "\"\""},
                  {"SET_NETWORK 0 ssid \"012345678901234567890123456789012\"", "FAIL\n"},
                  {"SET_NETWORK 0 ssid 746573746170", "OK\n"},
                  {"GET_NETWORK 0 ssid", "\"testap\""},
                  {"SET_NETWORK 0 ssid 74657", "FAIL\n"},
                  {R"(SET_NETWORK 0 ssid "a"b")", "OK\n"},
                  {"GET_NETWORK 0 ssid", R"("a"b")"},
                  {R"(SET_NETWORK 0 ssid "a\b")", "OK\n"},
                  {"GET_NETWORK 0 ssid", R"("a\b")"},
                  {"SET_NETWORK 0 ssid \"Caf\xc3\xa9\"", "OK\n"},
                  {"GET_NETWORK 0 ssid", "436166c3a9"},
                  {"LIST_NETWORKS", Recorded("054-list-utf8")},
                  {"SET_NETWORK 0 ssid \"a\x01\x62\"", "OK\n"},
                  {"GET_NETWORK 0 ssid", "610162"},
                  {R"(SET_NETWORK 0 ssid P"q\"b\\s\x01\t\xff")", "OK\n"},
                  {"GET_NETWORK 0 ssid", "7122625c730109ff"},
                  {"SET_NETWORK 0 ssid \"testap\"", "OK\n"},
                  {"SET_NETWORK 0 psk \"short\"", "FAIL\n"},
                  {"SET_NETWORK 0 psk \"1234567\"", "FAIL\n"},
                  {"SET_NETWORK 0 psk \"12345678\"", "OK\n"},
                  {psk63.c_str(), "OK\n"},
                  {psk64.c_str(), "FAIL\n"},
                  {key.c_str(), "OK\n"},
                  {"SET_NETWORK 0 psk 12345678", "FAIL\n"},
                  {"GET_NETWORK 0 psk", "*"},
                  {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                  {"GET_NETWORK 0 key_mgmt", "NONE"},
                  {"SET_NETWORK 0 key_mgmt WPA-PSK SAE", "OK\n"},
                  {"GET_NETWORK 0 key_mgmt", "WPA-PSK SAE"},
                  {"SET_NETWORK 0 key_mgmt BOGUS", "FAIL\n"},
                  {"SET_NETWORK 0 key_mgmt wpa-psk", "FAIL\n"},
                  {"SET_NETWORK 0 key_mgmt ", "FAIL\n"},
                  {"SET_NETWORK 0 key_mgmt WPA-PSK", "OK\n"},
                  {"GET_NETWORK 0 key_mgmt", "WPA-PSK"},
                  {"SET_NETWORK 9 ssid \"x\"", "FAIL\n"},
                  {"SET_NETWORK 0 ssid", "FAIL\n"},
                  {"SET_NETWORK 0 scan_ssid 2", "FAIL\n"},
                  {"SET_NETWORK 0 scan_ssid 1", "OK\n"},
                  {"GET_NETWORK 0 scan_ssid", "1"},
                  {"GET_NETWORK 0 disabled", "1"},
                  {"GET_NETWORK 0 priority", "0"},
                  {"ENABLE_NETWORK 9", "FAIL\n"},
                  {"ENABLE_NETWORK x", "OK\n"},
                  {"ENABLE_NETWORK", "UNKNOWN COMMAND\n"},
                  {"REMOVE_NETWORK", "UNKNOWN COMMAND\n"},
                  {"DISABLE_NETWORK 9", "FAIL\n"},
                  {"REMOVE_NETWORK 9", "FAIL\n"},
                  {"SELECT_NETWORK 9", "FAIL\n"},
                  {"FROBNICATE", "UNKNOWN COMMAND\n"},
                  {"scan", "UNKNOWN COMMAND\n"},
                  {"", "UNKNOWN COMMAND\n"},
                  {"PING", "PONG\n"}});
}

TEST_F(WifiDaemon, ConnectsAsRecorded) {
  StartAmongTenAccessPoints();
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"testap\"", "OK\n"},
                  {"SET_NETWORK 0 psk \"correct horse\"", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"},
                  {"LIST_NETWORKS", Recorded("089-list-current")},
                  {"STATUS", Recorded("087-status-right-after-enable")},
                  {"SCAN", "FAIL-BUSY\n"}});
  EXPECT_EQ(client.AskUntil("STATUS", "COMPLETED"), Recorded("088-status-completed"));
  Expect(client, {{"LIST_NETWORKS", Recorded("089-list-current")},
                  {"SCAN", "OK\n"},
                  {"STATUS", Recorded("088-status-completed")},
                  {"ENABLE_NETWORK 0", "OK\n"},
                  {"DISABLE_NETWORK 0", "OK\n"}});
  EXPECT_EQ(client.AskUntil("STATUS", "INACTIVE"), Recorded("100-status-after-disable"));
  Expect(client, {{"DISABLE_NETWORK 0", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"},
                  {"DISCONNECT", "OK\n"},
                  {"LIST_NETWORKS", Recorded("111-list-after-disconnect")},
                  {"RECONNECT", "OK\n"},
                  {"ADD_NETWORK", "1\n"},
                  {"SET_NETWORK 1 ssid \"open ap\"", "OK\n"},
                  {"SET_NETWORK 1 key_mgmt NONE", "OK\n"},
                  {"ENABLE_NETWORK 1", "OK\n"},
                  {"LIST_NETWORKS", Recorded("118-list-two")},
                  {"SELECT_NETWORK 1", "OK\n"},
                  {"LIST_NETWORKS", Recorded("120-list-two-selected")}});
  EXPECT_EQ(client.AskUntil("STATUS", "COMPLETED"), Recorded("121-status-open"));
}

TEST_F(WifiDaemon, KeepsNumbersAndHiddenNetworksAsRecorded) {
  StartAmongTenAccessPoints();
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"ADD_NETWORK", "1\n"},
                  {"SET_NETWORK 1 ssid \"open ap\"", "OK\n"},
                  {"ADD_NETWORK", "2\n"},
                  {"SET_NETWORK 2 ssid 436166c3a920e29c93", "OK\n"},
                  {"GET_NETWORK 2 ssid", Recorded("127-get3-ssid")},
                  {"ADD_NETWORK", "3\n"},
                  {"SET_NETWORK 3 ssid 712262 5c730109ff", "FAIL\n"},
                  {"SET_NETWORK 3 ssid 7122625c730109ff", "OK\n"},
                  {"ADD_NETWORK", "4\n"},
                  {"SET_NETWORK 4 ssid \"hidden-net\"", "OK\n"},
                  {"SET_NETWORK 4 psk \"hiddenpass\"", "OK\n"},
                  {"SELECT_NETWORK 4", "OK\n"},
                  {"STATUS", Recorded("009-status-while-scanning")},
                  {"SET_NETWORK 4 scan_ssid 1", "OK\n"}});
  EXPECT_EQ(client.AskUntil("STATUS", "COMPLETED"), Recorded("143-status-hidden"));
  Expect(client, {{"DISABLE_NETWORK all", "OK\n"},
                  {"ADD_NETWORK", "5\n"},
                  {"SET_NETWORK 5 ssid \"testap\"", "OK\n"},
                  {"SET_NETWORK 5 psk \"wrong password\"", "OK\n"},
                  {"SELECT_NETWORK 5", "OK\n"}});
  const std::string list = client.AskUntil("LIST_NETWORKS", "TEMP-DISABLED");
  EXPECT_NE(list.find("\n5\ttestap\tany\t[TEMP-DISABLED]\n"), std::string::npos) << list;
  Expect(client, {{"STATUS", Recorded("150-wrongpw-status")},
                  {"REMOVE_NETWORK 5", "OK\n"},
                  {"REMOVE_NETWORK 0", "OK\n"},
                  {"LIST_NETWORKS", Recorded("155-list-after-remove")},
                  {"ADD_NETWORK", "5\n"},
                  {"LIST_NETWORKS", Recorded("157-list-after-readd")},
                  {"ENABLE_NETWORK all", "OK\n"},
                  {"DISABLE_NETWORK all", "OK\n"},
                  {"LIST_NETWORKS", Recorded("157-list-after-readd")},
                  {"REMOVE_NETWORK all", "OK\n"},
                  {"LIST_NETWORKS", Recorded("166-list-after-remove-all")}});
}

TEST_F(WifiDaemon, NetworkWithoutItsPassphraseIsNotTried) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"Kestrel Lab\"", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"},
                  {"LIST_NETWORKS", "network id / ssid / bssid / flags\n0\tKestrel Lab\tany\t\n"}});
  EXPECT_EQ(client.Ask("STATUS").substr(0, 19), "wpa_state=SCANNING\n");
}

TEST_F(WifiDaemon, WrongPassphraseIsTriedAgainWhenItIsChanged) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  StoreWithWrongPassphrase(client);
  client.AskUntil("LIST_NETWORKS", "[TEMP-DISABLED]");
  Expect(client, {{"SET_NETWORK 0 psk \"kestrel-lab\"", "OK\n"}});
  const std::string status = client.AskUntil("STATUS", "COMPLETED");
  EXPECT_NE(status.find("\nip_address=192.168.77.2\n"), std::string::npos) << status;
}

TEST_F(WifiDaemon, IsInactiveOnlyWhenAllNetworksAreDisabled) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"Kestrel Lab\"", "OK\n"},
                  {"SET_NETWORK 0 psk \"kestrel-lib\"", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"},
                  {"ADD_NETWORK", "1\n"}});
  EXPECT_NE(client.AskUntil("LIST_NETWORKS", "[TEMP-DISABLED]").find("[TEMP"), std::string::npos);
  Expect(client, {{"DISABLE_NETWORK 1", "OK\n"}});
  EXPECT_EQ(client.Ask("STATUS").substr(0, 23), "wpa_state=DISCONNECTED\n");
  Expect(client, {{"DISABLE_NETWORK 0", "OK\n"}});
  EXPECT_EQ(client.Ask("STATUS").substr(0, 19), "wpa_state=INACTIVE\n");
}

TEST_F(WifiDaemon, NetworkThatIsDisabledIsNotTemporarilyDisabledAsWell) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  StoreWithWrongPassphrase(client);
  EXPECT_NE(client.AskUntil("LIST_NETWORKS", "[TEMP-DISABLED]").find("[TEMP"), std::string::npos);
  Expect(client, {{"DISABLE_NETWORK 0", "OK\n"},
                  {"LIST_NETWORKS",
                   "network id / ssid / bssid / flags\n0\tKestrel Lab\tany\t[DISABLED]\n"}});
}

TEST_F(WifiDaemon, WrongPassphraseIsTriedAgainAfterATime) {
  StartWith("[wifi]\nassociation-time = 200\nretry-time = 200\n");
  const WifiClient client(SocketPath());
  StoreWithWrongPassphrase(client);
  client.AskUntil("LIST_NETWORKS", "[TEMP-DISABLED]");
  EXPECT_NE(client.AskUntil("LIST_NETWORKS", "[CURRENT]").find("[CURRENT]"), std::string::npos);
  EXPECT_NE(client.AskUntil("LIST_NETWORKS", "[TEMP-DISABLED]").find("[TEMP"), std::string::npos);
}

TEST_F(WifiDaemon, SelectingANetworkEndsItsPause) {
  StartWith("[wifi]\nscan-time = 0\nassociation-time = 200\nretry-time = 600000\n");
  const WifiClient client(SocketPath());
  StoreWithWrongPassphrase(client);
  EXPECT_NE(client.AskUntil("LIST_NETWORKS", "[TEMP-DISABLED]").find("[TEMP"), std::string::npos);
  Expect(client, {{"SELECT_NETWORK 0", "OK\n"}});
  EXPECT_NE(client.AskUntil("LIST_NETWORKS", "[CURRENT]").find("[CURRENT]"), std::string::npos);
}

TEST_F(WifiDaemon, ReconnectingWhereNobodyHasDisconnectedChangesNothing) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"RECONNECT", "OK\n"},
                  {"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"Kestrel Guest\"", "OK\n"},
                  {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"}});
  EXPECT_NE(client.AskUntil("STATUS", "COMPLETED").find("COMPLETED"), std::string::npos);
}

TEST_F(WifiDaemon, PrioritiesAreNumbersOfOneByte) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 priority 255", "OK\n"},
                  {"SET_NETWORK 0 priority 256", "FAIL\n"},
                  {"SET_NETWORK 0 priority 2550", "FAIL\n"},
                  {"SET_NETWORK 0 priority 100x", "FAIL\n"},
                  {"SET_NETWORK 0 priority ", "FAIL\n"},
                  {"GET_NETWORK 0 priority", "255"}});
}

TEST_F(WifiDaemon, SignalsAreToldWhateverTheirSign) {
  StartWith(std::string(kQuickWifi) +
            "[[wifi.access-point]]\nname = \"near\"\nsecurity = \"open\"\nsignal = 5\n"
            "[[wifi.access-point]]\nname = \"far\"\nsecurity = \"open\"\nsignal = -128\n");
  const WifiClient client(SocketPath());
  Expect(client, {{"SCAN", "OK\n"}});
  const std::string results = client.AskUntil("SCAN_RESULTS", "far");
  EXPECT_NE(results.find("\t5\t[ESS]\tnear\n"), std::string::npos) << results;
  EXPECT_NE(results.find("\t-128\t[ESS]\tfar\n"), std::string::npos) << results;
}

TEST_F(WifiDaemon, ListHasRoomForATerminatingNul) {
  constexpr size_t kBuffer = 4096;
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  const auto name = [&client](int id, size_t length) {
    EXPECT_EQ(client.Ask("SET_NETWORK " + std::to_string(id) + " ssid \"" +
                         std::string(length, 'x') + '"'),
              "OK\n");
  };
  constexpr int kLast = 79;
  for (int id = 0; id <= kLast; ++id) {
    Expect(client, {{"ADD_NETWORK", std::to_string(id) + "\n"}});
    name(id, id == kLast ? 1 : 32);
  }
  const size_t size = client.Ask("LIST_NETWORKS").size();
  ASSERT_LT(size, kBuffer);
  const size_t room = kBuffer - size;
  ASSERT_LT(room, 32U);
  name(kLast, room);
  EXPECT_EQ(client.Ask("LIST_NETWORKS").size(), kBuffer - 1);
  name(kLast, room + 1);
  EXPECT_EQ(client.Ask("LIST_NETWORKS").find("\n79\t"), std::string::npos);
}

TEST_F(WifiDaemon, ListsAreCutBeforeTheFirstLineThatDoesNotFit) {
  std::string configuration = kQuickWifi;
  for (int i = 0; i < 100; ++i) {
    configuration += "[[wifi.access-point]]\nname = \"a name of its own\"\nsecurity = \"open\"\n";
  }
  StartWith(configuration);
  const WifiClient client(SocketPath());
  Expect(client, {{"SCAN", "OK\n"}});
  const std::string results = client.AskUntil("SCAN_RESULTS", "\n02");
  const size_t line =
      std::string("02:00:00:00:00:00\t2412\t-50\t[ESS]\ta name of its own\n").size();
  EXPECT_LT(results.size(), 4096U);
  EXPECT_GE(results.size() + line, 4096U);
  EXPECT_EQ(results.back(), '\n');
  for (int i = 0; i < 300; ++i) {
    client.Ask("ADD_NETWORK");
  }
  const std::string networks = client.Ask("LIST_NETWORKS");
  EXPECT_LT(networks.size(), 4096U);
  EXPECT_GE(networks.size() + 21, 4096U);
  EXPECT_EQ(networks.back(), '\n');
}

TEST_F(WifiDaemon, ScanListsProtectedNetworksFirstAndThenTheStronger) {
  StartWith(std::string(kQuickWifi) +
            "[[wifi.access-point]]\nname = \"open\"\nsecurity = \"open\"\nsignal = -20\n"
            "[[wifi.access-point]]\nname = \"weak\"\nsignal = -80\n"
            "[[wifi.access-point]]\nname = \"strong\"\nsignal = -30\n");
  const WifiClient client(SocketPath());
  Expect(client, {{"SCAN", "OK\n"}});
  const std::string results = client.AskUntil("SCAN_RESULTS", "open");
  EXPECT_LT(results.find("\tstrong\n"), results.find("\tweak\n")) << results;
  EXPECT_LT(results.find("\tweak\n"), results.find("\topen\n")) << results;
}

TEST_F(WifiDaemon, FindsTheAccessPointsOfTheMoment) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"Attic\"", "OK\n"},
                  {"SET_NETWORK 0 psk \"up and up\"", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"}});
  EXPECT_NE(client.Ask("STATUS").find("wpa_state=SCANNING\n"), std::string::npos);
  const ProgramResult added = Board(
      {"wifi", "add", "Attic", "--passphrase", "up and up", "--channel", "36", "--signal", "-71"});
  EXPECT_EQ(added.status, 0) << added.standard_error;
  const std::string status = client.AskUntil("STATUS", "COMPLETED");
  EXPECT_NE(status.find("freq=5180\nssid=Attic\n"), std::string::npos) << status;
  Board({"wifi", "signal", "Attic", "-80"});
  client.Ask("SCAN");
  client.AskUntil("SCAN_RESULTS", "\t5180\t-80\t[WPA2-PSK-CCMP][ESS]\tAttic\n");
  Board({"wifi", "remove", "Attic"});
  EXPECT_NE(client.AskUntil("STATUS", "SCANNING").find("SCANNING"), std::string::npos);
  client.Ask("SCAN");
  client.AskUntil("STATUS", "SCANNING");
  EXPECT_EQ(Board({"wifi", "remove", "Attic"}).standard_error,
            "kestrel-board: there is no access point 'Attic'\n");
}

TEST_F(WifiDaemon, StrongestAccessPointOfTheNameIsJoined) {
  StartWith(std::string(kQuickWifi) +
            "[[wifi.access-point]]\nname = \"n\"\nsecurity = \"open\"\nsignal = -70\n"
            "[[wifi.access-point]]\nname = \"n\"\nsecurity = \"open\"\nsignal = -40\n"
            "[[wifi.access-point]]\nname = \"n\"\nsecurity = \"wpa2\"\nsignal = -20\n");
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"n\"", "OK\n"},
                  {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"}});
  EXPECT_EQ(client.AskUntil("STATUS", "COMPLETED").substr(0, 24), "bssid=02:00:00:00:00:01\n");
}

TEST_F(WifiDaemon, NetworkWithAnAddressIsThatAccessPointAlone) {
  StartWith(std::string(kQuickWifi) +
            "[[wifi.access-point]]\nname = \"n\"\nsecurity = \"open\"\nsignal = -20\n"
            "[[wifi.access-point]]\nname = \"n\"\nsecurity = \"open\"\nsignal = -70\n");
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"n\"", "OK\n"},
                  {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                  {"GET_NETWORK 0 bssid", "FAIL\n"},
                  {"SET_NETWORK 0 bssid 02:00", "FAIL\n"},
                  {"SET_NETWORK 0 bssid 02:00:00:00:00:01", "OK\n"},
                  {"GET_NETWORK 0 bssid", "02:00:00:00:00:01"},
                  {"LIST_NETWORKS",
                   "network id / ssid / bssid / flags\n0\tn\t02:00:00:00:00:01\t[DISABLED]\n"},
                  {"ENABLE_NETWORK 0", "OK\n"}});
  EXPECT_EQ(client.AskUntil("STATUS", "COMPLETED").substr(0, 24), "bssid=02:00:00:00:00:01\n");
  Expect(client,
         {{"DISCONNECT", "OK\n"}, {"SET_NETWORK 0 bssid any", "OK\n"}, {"RECONNECT", "OK\n"}});
  EXPECT_EQ(client.AskUntil("STATUS", "COMPLETED").substr(0, 24), "bssid=02:00:00:00:00:00\n");
}

TEST_F(WifiDaemon, NetworkOfTheHighestPriorityIsJoinedAndAmongEqualsTheFirst) {
  StartWith(std::string(kQuickWifi) +
            "[[wifi.access-point]]\nname = \"near\"\nsecurity = \"open\"\nsignal = -20\n"
            "[[wifi.access-point]]\nname = \"far\"\nsecurity = \"open\"\nsignal = -80\n");
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"far\"", "OK\n"},
                  {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                  {"ADD_NETWORK", "1\n"},
                  {"SET_NETWORK 1 ssid \"near\"", "OK\n"},
                  {"SET_NETWORK 1 key_mgmt NONE", "OK\n"},
                  {"DISCONNECT", "OK\n"},
                  {"ENABLE_NETWORK all", "OK\n"},
                  {"RECONNECT", "OK\n"}});
  EXPECT_NE(client.AskUntil("STATUS", "COMPLETED").find("\nid=0\n"), std::string::npos);
  Expect(client, {{"DISCONNECT", "OK\n"},
                  {"SET_NETWORK 1 priority 1", "OK\n"},
                  {"SET_NETWORK 1 priority -1", "FAIL\n"},
                  {"RECONNECT", "OK\n"}});
  EXPECT_NE(client.AskUntil("STATUS", "COMPLETED").find("\nid=1\n"), std::string::npos);
}

TEST_F(WifiDaemon, SavedNetworksOutliveTheBoard) {
  StartWith(kQuickWifi);
  {
    const WifiClient client(SocketPath());
    Expect(client, {{"ADD_NETWORK", "0\n"},
                    {"ADD_NETWORK", "1\n"},
                    {"SET_NETWORK 1 ssid \"Kestrel Lab\"", "OK\n"},
                    {"SET_NETWORK 1 psk \"kestrel-lab\"", "OK\n"},
                    {"ENABLE_NETWORK 1", "OK\n"},
                    {"ADD_NETWORK", "2\n"},
                    {"SET_NETWORK 2 ssid 00ff22", "OK\n"},
                    {"SET_NETWORK 2 psk \"p\xc3\xa4\xff\\\"sword\"", "OK\n"},
                    {"SAVE_CONFIG", "OK\n"},
                    {"REMOVE_NETWORK 2", "OK\n"}});
  }
  Stop();
  EXPECT_EQ(std::filesystem::status(NetworksFile()).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  client.AskUntil("STATUS", "COMPLETED");
  // The first, which lacks a key, was not saved.
  Expect(client, {{"LIST_NETWORKS",
                   "network id / ssid / bssid / flags\n"
                   "0\tKestrel Lab\tany\t[CURRENT]\n"
                   "1\t\\x00\\xff\\\"\tany\t[DISABLED]\n"},
                  {"GET_NETWORK 1 psk", "*"},
                  {"REMOVE_NETWORK all", "OK\n"},
                  {"RECONFIGURE", "OK\n"}});
  EXPECT_NE(client.Ask("LIST_NETWORKS").find("\n1\t"), std::string::npos);
  Expect(client, {{"REMOVE_NETWORK all", "OK\n"}, {"SAVE_CONFIG", "OK\n"}});
  EXPECT_FALSE(std::filesystem::exists(NetworksFile()));
}

TEST_F(WifiDaemon, SavedKeyOpensTheSameNetworkWhateverItsBytes) {
  const std::string key = "p\xc3\xa4\\x41\\n\"word";
  const std::string configuration =
      std::string(kQuickWifi) + "[[wifi.access-point]]\nname = \"n\"\npassphrase = '" + key + "'\n";
  StartWith(configuration);
  {
    const WifiClient client(SocketPath());
    const std::string set_key = "SET_NETWORK 0 psk \"" + key + "\"";
    Expect(client, {{"ADD_NETWORK", "0\n"},
                    {"SET_NETWORK 0 ssid \"n\"", "OK\n"},
                    {set_key.c_str(), "OK\n"},
                    {"ENABLE_NETWORK 0", "OK\n"},
                    {"SAVE_CONFIG", "OK\n"}});
    EXPECT_NE(client.AskUntil("STATUS", "COMPLETED").find("COMPLETED"), std::string::npos);
  }
  Stop();
  StartWith(configuration);
  const WifiClient client(SocketPath());
  EXPECT_NE(client.AskUntil("STATUS", "COMPLETED").find("COMPLETED"), std::string::npos);
}

TEST_F(WifiDaemon, RestartedDaemonKnowsOnlyWhatHasBeenSaved) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                  {"SAVE_CONFIG", "OK\n"},
                  {"ADD_NETWORK", "1\n"}});
  Board({"wifi", "--daemon", "refusing"});
  Board({"wifi", "--daemon", "running"});
  EXPECT_EQ(WifiClient(SocketPath()).Ask("LIST_NETWORKS"),
            "network id / ssid / bssid / flags\n0\t\tany\t[DISABLED]\n");
}

TEST_F(WifiDaemon, RestartedDaemonHasNeitherConnectionNorScanResults) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"Kestrel Guest\"", "OK\n"},
                  {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"}});
  EXPECT_NE(client.AskUntil("STATUS", "COMPLETED").find("COMPLETED"), std::string::npos);
  Expect(client, {{"SCAN", "OK\n"}});
  EXPECT_NE(client.AskUntil("SCAN_RESULTS", "Guest").find("Guest"), std::string::npos);
  Board({"wifi", "--daemon", "refusing"});
  Board({"wifi", "--daemon", "running"});
  const WifiClient restarted(SocketPath());
  const std::string status = restarted.Ask("STATUS");
  EXPECT_EQ(status.find("ssid="), std::string::npos) << status;
  EXPECT_NE(status.find("wpa_state=DISCONNECTED\n"), std::string::npos) << status;
  EXPECT_EQ(restarted.Ask("SCAN_RESULTS"), "bssid / frequency / signal level / flags / ssid\n");
}

TEST_F(WifiDaemon, RestartedDaemonKnowsOfNoDisconnect) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"Kestrel Guest\"", "OK\n"},
                  {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"},
                  {"SAVE_CONFIG", "OK\n"},
                  {"DISCONNECT", "OK\n"}});
  Board({"wifi", "--daemon", "refusing"});
  Board({"wifi", "--daemon", "running"});
  const WifiClient restarted(SocketPath());
  EXPECT_NE(restarted.AskUntil("STATUS", "COMPLETED").find("COMPLETED"), std::string::npos);
}

TEST_F(WifiDaemon, RestartedDaemonDoesNotScanOn) {
  StartWith("[wifi]\nscan-time = 600000\n");
  Expect(WifiClient(SocketPath()), {{"SCAN", "OK\n"}, {"SCAN", "FAIL-BUSY\n"}});
  Board({"wifi", "--daemon", "absent"});
  Board({"wifi", "--daemon", "running"});
  Expect(WifiClient(SocketPath()), {{"SCAN", "OK\n"}});
}

TEST_F(WifiDaemon, SavedNetworksArePrivateAlsoWhereAFileIsLeftOver) {
  StartWith(kQuickWifi);
  const std::string left_over = NetworksFile() + ".new";
  std::ofstream(left_over) << "left over";
  fs::permissions(left_over, fs::perms(0666));
  Expect(
      WifiClient(SocketPath()),
      {{"ADD_NETWORK", "0\n"}, {"SET_NETWORK 0 key_mgmt NONE", "OK\n"}, {"SAVE_CONFIG", "OK\n"}});
  EXPECT_EQ(fs::status(NetworksFile()).permissions(), fs::perms(0600));
  EXPECT_FALSE(fs::exists(left_over));
}

TEST_F(WifiDaemon, FileThatCannotBeReadAnewLeavesTheNetworks) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"}});
  std::ofstream(NetworksFile()) << "{";
  Expect(client, {{"RECONFIGURE", "FAIL\n"},
                  {"LIST_NETWORKS", Recorded("019-list-one-fresh")},
                  {"REMOVE_NETWORK 0", "OK\n"}});
}

TEST_F(WifiDaemon, NetworksReadAnewAreTriedAtOnce) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"Kestrel Lab\"", "OK\n"},
                  {"SET_NETWORK 0 psk \"kestrel-lab\"", "OK\n"},
                  {"SET_NETWORK 0 disabled 0", "OK\n"},
                  {"SAVE_CONFIG", "OK\n"},
                  {"DISCONNECT", "OK\n"},
                  {"SET_NETWORK 0 psk \"kestrel-lib\"", "OK\n"},
                  {"RECONNECT", "OK\n"}});
  EXPECT_NE(client.AskUntil("LIST_NETWORKS", "[TEMP-DISABLED]").find("[TEMP"), std::string::npos);
  Expect(client, {{"RECONFIGURE", "OK\n"}});
  EXPECT_NE(client.AskUntil("STATUS", "COMPLETED").find("COMPLETED"), std::string::npos);
}

TEST_F(WifiDaemon, RemovedNetworkIsLeft) {
  StartWith(kQuickWifi);
  const WifiClient client(SocketPath());
  Expect(client, {{"ADD_NETWORK", "0\n"},
                  {"SET_NETWORK 0 ssid \"Kestrel Guest\"", "OK\n"},
                  {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                  {"ENABLE_NETWORK 0", "OK\n"}});
  EXPECT_NE(client.AskUntil("STATUS", "COMPLETED").find("COMPLETED"), std::string::npos);
  Expect(client, {{"REMOVE_NETWORK 0", "OK\n"}});
  EXPECT_EQ(client.Ask("STATUS").find("COMPLETED"), std::string::npos);
}

TEST_F(WifiDaemon, NetworksAreKeptInTheFileThatIsNamed) {
  const std::string file = files_.path() + "/networks";
  const std::string configuration = std::string(kQuickWifi) + "networks-file = \"" + file + "\"\n";
  StartWith(configuration);
  {
    const WifiClient client(SocketPath());
    Expect(client, {{"ADD_NETWORK", "0\n"},
                    {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
                    {"SET_NETWORK 0 ssid \"n\"", "OK\n"},
                    {"SAVE_CONFIG", "OK\n"}});
  }
  Stop();
  const ProgramResult other = Board({"run", "--config", files_.Write("other.toml", configuration),
                                     "--", KESTREL_BOARD_PROGRAM, "wifi"});
  EXPECT_NE(other.standard_output.find("network 0  \"n\""), std::string::npos)
      << other.standard_output << other.standard_error;
  const std::string folder = files_.path() + "/missing/networks";
  StartWith(std::string(kQuickWifi) + "networks-file = \"" + folder + "\"\n");
  const WifiClient client(SocketPath());
  client.Ask("ADD_NETWORK");
  client.Ask("SET_NETWORK 0 key_mgmt NONE");
  EXPECT_EQ(client.Ask("SAVE_CONFIG"), "FAIL\n");
}

TEST_F(WifiDaemon, FileOfNetworksThatCannotBeReadIsRefused) {
  const std::string file = files_.Write("networks", "{\n  \"networks\": [{\"ssid\": \"x\"}]\n}\n");
  const std::string config =
      files_.Write("board.toml", "[wifi]\nnetworks-file = \"" + file + "\"\n");
  ExpectUsageError({"run", "--config", config, "true"},
                   file + ":2: 'networks.ssid': no network can have this");
}

}  // namespace
}  // namespace kestrel::test
