// SPDX-License-Identifier: Apache-2.0
// Replies that are cut at every byte, or that no supplicant sends: each has a result, and nothing
// is overrun, leaked or waited for.
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

constexpr size_t kRecords = 12;
constexpr size_t kSlack = 2100;

/// Room for records and for whatever a name may overrun.
template <typename Record>
struct Room {
  Record records[kRecords];
  char slack[kSlack];
};

std::vector<std::string> Cuts(const std::string& reply) {
  std::vector<std::string> cuts;
  for (size_t length = 0; length <= reply.size(); ++length) {
    cuts.push_back(reply.substr(0, length));
  }
  return cuts;
}

class CutReplies : public WifiTest {
 protected:
  void Scan(const std::string& results) {
    static Room<WifiScannedNetworkRecord> room;
    Expect({{"SCAN", "OK\n"}, {"SCAN_RESULTS", results}});
    const Observed scan = Observe([] { return WifiConfig_TriggerScanAndGetScannedNetworkCount(); });
    ASSERT_THAT(scan, LeaksNothing());
    const Observed read =
        Observe([] { return z__WifiConfig_GetScannedNetworks(room.records, kRecords, 1); });
    ASSERT_THAT(read, LeaksNothing());
    ASSERT_LE(read.result, scan.result) << results;
    for (int i = 0; i < static_cast<int>(kRecords); ++i) {
      ASSERT_EQ(room.records[i].recordTag, i < read.result ? 0x7EB10001U : 0U) << results;
    }
  }

  void GetCurrent(const std::string& status) {
    static Room<WifiCurrentNetworkRecord> room;
    Expect({{"STATUS", status}});
    const Observed observed =
        Observe([] { return z__WifiConfig_GetCurrentNetwork(room.records, 1); });
    ASSERT_THAT(observed, LeaksNothing());
    ASSERT_EQ(room.records[0].recordTag, observed.result == 0 ? 0x09EF0001U : 0x09EF0000U);
  }
};

TEST_F(CutReplies, ToAScanGiveWholeNetworks) {
  for (const std::string& cut : Cuts(Recorded("010-scan-results.txt"))) {
    Scan(cut);
  }
}

TEST_F(CutReplies, ToAStatusGiveANetworkOrAnError) {
  for (const char* const name : {"088-status-completed.txt", "121-status-open.txt"}) {
    for (const std::string& cut : Cuts(Recorded(name))) {
      GetCurrent(cut);
    }
  }
}

TEST_F(CutReplies, ToAListGiveTheNetworksWithAnId) {
  static Room<WifiStoredNetworkRecord> room;
  for (const std::string& cut : Cuts(Recorded("118-list-two.txt"))) {
    // Line 0 begins at byte 34 and line 1 at byte 57; each has its id with its first tab.
    const int networks = (cut.size() >= 36 ? 1 : 0) + (cut.size() >= 59 ? 1 : 0);
    Expect({{"LIST_NETWORKS", cut}});
    for (int id = 0; id < networks; ++id) {
      const std::string get = "GET_NETWORK " + std::to_string(id);
      Expect({{get + " ssid", "\"testap\""}, {get + " key_mgmt", "NONE"}});
    }
    Expect({{"STATUS", Recorded("002-status-idle.txt")}});
    ASSERT_THAT(Observe([] { return WifiConfig_GetStoredNetworkCount(); }), Returns(networks))
        << cut;
    ASSERT_THAT(Observe([] { return z__WifiConfig_GetStoredNetworks(room.records, kRecords, 1); }),
                Returns(networks));
  }
}

TEST_F(CutReplies, ToTheQueriesOfAListingGiveAResult) {
  const std::string list = Recorded("019-list-one-fresh.txt");
  for (const std::string& name : Cuts("\"testap\"")) {
    for (const std::string& key_management : Cuts("WPA-PSK WPA-EAP")) {
      Expect({{"LIST_NETWORKS", list},
              {"GET_NETWORK 0 ssid", name},
              {"GET_NETWORK 0 key_mgmt", key_management},
              {"STATUS", "ssid=testap\nwpa_state=COMPLETED\n"}});
      ASSERT_THAT(Observe([] { return WifiConfig_GetStoredNetworkCount(); }), Returns(1));
      const wifi::Network& network = context_.storedNetworks->front();
      ASSERT_EQ(network.FindProperty("ssid") != nullptr, name.size() > 1);
      ASSERT_EQ(network.security, key_management.size() >= 7 ? 2 : 0) << key_management;
      ASSERT_EQ(network.connectionState, name.size() == 8 ? 2 : 1) << name;
    }
  }
}

TEST_F(CutReplies, OfLinesThatEndLikeThoseOfOtherSystems) {
  std::string reply;
  for (const char c : Recorded("010-scan-results.txt")) {
    reply += c == '\n' ? "\r\n" : std::string(1, c);
  }
  Scan(reply);
  GetCurrent("bssid=02:00:00:00:00:00\r\nfreq=2412\r\nssid=Lab\r\n");
}

TEST_F(CutReplies, OfManyBytesOfAnyValue) {
  for (int c = 0; c < 256; ++c) {
    const std::string reply(3000, static_cast<char>(c));
    Scan(reply);
    Scan("header\n" + reply);
    Scan("header\n02:00:00:00:00:00\t2412\t-30\t[ESS]\tx" + reply);
    GetCurrent(reply);
    GetCurrent("bssid=02:00:00:00:00:00\nfreq=2412\nssid=" + reply);
  }
}

TEST_F(CutReplies, OfAScanWithAFieldOfAnyLength) {
  for (const size_t length : {size_t{0}, size_t{1}, size_t{32}, size_t{33}, size_t{500}}) {
    const std::string field(length, '1');
    Scan("header\n" + field + "\t2412\t-30\t[ESS]\tname\n");
    Scan("header\n02:00:00:00:00:00\t" + field + "\t-30\t[ESS]\tname\n");
    Scan("header\n02:00:00:00:00:00\t2412\t" + field + "\t[ESS]\tname\n");
    Scan("header\n02:00:00:00:00:00\t2412\t-30\t" + field + "\tname\n");
    Scan("header\n02:00:00:00:00:00\t2412\t-30\t[ESS]\t" + field + "\n");
  }
}

}  // namespace
}  // namespace kestrel::test
