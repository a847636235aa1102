// SPDX-License-Identifier: Apache-2.0
// Wi-Fi through the daemon that listens at the library's socket, with access points in the air.
#include <errno.h>
#include <kestrel/wificonfig.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "board/wifi_client.h"
#include "board/wifi_exports.h"
#include "rig.h"
#include "support/outcome.h"

namespace kestrel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct AccessPoint {
  const char* name;
  const char* passphrase;  ///< null where there is none
  uint32_t frequency;
};

constexpr AccessPoint kGuest = {"Kestrel Guest", nullptr, 2412};
constexpr AccessPoint kLab = {"Kestrel Lab", "correct horse", 2412};
constexpr AccessPoint kHidden = {"Kestrel Hidden", "nobody sees me", 2412};
constexpr AccessPoint kLong = {"Kestrel 01234567890123456789 End", "wide open spaces", 2437};
constexpr AccessPoint kBackslash = {R"(Back\slash 'n' #1;=~)", nullptr, 2437};
/// Quotation marks, a backslash, UTF-8 and a byte that cannot be seen.
constexpr AccessPoint kOdd = {"\"odd\" \\ \xc3\xa9\x07", nullptr, 2437};

// The daemon's texts for names that have more than letters.
constexpr char kOddText[] = R"(\"odd\" \\ \xc3\xa9\x07)";
constexpr char kBackslashText[] = R"(Back\\slash 'n' #1;=~)";

constexpr char kWithoutConnection[] = "[Kestrel:WifiConfig] Error performing operation: 22\n";
constexpr char kLostConnection[] = "[Kestrel:WifiConfig] Error performing operation: 32\n";
constexpr char kNotConnected[] = "[Kestrel:WifiConfig] Error parsing network property: 4\n";

/// Waits until `condition` holds; false when patience ends first. A scan of real radios takes
/// seconds and may miss an access point.
template <typename Condition>
bool Eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(45);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

/// What the daemon answers to another client than the library.
std::string Ask(const std::string& command) { return WifiClient(kWifiSocketPath).Ask(command); }

bool IsCompleted() { return Ask("STATUS").find("wpa_state=COMPLETED\n") != std::string::npos; }

int Store(const AccessPoint& point, const char* passphrase) {
  return passphrase == nullptr ? StoreOpen(point.name) : StoreWpa2(point.name, passphrase);
}

int Store(const AccessPoint& point) { return Store(point, point.passphrase); }

/// A scan begins; what a scan that is refused prints does not matter.
bool BeginScan() {
  return Eventually(
      [] { return Observe(WifiConfig_TriggerScanAndGetScannedNetworkCount).result >= 0; });
}

std::vector<WifiScannedNetworkRecord> ScannedNow() {
  std::array<WifiScannedNetworkRecord, 20> records{};
  Observe(WifiConfig_TriggerScanAndGetScannedNetworkCount);
  const int count =
      z__WifiConfig_GetScannedNetworks(records.data(), records.size(), WifiConfig_StructVersion);
  return {records.begin(), records.begin() + std::max(count, 0)};
}

/// Scans until there is a network of that name; one without a tag when patience ends.
WifiScannedNetworkRecord AwaitScanned(const std::string& name) {
  WifiScannedNetworkRecord found{};
  Eventually([&] {
    for (const WifiScannedNetworkRecord& record : ScannedNow()) {
      if (NameOf(record) == name) {
        found = record;
      }
    }
    return found.recordTag != 0;
  });
  return found;
}

std::vector<std::string> StoredNames() {
  std::vector<std::string> names;
  for (const WifiStoredNetworkRecord& record : Stored()) {
    names.push_back(NameOf(record));
  }
  return names;
}

WifiStoredNetworkRecord OnlyStored() {
  const std::vector<WifiStoredNetworkRecord> stored = Stored();
  EXPECT_THAT(stored, SizeIs(1));
  return stored.empty() ? WifiStoredNetworkRecord{} : stored.front();
}

WifiCurrentNetworkRecord Current() {
  WifiCurrentNetworkRecord record{};
  EXPECT_THAT(
      Observe([&] { return z__WifiConfig_GetCurrentNetwork(&record, WifiConfig_StructVersion); }),
      Returns(0));
  EXPECT_EQ(record.recordTag, WifiCurrentNetworkRecord_Complete);
  return record;
}

