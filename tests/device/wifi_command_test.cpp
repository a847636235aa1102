// SPDX-License-Identifier: Apache-2.0
// The daemon's side of what the library says to it, and of what it does not say.
#include <vector>

#include "board/wifi_client.h"
#include "board/wifi_exports.h"
#include "rig.h"
#include "support/outcome.h"

namespace kestrel::test {
namespace {

constexpr char kHeader[] = "network id / ssid / bssid / flags\n";

struct Exchange {
  std::string command;
  std::string reply;
};

class DeviceWifiCommand : public testing::Test {
 protected:
  void SetUp() override { TheRig().ResetWifi(); }
  void TearDown() override { TheRig().ResetWifi(); }

  static void Expect(const std::vector<Exchange>& conversation) {
    const WifiClient client(kWifiSocketPath);
    for (const Exchange& exchange : conversation) {
      EXPECT_EQ(client.Ask(exchange.command), exchange.reply) << exchange.command;
    }
  }
};

TEST_F(DeviceWifiCommand, UnknownOnesAreRefused) {
  Expect({{"PING", "PONG\n"}, {"NONSENSE", "UNKNOWN COMMAND\n"}});
}

TEST_F(DeviceWifiCommand, NetworksGetTheNextNumber) {
  Expect({{"LIST_NETWORKS", kHeader},
          {"ADD_NETWORK", "0\n"},
          {"ADD_NETWORK", "1\n"},
          {"LIST_NETWORKS", std::string(kHeader) + "0\t\tany\t[DISABLED]\n1\t\tany\t[DISABLED]\n"},
          {"REMOVE_NETWORK 0", "OK\n"},
          {"ADD_NETWORK", "2\n"},
          {"REMOVE_NETWORK all", "OK\n"},
          {"ADD_NETWORK", "0\n"}});
}

TEST_F(DeviceWifiCommand, NetworksThatAreNotThereAreRefused) {
  Expect({{"SET_NETWORK 7 ssid \"x\"", "FAIL\n"},
          {"GET_NETWORK 7 ssid", "FAIL\n"},
          {"ENABLE_NETWORK 7", "FAIL\n"},
          {"DISABLE_NETWORK 7", "FAIL\n"},
          {"REMOVE_NETWORK 7", "FAIL\n"}});
}

TEST_F(DeviceWifiCommand, NamesAreToldAsTheyWereGivenOrInHexadecimalDigits) {
  Expect({{"ADD_NETWORK", "0\n"},
          {"GET_NETWORK 0 ssid", "FAIL\n"},
          {R"(SET_NETWORK 0 ssid "a b")", "OK\n"},
          {"GET_NETWORK 0 ssid", R"("a b")"},
          {R"(SET_NETWORK 0 ssid "a"b")", "OK\n"},
          {"GET_NETWORK 0 ssid", R"("a"b")"},
          {R"(SET_NETWORK 0 ssid "a\x22b")", "OK\n"},
          {"GET_NETWORK 0 ssid", R"("a\x22b")"},
          {"SET_NETWORK 0 ssid 610962", "OK\n"},
          {"GET_NETWORK 0 ssid", "610962"},
          {"SET_NETWORK 0 ssid unquoted", "FAIL\n"},
          {"SET_NETWORK 0 ssid \"" + std::string(33, 'x') + "\"", "FAIL\n"},
          {"GET_NETWORK 0 ssid", "610962"}});
}

TEST_F(DeviceWifiCommand, KeysAreCheckedAndNotTold) {
  Expect({{"ADD_NETWORK", "0\n"},
          {"GET_NETWORK 0 key_mgmt", "WPA-PSK WPA-EAP"},
          {"SET_NETWORK 0 psk \"1234567\"", "FAIL\n"},
          {"SET_NETWORK 0 psk \"" + std::string(64, 'x') + "\"", "FAIL\n"},
          {"SET_NETWORK 0 psk \"" + std::string(63, 'x') + "\"", "OK\n"},
          {"SET_NETWORK 0 psk \"12345678\"", "OK\n"},
          {"GET_NETWORK 0 psk", "*"},
          {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
          {"GET_NETWORK 0 key_mgmt", "NONE"},
          {"SET_NETWORK 0 key_mgmt NONSENSE", "FAIL\n"}});
}

TEST_F(DeviceWifiCommand, DisabledNetworksAreMarked) {
  Expect({{"ADD_NETWORK", "0\n"},
          {"SET_NETWORK 0 ssid \"nobody is called this\"", "OK\n"},
          {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
          {"ENABLE_NETWORK 0", "OK\n"},
          {"LIST_NETWORKS", std::string(kHeader) + "0\tnobody is called this\tany\t\n"},
          {"DISABLE_NETWORK 0", "OK\n"},
          {"LIST_NETWORKS", std::string(kHeader) + "0\tnobody is called this\tany\t[DISABLED]\n"},
          {"SAVE_CONFIG", "OK\n"}});
}

}  // namespace
}  // namespace kestrel::test
