// SPDX-License-Identifier: Apache-2.0
#include "wifi/ssid.h"

#include <gtest/gtest.h>

#include <string>

#include "unit/wifi/recorded_reply.h"
#include "wifi/wifi_category.h"

namespace kestrel::test {
namespace {

using wifi::Network;

bool IsValid(const std::string& ssid) { return wifi::IsValidSsid(Text(ssid)); }

TEST(ValidSsid, Has1To32Bytes) {
  EXPECT_FALSE(IsValid(""));
  EXPECT_TRUE(IsValid("a"));
  EXPECT_TRUE(IsValid(std::string(31, 'a')));
  EXPECT_TRUE(IsValid(std::string(32, 'a')));
  EXPECT_FALSE(IsValid(std::string(33, 'a')));
}

TEST(ValidSsid, HasPrintableBytesAlone) {
  for (int c = 0; c < 256; ++c) {
    const bool is_printable = c >= 0x20 && c <= 0x7E;
    EXPECT_EQ(IsValid(std::string("a") + static_cast<char>(c)), is_printable) << c;
    EXPECT_EQ(IsValid(static_cast<char>(c) + std::string("a")), is_printable) << c;
  }
}

std::string Escape(const std::string& text) { return Plain(wifi::EscapeQuotes(Text(text))); }

TEST(EscapeQuotes, PutsFourCharactersInThePlaceOfEachQuote) {
  EXPECT_EQ(Escape("a\"b"), R"(a\x22b)");
  EXPECT_EQ(Escape("a\"b").size(), 6u);
  EXPECT_EQ(Escape("\""), R"(\x22)");
  EXPECT_EQ(Escape("ab\""), R"(ab\x22)");
  EXPECT_EQ(Escape("\"\"x\""), R"(\x22\x22x\x22)");
}

TEST(EscapeQuotes, ChangesNothingElse) {
  for (const std::string& text :
       {std::string(""), std::string("Home"), std::string(R"(a\b\\c\x22)"), std::string("\t\n'`$"),
        std::string("\x80\xFF"), std::string("a\0b", 3), std::string(100, 'x')}) {
    EXPECT_EQ(Escape(text), text);
  }
}

TEST(EscapeQuotes, TakesTheLongestTextOfQuotes) {
  EXPECT_EQ(Escape(std::string(63, '"')).size(), 4u * 63);
}

wifi::NetworkList Networks() {
  wifi::NetworkList networks(4);
  networks[1].SetProperty("ssid", "Lab");
  networks[1].networkId = 4;
  networks[2].SetProperty("ssid", "Home");
  networks[2].SetProperty("flags", "[CURRENT]");
  networks[2].networkId = 5;
  networks[2].idValid = true;
  networks[2].enabledState = 1;
  networks[2].connectionState = 2;
  networks[2].security = 2;
  networks[3].SetProperty("ssid", "Home");
  networks[3].networkId = 6;
  return networks;
}

TEST(FindNetworkBySsid, GivesACopyOfTheFirstMatch) {
  const wifi::NetworkList networks = Networks();
  const nwl::Expected<Network> found = wifi::FindNetworkBySsid(networks, "Home");
  ASSERT_TRUE(found.has_value());
  const Network& network = found.value();
  EXPECT_EQ(network.networkId, 5);
  EXPECT_TRUE(network.idValid);
  EXPECT_EQ(network.enabledState, 1);
  EXPECT_EQ(network.connectionState, 2);
  EXPECT_EQ(network.security, 2);
  EXPECT_EQ(Plain(*network.FindProperty("flags")), "[CURRENT]");
  EXPECT_NE(network.FindProperty("ssid"), networks[2].FindProperty("ssid"));
}

TEST(FindNetworkBySsid, ComparesWholeNamesByteByByte) {
  for (const char* const ssid : {"home", "Hom", "Homes", " Home", "Home ", "x"}) {
    const nwl::Expected<Network> found = wifi::FindNetworkBySsid(Networks(), ssid);
    EXPECT_FALSE(found.has_value()) << ssid;
    EXPECT_EQ(found.error().value, 8) << ssid;
    EXPECT_EQ(found.error().category, &wifi::wifi_category());
  }
}

TEST(FindNetworkBySsid, RefusesANameThatCannotBeStored) {
  wifi::NetworkList networks(1);
  networks[0].SetProperty("ssid", "");
  for (const std::string& ssid : {std::string(), std::string(33, 'a'), std::string("a\tb")}) {
    const nwl::Expected<Network> found = wifi::FindNetworkBySsid(networks, Text(ssid));
    EXPECT_EQ(found.error().value, 5);
    EXPECT_EQ(found.error().category, &wifi::wifi_category());
  }
}

}  // namespace
}  // namespace kestrel::test
