// SPDX-License-Identifier: Apache-2.0
#include "wifi/scan_results.h"

#include <ostream>
#include <string>
#include <vector>

#include "unit/wifi/wifi_fixture.h"
#include "wifi/wifi_category.h"

namespace kestrel::test {
namespace {

using wifi::Network;
using wifi::NetworkList;

std::string Property(const Network& network, const char* key) {
  const eastl::string* const value = network.FindProperty(key);
  return value == nullptr ? "(missing)" : Plain(*value);
}

nwl::Expected<Network> Parse(const std::string& line) { return wifi::ParseScanLine(Text(line)); }

TEST(ScanLine, GivesAllOfANetwork) {
  const Network network =
      Parse("aa:bb:cc:dd:ee:ff\t2437\t-52\t[WPA2-PSK-CCMP][ESS]\tHome Net").value();
  EXPECT_EQ(Property(network, "bssid"), "aa:bb:cc:dd:ee:ff");
  EXPECT_EQ(Property(network, "freq"), "2437");
  EXPECT_EQ(Property(network, "signal_level"), "-52");
  EXPECT_EQ(Property(network, "flags"), "[WPA2-PSK-CCMP][ESS]");
  EXPECT_EQ(Property(network, "ssid"), "Home Net");
  EXPECT_EQ(network.properties.size(), 5u);
  EXPECT_EQ(network.security, 2);
  EXPECT_EQ(network.connectionState, 1);
  EXPECT_EQ(network.enabledState, 0);
  EXPECT_FALSE(network.idValid);
  EXPECT_EQ(network.networkId, 0);
}

TEST(ScanLine, LosesLeadingBlanksOfTheNameAlone) {
  EXPECT_EQ(Property(Parse("a\t1\t-1\t[ESS]\t \t a \t b \t").value(), "ssid"), "a \t b \t");
}

TEST(ScanLine, MayHaveSpacesBetweenItsFields) {
  const Network network = Parse("a 1  -1 \t [ESS] name").value();
  EXPECT_EQ(Property(network, "signal_level"), "-1");
  EXPECT_EQ(Property(network, "flags"), "[ESS]");
  EXPECT_EQ(Property(network, "ssid"), "name");
}

TEST(ScanLine, MayBeginWithAnEmptyAddress) {
  const Network network = Parse("\t2412\t-1\t[ESS]\tname").value();
  EXPECT_EQ(Property(network, "bssid"), "");
  EXPECT_EQ(Property(network, "freq"), "2412");
}

TEST(ScanLine, FailsWithoutAllOfItsFields) {
  for (const char* const line : {"", "a", "a\t", "a\t1", "a\t1\t", "a\t1\t-1", "a\t1\t-1\t",
                                 "a\t1\t-1\t[ESS]", "a\t1\t-1\t[ESS]\t", "a\t1\t-1\t[ESS]\t \t"}) {
    const nwl::Expected<Network> network = Parse(line);
    EXPECT_FALSE(network.has_value()) << line;
    EXPECT_EQ(network.error().value, 2) << line;
    EXPECT_EQ(network.error().category, &wifi::wifi_category()) << line;
  }
}

struct Flags {
  const char* text;
  int security;
};

void PrintTo(const Flags& flags, std::ostream* stream) { *stream << flags.text; }

class ScanFlags : public testing::TestWithParam<Flags> {};

INSTANTIATE_TEST_SUITE_P(Each, ScanFlags,
                         testing::Values(Flags{"[ESS]", 1}, Flags{"[WEP][ESS]", 0},
                                         Flags{"[WPA-PSK-TKIP][ESS]", 2},
                                         Flags{"[WPA2-PSK-CCMP][ESS]", 2},
                                         Flags{"[WPA2-EAP-CCMP][ESS]", 0},
                                         Flags{"[WPA2-SAE-CCMP][ESS]", 0}, Flags{"[ESS][WPS]", 0},
                                         Flags{"[WPS][ESS]", 0}, Flags{"[P2P][ESS]", 0},
                                         Flags{"ESS", 0}, Flags{"PSK", 2}, Flags{"[ess]", 0}));

TEST_P(ScanFlags, TellTheSecurity) {
  const auto [text, security] = GetParam();
  EXPECT_EQ(Parse(std::string("a\t1\t-1\t") + text + "\tname").value().security, security);
}

TEST(ScannedRecord, KeepsItsUnfinishedTagWhereANetworkIsLeftOut) {
  const Network network = Parse("02:00:00:00:00:01\t2412\t0\t[ESS]\tname").value();
  WifiScannedNetworkRecord record;
  record.recordTag = 0xA5A5A5A5;
  EXPECT_FALSE(wifi::FillScannedRecord(network, &record + 1, record));
  EXPECT_EQ(record.recordTag, 0x7EB10000U);
}

std::vector<std::string> Names(const NetworkList& networks) {
  std::vector<std::string> names;
  for (const Network& network : networks) {
    names.push_back(Property(network, "ssid"));
  }
  return names;
}

std::vector<std::string> NamesIn(const std::string& reply) {
  return Names(wifi::ParseScanResults(Text(reply)));
}

TEST(ScanResults, OfARealSupplicant) {
  const NetworkList networks = wifi::ParseScanResults(Text(Recorded("010-scan-results.txt")));
  EXPECT_EQ(Names(networks),
            (std::vector<std::string>{"testap", R"(Caf\xc3\xa9 \xe2\x9c\x93)", "legacy-tkip",
                                      "sae-ap", "0123456789abcdef0123456789ABCDEF", "open ap",
                                      R"(q\"b\\s\x01\t\xff)", R"(tab\tnl\nesc\e)",
                                      R"(\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00)"}));
  std::vector<int> securities;
  for (const Network& network : networks) {
    securities.push_back(network.security);
    EXPECT_EQ(Property(network, "signal_level"), "-30");
    EXPECT_EQ(network.connectionState, 1);
  }
  EXPECT_EQ(securities, (std::vector<int>{2, 2, 2, 0, 2, 1, 1, 1, 1}));
  EXPECT_EQ(Property(networks[3], "bssid"), "02:00:00:00:02:00");
  EXPECT_EQ(Property(networks[3], "freq"), "2437");
  EXPECT_EQ(Property(networks[3], "flags"), "[WPA2-SAE-CCMP][ESS]");
}

TEST(ScanResults, OfARealSupplicantBeforeAnyScan) {
  EXPECT_TRUE(NamesIn(Recorded("005-scan-results-before-any-scan.txt")).empty());
}

TEST(ScanResults, AreNoneInARepliesFirstLineOrWithoutLines) {
  for (const char* const reply : {"", "\n", "\n\n", "a\t1\t-1\t[ESS]\tname\n", "header"}) {
    EXPECT_TRUE(NamesIn(reply).empty()) << reply;
  }
}

TEST(ScanResults, LeaveOutLinesThatCannotBeParsed) {
  const std::string reply =
      "header\n"
      "a\t1\t-1\t[ESS]\tfirst\n"
      "nonsense\n"
      "a\t1\t-1\t[ESS]\t\n"
      "a\t1\t-1\t[ESS]\tsecond";
  EXPECT_EQ(NamesIn(reply), (std::vector<std::string>{"first", "second"}));
}

TEST(ScanResults, KeepACarriageReturnAsPartOfTheName) {
  EXPECT_EQ(NamesIn("header\r\na\t1\t-1\t[ESS]\tname\r\n"), std::vector<std::string>{"name\r"});
}

std::string ReplyOf(int networks) {
  std::string reply = "header\n";
  for (int i = 1; i <= networks; ++i) {
    reply += "a\t1\t-1\t[ESS]\tn" + std::to_string(i) + "\n";
  }
  return reply;
}

struct Count {
  int lines;
  int networks;
  const char* text;
};

class ScanResultCounts : public testing::TestWithParam<Count> {};

constexpr char kLimitText[] = "Number of networks from scan exceeded the limit.";

INSTANTIATE_TEST_SUITE_P(Each, ScanResultCounts,
                         testing::Values(Count{1, 1, ""}, Count{99, 99, ""}, Count{100, 100, ""},
                                         Count{101, 100, kLimitText}, Count{102, 100, kLimitText},
                                         Count{200, 100, kLimitText}));

TEST_P(ScanResultCounts, AreLimitedTo100WithOneMessage) {
  const auto [lines, networks, text] = GetParam();
  const eastl::string reply = Text(ReplyOf(lines));
  EXPECT_THAT(Observe([&] { return static_cast<int>(wifi::ParseScanResults(reply).size()); }),
              Returns(networks, text));
}

TEST(ScanResults, CountLinesThatCannotBeParsedTowardsTheLimit) {
  const std::string reply = "header\nnonsense\n" + ReplyOf(100).substr(7);
  NetworkList networks;
  EXPECT_THAT(Observe([&] {
                networks = wifi::ParseScanResults(Text(reply));
                return 0;
              }),
              Returns(0, kLimitText));
  EXPECT_EQ(networks.size(), 99u);
  EXPECT_EQ(Property(networks.back(), "ssid"), "n99");
}

}  // namespace
}  // namespace kestrel::test