Observed AskForCurrent() {
  WifiCurrentNetworkRecord record{};
  return Observe(
      [&] { return z__WifiConfig_GetCurrentNetwork(&record, WifiConfig_StructVersion); });
}

class DeviceWifi : public testing::Test {
 protected:
  void SetUp() override {
    TheRig().ResetWifi();
    // Connects this process, so that what a test observes opens no descriptor.
    EXPECT_EQ(WifiConfig_GetStoredNetworkCount(), 0);
  }
  void TearDown() override { TheRig().ResetWifi(); }
};

TEST_F(DeviceWifi, ScanFindsAccessPointsWithTheirSecurityAndFrequency) {
  const WifiScannedNetworkRecord guest = AwaitScanned(kGuest.name);
  const WifiScannedNetworkRecord lab = AwaitScanned(kLab.name);
  EXPECT_EQ(guest.recordTag, WifiScannedNetworkRecord_Complete);
  EXPECT_EQ(guest.security, WifiSecurity_Open);
  EXPECT_EQ(guest.frequencyMhz, kGuest.frequency);
  EXPECT_EQ(lab.recordTag, WifiScannedNetworkRecord_Complete);
  EXPECT_EQ(lab.security, WifiSecurity_Wpa2Psk);
  EXPECT_EQ(lab.frequencyMhz, kLab.frequency);
  EXPECT_NE(std::string(guest.bssid, guest.bssid + 6), std::string(lab.bssid, lab.bssid + 6));
  for (const WifiScannedNetworkRecord& record : {guest, lab}) {
    EXPECT_EQ(record.bssid[0], 0x02) << "an address that nobody sells";
    EXPECT_LT(record.signalDbm, 0);
    EXPECT_GT(record.signalDbm, -100);
  }
}

TEST_F(DeviceWifi, ScanGivesTheDaemonsTextForOddNames) {
  EXPECT_EQ(AwaitScanned(kOddText).security, WifiSecurity_Open);
  EXPECT_EQ(AwaitScanned(kBackslashText).frequencyMhz, kBackslash.frequency);
  const WifiScannedNetworkRecord longest = AwaitScanned(kLong.name);
  EXPECT_EQ(longest.ssidLength, 32);
  EXPECT_EQ(longest.security, WifiSecurity_Wpa2Psk);
}

TEST_F(DeviceWifi, ScanLeavesOutWhoHidesItsName) {
  ASSERT_EQ(AwaitScanned(kLab.name).recordTag, WifiScannedNetworkRecord_Complete);
  // The daemon has heard it.
  ASSERT_TRUE(Eventually([] {
    return Ask("SCAN_RESULTS").find("[WPA2-PSK-CCMP][ESS]\t\n") != std::string::npos;
  })) << Ask("SCAN_RESULTS");
  ASSERT_TRUE(BeginScan());
  const std::vector<WifiScannedNetworkRecord> records = ScannedNow();
  EXPECT_TRUE(std::none_of(records.begin(), records.end(), [](const auto& record) {
    return record.ssidLength == 0 || NameOf(record) == kHidden.name;
  }));
}

TEST_F(DeviceWifi, ScanIsRefusedWhileOneRuns) {
  ASSERT_TRUE(BeginScan());
  EXPECT_THAT(Observe(WifiConfig_TriggerScanAndGetScannedNetworkCount),
              Fails(EINVAL, "[Kestrel:WifiConfig] Failure performing scan: 6\n"));
  // And accepted again when that one has ended.
  EXPECT_TRUE(BeginScan());
}

TEST_F(DeviceWifi, ScanCanBeReadOnce) {
  ASSERT_EQ(AwaitScanned(kLab.name).recordTag, WifiScannedNetworkRecord_Complete);
  std::array<WifiScannedNetworkRecord, 20> records{};
  records[0].recordTag = 1;
  EXPECT_THAT(Observe([&] {
                return z__WifiConfig_GetScannedNetworks(records.data(), records.size(),
                                                        WifiConfig_StructVersion);
              }),
              Returns(0));
  EXPECT_EQ(records[0].recordTag, 0U);
}

