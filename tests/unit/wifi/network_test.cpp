// SPDX-License-Identifier: Apache-2.0
#include "wifi/network.h"

#include <cerrno>
#include <string>

#include "support/broken_standard_error.h"
#include "unit/wifi/wifi_fixture.h"
#include "wifi/wifi_category.h"

namespace kestrel::test {
namespace {

using wifi::Network;

TEST(Network, IsEmptyAtFirst) {
  const Network network;
  EXPECT_TRUE(network.properties.empty());
  EXPECT_EQ(network.networkId, 0);
  EXPECT_FALSE(network.idValid);
  EXPECT_EQ(network.enabledState, 0);
  EXPECT_EQ(network.connectionState, 0);
  EXPECT_EQ(network.security, 0);
}

TEST(Network, KeepsAPropertyByItsKey) {
  Network network;
  EXPECT_FALSE(network.SetProperty("ssid", "Home"));
  EXPECT_FALSE(network.SetProperty("freq", "2412"));
  EXPECT_EQ(Plain(network.GetProperty("ssid").value()), "Home");
  EXPECT_EQ(Plain(network.GetProperty("freq").value()), "2412");
  EXPECT_EQ(network.properties.size(), 2u);
}

TEST(Network, ReplacesAPropertyThatIsThere) {
  Network network;
  network.SetProperty("ssid", "Home");
  network.SetProperty("ssid", "");
  EXPECT_EQ(Plain(network.GetProperty("ssid").value()), "");
  EXPECT_EQ(network.properties.size(), 1u);
}

TEST(Network, KeepsNulBytes) {
  Network network;
  network.SetProperty("ssid", Text(std::string("a\0b", 3)));
  EXPECT_EQ(Plain(network.GetProperty("ssid").value()), std::string("a\0b", 3));
}

TEST(Network, GivesACopyOfAProperty) {
  Network network;
  network.SetProperty("ssid", "Home");
  network.GetProperty("ssid").value().append("s");
  EXPECT_EQ(Plain(network.GetProperty("ssid").value()), "Home");
}

TEST(Network, FailsForAMissingProperty) {
  Network network;
  network.SetProperty("ssid", "Home");
  const nwl::Expected<eastl::string> property = network.GetProperty("bssid");
  EXPECT_FALSE(property.has_value());
  EXPECT_EQ(property.error().value, 4);
  EXPECT_EQ(property.error().category, &wifi::wifi_category());
}

TEST(Network, FindsAPropertyInPlace) {
  Network network;
  network.SetProperty("ssid", "Home");
  EXPECT_EQ(network.FindProperty("ssid"), &network.properties.find("ssid")->second);
  EXPECT_EQ(network.FindProperty("bssid"), nullptr);
}

TEST(ReadNetworkProperty, GivesTheTextAndLeavesErrnoAlone) {
  Network network;
  network.SetProperty("ssid", "Home");
  eastl::string value("before");
  const Observed observed =
      Observe([&] { return wifi::ReadNetworkProperty(network, "ssid", value); });
  EXPECT_THAT(observed, Returns(0));
  EXPECT_EQ(observed.error, kUntouched);
  EXPECT_EQ(Plain(value), "Home");
}

TEST(ReadNetworkProperty, TellsOfAMissingOne) {
  eastl::string value("before");
  EXPECT_THAT(Observe([&] { return wifi::ReadNetworkProperty(Network(), "ssid", value); }),
              Fails(ENODATA, MissingProperty()));
  EXPECT_EQ(Plain(value), "before");
}

TEST(ReadNetworkProperty, KeepsItsErrnoWithoutStandardError) {
  eastl::string value;
  EXPECT_THAT(Observe([&] {
                const ClosedStandardError closed;
                return wifi::ReadNetworkProperty(Network(), "ssid", value);
              }),
              Fails(ENODATA, ""));
}

}  // namespace
}  // namespace kestrel::test
