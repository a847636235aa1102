// SPDX-License-Identifier: Apache-2.0
#include "wifi/status_reply.h"

#include <map>
#include <string>

#include "unit/wifi/wifi_fixture.h"
#include "wifi/wifi_category.h"

namespace kestrel::test {
namespace {

using wifi::Network;
using Properties = std::map<std::string, std::string>;

Network Parsed(const std::string& reply) {
  Network network;
  EXPECT_TRUE(wifi::ParseStatusReply(network, Text(reply)).has_value());
  return network;
}

Properties PropertiesOf(const Network& network) {
  Properties properties;
  for (const auto& [key, value] : network.properties) {
    properties[Plain(key)] = Plain(value);
  }
  return properties;
}

TEST(StatusReply, OfAConnectedSupplicant) {
  const Network network = Parsed(Recorded("088-status-completed.txt"));
  EXPECT_EQ(PropertiesOf(network), (Properties{{"bssid", "02:00:00:00:00:00"},
                                               {"freq", "2412"},
                                               {"ssid", "testap"},
                                               {"mode", "station"},
                                               {"key_mgmt", "WPA2-PSK"},
                                               {"wpa_state", "COMPLETED"},
                                               {"address", "02:00:00:00:01:00"}}));
  EXPECT_EQ(network.enabledState, 1);
  EXPECT_EQ(network.connectionState, 2);
  EXPECT_EQ(network.security, 2);
  EXPECT_FALSE(network.idValid);
}

TEST(StatusReply, OfASupplicantOnAnOpenNetwork) {
  const Network network = Parsed(Recorded("121-status-open.txt"));
  EXPECT_EQ(PropertiesOf(network), (Properties{{"bssid", "02:00:00:00:00:01"},
                                               {"freq", "2412"},
                                               {"ssid", "open ap"},
                                               {"mode", "station"},
                                               {"key_mgmt", "NONE"},
                                               {"wpa_state", "COMPLETED"},
                                               {"ip_address", "192.168.77.2"},
                                               {"address", "02:00:00:00:01:00"}}));
  EXPECT_EQ(network.connectionState, 2);
  EXPECT_EQ(network.security, 1);
}

TEST(StatusReply, OfASupplicantWithoutANetwork) {
  for (const char* const name :
       {"002-status-idle.txt", "009-status-while-scanning.txt", "087-status-right-after-enable.txt",
        "100-status-after-disable.txt", "150-wrongpw-status.txt"}) {
    const Network network = Parsed(Recorded(name));
    EXPECT_EQ(network.properties.count("ssid"), 0u) << name;
    EXPECT_EQ(network.enabledState, 0) << name;
    EXPECT_EQ(network.connectionState, 1) << name;
    EXPECT_EQ(network.security, 0) << name;
  }
}

TEST(StatusReply, KeepsTheNineKeysAlone) {
  const std::string reply =
      "bssid=1\nfreq=2\nsignal_level=3\nssid=4\nmode=5\nkey_mgmt=6\nwpa_state=7\nip_address=8\n"
      "address=9\nid=10\nuuid=11\nSSID=12\nssi=13\nssid2=14\n =15\n=16\n";
  EXPECT_EQ(PropertiesOf(Parsed(reply)), (Properties{{"bssid", "1"},
                                                     {"freq", "2"},
                                                     {"signal_level", "3"},
                                                     {"ssid", "4"},
                                                     {"mode", "5"},
                                                     {"key_mgmt", "6"},
                                                     {"wpa_state", "7"},
                                                     {"ip_address", "8"},
                                                     {"address", "9"}}));
}

TEST(StatusReply, SplitsALineAtItsFirstEqualsSign) {
  EXPECT_EQ(PropertiesOf(Parsed("ssid=a=b\nmode==\n")),
            (Properties{{"ssid", "a=b"}, {"mode", "="}}));
}

TEST(StatusReply, MayHaveEmptyValuesAndLinesWithoutAnEqualsSign) {
  EXPECT_EQ(PropertiesOf(Parsed("nonsense\nssid=\nmode\n")), (Properties{{"ssid", ""}}));
}

TEST(StatusReply, TakesTheLastLineOfAKey) {
  EXPECT_EQ(PropertiesOf(Parsed("ssid=a\nssid=b")), (Properties{{"ssid", "b"}}));
}

TEST(StatusReply, KeepsNulBytesAndCarriageReturns) {
  EXPECT_EQ(PropertiesOf(Parsed(std::string("ssid=a\0b\r\nmode=x", 16))),
            (Properties{{"ssid", std::string("a\0b\r", 4)}, {"mode", "x"}}));
}

TEST(StatusReply, NeedsTwoLines) {
  for (const char* const reply : {"", "\n", "\n\n", "ssid=Lab", "ssid=Lab\n", "\nssid=Lab\n\n"}) {
    Network network;
    const nwl::Expected<void> result = wifi::ParseStatusReply(network, reply);
    EXPECT_FALSE(result.has_value()) << reply;
    EXPECT_EQ(result.error().value, 2);
    EXPECT_EQ(result.error().category, &wifi::wifi_category());
    EXPECT_TRUE(network.properties.empty()) << reply;
  }
}

struct State {
  const char* line;
  int enabled;
  int connection;
};

class StatusStates : public testing::TestWithParam<State> {};

INSTANTIATE_TEST_SUITE_P(
    Each, StatusStates,
    testing::Values(State{"wpa_state=COMPLETED", 1, 2}, State{"wpa_state=SCANNING", 0, 1},
                    State{"wpa_state=completed", 0, 1}, State{"wpa_state=COMPLETED ", 0, 1},
                    State{"wpa_state=", 0, 1}, State{"wpa_stat=COMPLETED", 0, 0}));

TEST_P(StatusStates, FollowTheState) {
  const Network network = Parsed(std::string("mode=station\n") + GetParam().line);
  EXPECT_EQ(network.enabledState, GetParam().enabled);
  EXPECT_EQ(network.connectionState, GetParam().connection);
}

TEST(StatusReply, LeavesTheEnabledStateOfANetworkThatIsNotConnected) {
  Network network;
  network.enabledState = 3;
  wifi::ParseStatusReply(network, "mode=station\nwpa_state=SCANNING\n");
  EXPECT_EQ(network.enabledState, 3);
}

struct KeyManagement {
  const char* line;
  int security;
};

class StatusSecurities : public testing::TestWithParam<KeyManagement> {};

INSTANTIATE_TEST_SUITE_P(
    Each, StatusSecurities,
    testing::Values(KeyManagement{"key_mgmt=WPA2-PSK", 2}, KeyManagement{"key_mgmt=NONE", 1},
                    KeyManagement{"key_mgmt=WPA-EAP", 0}, KeyManagement{"key_mgmt=NONE ", 0},
                    KeyManagement{"key_mgmt=NONE PSK", 2}, KeyManagement{"key_mgmt=", 0},
                    KeyManagement{"key_mgmt=SAE", 0}, KeyManagement{"key_mgm=NONE", 0}));

TEST_P(StatusSecurities, FollowTheKeyManagement) {
  EXPECT_EQ(Parsed(std::string("mode=station\n") + GetParam().line).security, GetParam().security);
}

}  // namespace
}  // namespace kestrel::test