/// A network that is stored, joined and listed.
struct Joined {
  std::string name;
  AccessPoint point;
  WifiSecurity security;
  std::string current_text;  ///< the daemon's text for the name of the current network
};

class DeviceWifiJoin : public DeviceWifi, public testing::WithParamInterface<Joined> {};

INSTANTIATE_TEST_SUITE_P(
    Each, DeviceWifiJoin,
    testing::Values(Joined{"Open", kGuest, WifiSecurity_Open, kGuest.name},
                    Joined{"Wpa2", kLab, WifiSecurity_Wpa2Psk, kLab.name},
                    Joined{"ThirtyTwoBytes", kLong, WifiSecurity_Wpa2Psk, kLong.name},
                    Joined{"Backslash", kBackslash, WifiSecurity_Open, kBackslashText}),
    [](const auto& test) { return test.param.name; });

TEST_P(DeviceWifiJoin, IsCurrentAndListed) {
  const AccessPoint& point = GetParam().point;
  EXPECT_THAT(Observe([&] { return Store(point); }), Returns(0));
  ASSERT_TRUE(Eventually(IsCompleted)) << Ask("STATUS");
  const WifiCurrentNetworkRecord current = Current();
  EXPECT_EQ(NameOf(current), GetParam().current_text);
  EXPECT_EQ(current.security, GetParam().security);
  EXPECT_EQ(current.frequencyMhz, point.frequency);
  EXPECT_EQ(current.bssid[0], 0x02);
  EXPECT_EQ(current.signalDbm, 0);
  const WifiStoredNetworkRecord stored = OnlyStored();
  EXPECT_EQ(stored.recordTag, WifiStoredNetworkRecord_Complete);
  EXPECT_EQ(NameOf(stored), point.name);
  EXPECT_EQ(stored.security, GetParam().security);
  EXPECT_EQ(stored.enabled, 1);
  // Known by its name, which the daemon writes in two ways when it has a backslash.
  EXPECT_EQ(stored.connected, GetParam().current_text == point.name ? 1 : 0);
}

TEST_F(DeviceWifi, NothingIsCurrentWithoutAConnection) {
  EXPECT_THAT(AskForCurrent(), Fails(ENODATA, kNotConnected));
}

TEST_F(DeviceWifi, HiddenNetworkIsJoinedWhenTheDaemonAsksForItsName) {
  ASSERT_EQ(Store(kHidden), 0);
  ASSERT_TRUE(BeginScan());
  ASSERT_TRUE(BeginScan()) << "one scan has ended";
  const WifiStoredNetworkRecord stored = OnlyStored();
  EXPECT_EQ(NameOf(stored), kHidden.name);
  EXPECT_EQ(stored.enabled, 1);
  EXPECT_EQ(stored.connected, 0);
  EXPECT_THAT(AskForCurrent(), Fails(ENODATA, kNotConnected));
  ASSERT_EQ(Ask("SET_NETWORK 0 scan_ssid 1"), "OK\n");
  ASSERT_TRUE(Eventually(IsCompleted)) << Ask("STATUS");
  EXPECT_EQ(NameOf(Current()), kHidden.name);
}

TEST_F(DeviceWifi, NameBeyondPrintableAsciiIsRefusedBeforeAnythingIsStored) {
  EXPECT_THAT(Observe([] { return Store(kOdd); }), IsRefused(EINVAL));
  EXPECT_THAT(StoredNames(), IsEmpty());
}

TEST_F(DeviceWifi, QuotationMarksAreStoredAsTheDaemonUnderstandsThem) {
  EXPECT_THAT(Observe([] { return StoreOpen(R"(say "hi")"); }), Returns(0));
  EXPECT_THAT(StoredNames(), ElementsAre(R"(say \x22hi\x22)"));
}

TEST_F(DeviceWifi, SecondNetworkOfANameIsRefused) {
  ASSERT_EQ(StoreOpen("twice"), 0);
  EXPECT_THAT(Observe([] { return StoreWpa2("twice", "12345678"); }), IsRefused(EEXIST));
  EXPECT_THAT(StoredNames(), ElementsAre("twice"));
}

TEST_F(DeviceWifi, WrongPassphraseDisablesTheNetworkForATime) {
  ASSERT_EQ(Store(kLab, "wrong horse"), 0);
  ASSERT_TRUE(Eventually([] { return OnlyStored().enabled == 0; })) << Ask("LIST_NETWORKS");
  EXPECT_NE(Ask("LIST_NETWORKS").find("[TEMP-DISABLED]"), std::string::npos);
  EXPECT_THAT(AskForCurrent(), Fails(ENODATA, kNotConnected));
  const WifiStoredNetworkRecord stored = OnlyStored();
  EXPECT_THAT(Observe([&] { return z__WifiConfig_ForgetNetwork(&stored); }), Returns(0));
  ASSERT_EQ(Store(kLab), 0);
  EXPECT_TRUE(Eventually(IsCompleted)) << Ask("STATUS");
}

TEST_F(DeviceWifi, NetworksAreListedInTheOrderInWhichTheyWereStored) {
  ASSERT_EQ(StoreOpen("nobody is called this"), 0);
  ASSERT_EQ(StoreWpa2("nor this", "12345678"), 0);
  ASSERT_EQ(StoreWpa2(std::string(32, '~'), std::string(63, 'p')), 0);
  const std::vector<WifiStoredNetworkRecord> stored = Stored();
  ASSERT_THAT(stored, SizeIs(3));
  EXPECT_EQ(NameOf(stored[0]), "nobody is called this");
  EXPECT_EQ(stored[0].security, WifiSecurity_Open);
  EXPECT_EQ(NameOf(stored[1]), "nor this");
  EXPECT_EQ(stored[1].security, WifiSecurity_Wpa2Psk);
  EXPECT_EQ(NameOf(stored[2]), std::string(32, '~'));
  for (const WifiStoredNetworkRecord& record : stored) {
    EXPECT_EQ(record.enabled, 1) << NameOf(record);
    EXPECT_EQ(record.connected, 0) << NameOf(record);
  }
}

TEST_F(DeviceWifi, OneOfThreeIsForgotten) {
  for (const char* name : {"first", "second", "third"}) {
    ASSERT_EQ(StoreOpen(name), 0);
  }
  WifiStoredNetworkRecord second = Stored().at(1);
  EXPECT_THAT(Observe([&] { return z__WifiConfig_ForgetNetwork(&second); }), Returns(0));
  EXPECT_THAT(StoredNames(), ElementsAre("first", "third"));
  EXPECT_THAT(Observe([&] { return z__WifiConfig_ForgetNetwork(&second); }), IsRefused(ENOENT));
  WifiStoredNetworkRecord other_security = Stored().at(0);
  other_security.security = WifiSecurity_Wpa2Psk;
  EXPECT_THAT(Observe([&] { return z__WifiConfig_ForgetNetwork(&other_security); }),
              IsRefused(ENOENT));
}

TEST_F(DeviceWifi, ForgettingTheCurrentNetworkEndsTheConnection) {
  ASSERT_EQ(Store(kGuest), 0);
  ASSERT_TRUE(Eventually(IsCompleted)) << Ask("STATUS");
  const WifiStoredNetworkRecord stored = OnlyStored();
  EXPECT_THAT(Observe([&] { return z__WifiConfig_ForgetNetwork(&stored); }), Returns(0));
  EXPECT_TRUE(Eventually([] { return AskForCurrent().error == ENODATA; }));
  EXPECT_FALSE(IsCompleted());
}

TEST_F(DeviceWifi, AllAreForgotten) {
  EXPECT_THAT(Observe(WifiConfig_ForgetAllNetworks), Returns(0));
  ASSERT_EQ(Store(kLab), 0);
  ASSERT_EQ(StoreOpen("second"), 0);
  ASSERT_EQ(StoreWpa2("third", "12345678"), 0);
  EXPECT_THAT(Observe(WifiConfig_ForgetAllNetworks), Returns(0));
  EXPECT_EQ(WifiConfig_GetStoredNetworkCount(), 0);
  EXPECT_TRUE(Eventually([] { return AskForCurrent().error == ENODATA; }));
}

TEST_F(DeviceWifi, StoredNetworksOutliveTheSupplicant) {
  ASSERT_EQ(StoreOpen("stays"), 0);
  ASSERT_EQ(StoreOpen("goes"), 0);
  WifiStoredNetworkRecord goes = Stored().at(1);
  ASSERT_EQ(z__WifiConfig_ForgetNetwork(&goes), 0);
  TheRig().KillSupplicant();
  TheRig().StartSupplicant();
  EXPECT_NE(Ask("LIST_NETWORKS").find("0\tstays\tany\t"), std::string::npos);
  EXPECT_EQ(Ask("LIST_NETWORKS").find("goes"), std::string::npos);
}

TEST_F(DeviceWifi, OtherClientsOfTheDaemonSeeTheSameNetworks) {
  ASSERT_EQ(StoreOpen("shared"), 0);
  const std::string seen = Ask("LIST_NETWORKS");
  EXPECT_THAT(StoredNames(), ElementsAre("shared"));
  EXPECT_EQ(Ask("LIST_NETWORKS"), seen);
  EXPECT_EQ(Ask("REMOVE_NETWORK all"), "OK\n");
  EXPECT_THAT(StoredNames(), IsEmpty());
}

// The library connects once, so what follows is the end of Wi-Fi for the process.

TEST_F(DeviceWifi, DaemonThatIsKilledFailsEveryLaterCall) {
  TheRig().StopWifiDaemon();
  const Observed first = Observe(WifiConfig_GetStoredNetworkCount);
  EXPECT_EQ(first.result, -1);
  EXPECT_EQ(first.error, EIO);
  EXPECT_EQ(first.standard_error, kLostConnection);
  EXPECT_THAT(first.lost_descriptors, SizeIs(1)) << first;
  TheRig().StartWifiDaemon();
  EXPECT_THAT(Observe(WifiConfig_GetStoredNetworkCount), Fails(EIO, kWithoutConnection));
  EXPECT_THAT(Observe(WifiConfig_ForgetAllNetworks), Fails(EIO, kWithoutConnection));
  EXPECT_THAT(Observe(WifiConfig_TriggerScanAndGetScannedNetworkCount),
              Fails(EIO, std::string("[Kestrel:WifiConfig] Failure performing scan: 22\n") +
                             kWithoutConnection));
  EXPECT_THAT(
      AskForCurrent(),
      Fails(EIO, std::string(kWithoutConnection) +
                     "[Kestrel:WifiConfig] Failure getting status of current network: 22\n"));
}

TEST_F(DeviceWifi, DaemonThatIsKilledBeforeItAnswersFailsTheCall) {
  TheRig().FreezeWifiDaemon();
  std::future<Observed> call =
      std::async(std::launch::async, [] { return Observe(WifiConfig_GetStoredNetworkCount); });
  EXPECT_EQ(call.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
  TheRig().StopWifiDaemon();
  const Observed observed = call.get();
  EXPECT_EQ(observed.result, -1);
  EXPECT_EQ(observed.error, EIO);
  EXPECT_EQ(observed.standard_error, kLostConnection);
}

TEST_F(DeviceWifi, SupplicantThatIsKilledFailsTheCall) {
  TheRig().KillSupplicant();
  const Observed observed = Observe(WifiConfig_GetStoredNetworkCount);
  const CallOutcome& expected = TheRig().Of(kCallToDeadSupplicant);
  EXPECT_EQ(observed.result, expected.result);
  EXPECT_EQ(observed.error, expected.error);
  EXPECT_EQ(observed.standard_error, expected.printed);
  TheRig().StartSupplicant();
  const Observed later = Observe(WifiConfig_GetStoredNetworkCount);
  const CallOutcome& afterwards = TheRig().Of(kCallToRevivedSupplicant);
  EXPECT_EQ(later.result, afterwards.result);
  EXPECT_EQ(later.error, afterwards.error);
  EXPECT_EQ(later.standard_error, afterwards.printed);
}

TEST(DeviceWifiDaemon, ThatIsNotThereFailsEveryCall) {
  TheRig().ResetWifi();
  TheRig().StopWifiDaemon();
  EXPECT_THAT(Observe(WifiConfig_GetStoredNetworkCount), Fails(EIO, kWithoutConnection));
  TheRig().StartWifiDaemon();
  EXPECT_THAT(Observe(WifiConfig_GetStoredNetworkCount), Fails(EIO, kWithoutConnection));
  EXPECT_THAT(Observe([] { return StoreOpen("name"); }), Fails(EIO, kWithoutConnection));
}

}  // namespace
}  // namespace kestrel::test
