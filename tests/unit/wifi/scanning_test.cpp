// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cerrno>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "unit/wifi/record_bytes.h"
#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

constexpr char kHeader[] = "bssid / frequency / signal level / flags / ssid\n";

class Scanning : public WifiTest {
 protected:
  static int Trigger() { return WifiConfig_TriggerScanAndGetScannedNetworkCount(); }

  void ExpectScan(const std::string& results) {
    Expect({{"SCAN", "OK\n"}, {"SCAN_RESULTS", results}});
  }

  /// Makes the kept list hold what these lines say.
  void Keep(const std::string& lines) {
    ExpectScan(kHeader + lines);
    ASSERT_GE(Trigger(), 0);
  }

  size_t Kept() const { return context_.scannedNetworks->size(); }
};

TEST_F(Scanning, TriggersAScanAndAtOnceReadsTheResults) {
  ExpectScan(Recorded("010-scan-results.txt"));
  EXPECT_THAT(Observe(Trigger), Returns(9));
  EXPECT_EQ(Kept(), 9u);
}

TEST_F(Scanning, DoesNotLookAtTheReplyToTheTrigger) {
  Expect({{"SCAN", Recorded("167-unknown-command.txt")},
          {"SCAN_RESULTS", Recorded("010-scan-results.txt")}});
  EXPECT_THAT(Observe(Trigger), Returns(9));
}

TEST_F(Scanning, LeavesErrnoAloneWhenItSucceeds) {
  ExpectScan(std::string(kHeader) + "unparsable\n");
  EXPECT_EQ(Observe(Trigger).error, kUntouched);
}

TEST_F(Scanning, ReplacesTheKeptList) {
  Keep("a\t1\t-1\t[ESS]\tfirst\na\t1\t-1\t[ESS]\tsecond\n");
  const eastl::shared_ptr<wifi::NetworkList> old = context_.scannedNetworks;
  Keep("a\t1\t-1\t[ESS]\tthird\n");
  EXPECT_NE(context_.scannedNetworks, old);
  EXPECT_EQ(old.use_count(), 1);
  EXPECT_EQ(old->size(), 2u);
  EXPECT_EQ(Kept(), 1u);
}

TEST_F(Scanning, EmptyScanListReplacesTheKeptOne) {
  for (const char* const reply : {"", "\n\n", kHeader}) {
    Keep("a\t1\t-1\t[ESS]\tfirst\n");
    ASSERT_EQ(Kept(), 1u);
    ExpectScan(reply);
    EXPECT_THAT(Observe(Trigger), Returns(0)) << reply;
    EXPECT_EQ(Kept(), 0u) << reply;
  }
}

TEST_F(Scanning, IsRefusedWithoutACommandWhenTheClientIsUnavailable) {
  Keep("a\t1\t-1\t[ESS]\tfirst\n");
  Client().unavailable = true;
  EXPECT_THAT(Observe(Trigger), Fails(EINVAL, ScanFailure(3)));
  EXPECT_EQ(Kept(), 1u);
}

TEST_F(Scanning, FailsWithoutAConnection) {
  Keep("a\t1\t-1\t[ESS]\tfirst\n");
  Client().ipc->Close();
  EXPECT_THAT(Observe(Trigger), Fails(EIO, ScanFailure(22) + OperationError(22)));
  EXPECT_EQ(Kept(), 1u);
}

class ScanRefusals : public Scanning, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Recorded, ScanRefusals,
                         testing::Values("007-scan-while-scanning.txt", "180-scan-if-down.txt"));

TEST_P(ScanRefusals, LeaveTheKeptList) {
  Keep("a\t1\t-1\t[ESS]\tfirst\n");
  Expect({{"SCAN", Recorded(GetParam())}});
  EXPECT_THAT(Observe(Trigger), Fails(EINVAL, ScanFailure(6)));
  EXPECT_EQ(Kept(), 1u);
}

TEST_P(ScanRefusals, OfTheResultsLeaveTheKeptList) {
  Keep("a\t1\t-1\t[ESS]\tfirst\n");
  Expect({{"SCAN", "OK\n"}, {"SCAN_RESULTS", Recorded(GetParam())}});
  EXPECT_THAT(Observe(Trigger), Fails(EINVAL, ScanFailure(6)));
  EXPECT_EQ(Kept(), 1u);
}

struct LineCount {
  int lines;
  int networks;
  const char* text;
};

class ScannedLines : public Scanning, public testing::WithParamInterface<LineCount> {};

constexpr char kLimitText[] = "Number of networks from scan exceeded the limit.";

INSTANTIATE_TEST_SUITE_P(Each, ScannedLines,
                         testing::Values(LineCount{1, 0, ""}, LineCount{2, 1, ""},
                                         LineCount{101, 100, ""}, LineCount{102, 100, kLimitText},
                                         LineCount{200, 100, kLimitText}));

TEST_P(ScannedLines, BeyondTheFirst100NetworksAreToldOfAndDropped) {
  const auto [count, networks, text] = GetParam();
  std::string lines;
  for (int i = 1; i < count; ++i) {
    lines += "\t1\t-1\tx\tn\n";
  }
  ExpectScan("h\n" + lines);
  const Observed observed = Observe(Trigger);
  EXPECT_THAT(observed, Returns(networks, text));
  EXPECT_EQ(observed.error, kUntouched);
  EXPECT_EQ(Kept(), static_cast<size_t>(networks));
}

TEST_F(Scanning, LosesWhatIsBehind2048BytesOfTheReply) {
  const std::string before_name = std::string(kHeader) + "a\t1\t-1\t[ESS]\t";
  ExpectScan(before_name + std::string(3000, 'n') + "\na\t1\t-1\t[ESS]\tsecond\n");
  EXPECT_THAT(Observe(Trigger), Returns(1));
  EXPECT_EQ(context_.scannedNetworks->back().FindProperty("ssid")->size(),
            2048 - before_name.size());
}

// Reading the kept list.

using Records = std::vector<WifiScannedNetworkRecord>;

constexpr uint8_t kBefore = 0xA5;

Records Blank(size_t count) {
  Records records(count);
  memset(records.data(), kBefore, count * sizeof records[0]);
  return records;
}

std::string NameOf(const WifiScannedNetworkRecord& record) {
  return {reinterpret_cast<const char*>(record.ssid), record.ssidLength};
}

class ScannedRecords : public Scanning {
 protected:
  Observed Read(Records& records, uint32_t version = 1) {
    return Observe(
        [&] { return z__WifiConfig_GetScannedNetworks(records.data(), records.size(), version); });
  }
};

constexpr char kHomeNet[] = "aa:bb:cc:dd:ee:ff\t2437\t-52\t[WPA2-PSK-CCMP][ESS]\tHome Net\n";

TEST_F(ScannedRecords, HoldAllOfANetwork) {
  Keep(kHomeNet);
  Records records = Blank(1);
  EXPECT_THAT(Read(records), Returns(1));
  Records expected = Blank(1);
  expected[0].recordTag = 0x7EB10001;
  memcpy(expected[0].ssid, "Home Net", 8);
  const uint8_t bssid[] = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
  memcpy(expected[0].bssid, bssid, sizeof bssid);
  expected[0].ssidLength = 8;
  expected[0].security = WifiSecurity_Wpa2Psk;
  expected[0].frequencyMhz = 2437;
  expected[0].signalDbm = -52;
  EXPECT_EQ(BytesOf(records.data()), BytesOf(expected.data()));
}

TEST_F(ScannedRecords, OfARealSupplicant) {
  ExpectScan(Recorded("010-scan-results.txt"));
  ASSERT_EQ(Trigger(), 9);
  Records records = Blank(9 + 2);
  EXPECT_THAT(Read(records), Returns(9));
  EXPECT_EQ(NameOf(records[4]), "0123456789abcdef0123456789ABCDEF");
  EXPECT_EQ(records[4].ssidLength, 32);
  EXPECT_EQ(records[4].bssid[4], 0x02);
  EXPECT_EQ(records[4].bssid[5], 0x01);
  EXPECT_EQ(records[4].frequencyMhz, 2437u);
  EXPECT_EQ(records[4].signalDbm, -30);
  EXPECT_EQ(records[4].security, WifiSecurity_Wpa2Psk);
  EXPECT_EQ(NameOf(records[5]), "open ap");
  EXPECT_EQ(records[5].security, WifiSecurity_Open);
  EXPECT_EQ(NameOf(records[6]), R"(q\"b\\s\x01\t\xff)");
  EXPECT_EQ(records[3].security, WifiSecurity_Unknown);
  EXPECT_EQ(records[8].recordTag, 0x7EB10001u);
  EXPECT_EQ(records[9].recordTag, 0u);
  EXPECT_EQ(records[10].recordTag, 0u);
}

TEST_F(ScannedRecords, CanBeReadOnce) {
  Keep(kHomeNet);
  Records records = Blank(3);
  EXPECT_THAT(Read(records), Returns(1));
  EXPECT_EQ(Kept(), 0u);
  records = Blank(3);
  Records expected = Blank(3);
  for (WifiScannedNetworkRecord& record : expected) {
    record.recordTag = 0;
  }
  EXPECT_THAT(Read(records), Returns(0));
  EXPECT_EQ(BytesOf(records.data(), 3), BytesOf(expected.data(), 3));
}

TEST_F(ScannedRecords, AreNoneBeforeAScan) {
  Records records = Blank(1);
  EXPECT_THAT(Read(records), Returns(0));
  EXPECT_EQ(records[0].recordTag, 0u);
}

TEST_F(ScannedRecords, BeyondTheArrayAreDropped) {
  Keep(std::string(kHomeNet) + kHomeNet + kHomeNet);
  Records records = Blank(2);
  EXPECT_THAT(Read(records), Returns(2));
  EXPECT_EQ(Kept(), 0u);
}

TEST_F(ScannedRecords, NeedAnArray) {
  Keep(kHomeNet);
  EXPECT_THAT(Observe([] { return z__WifiConfig_GetScannedNetworks(nullptr, 0, 2); }),
              IsRefused(EFAULT));
  EXPECT_EQ(Kept(), 1u);
}

TEST_F(ScannedRecords, NeedACount) {
  Keep(kHomeNet);
  Records records = Blank(1);
  EXPECT_THAT(Observe([&] { return z__WifiConfig_GetScannedNetworks(records.data(), 0, 2); }),
              IsRefused(ERANGE));
  EXPECT_EQ(Kept(), 1u);
  EXPECT_EQ(BytesOf(records.data()), BytesOf(Blank(1).data()));
}

TEST_F(ScannedRecords, WrongVersionEmptiesTheList) {
  for (const uint32_t version : {0U, 2U, 0x10001U, 0xFFFFFFFFU}) {
    Keep(kHomeNet);
    Records records = Blank(1);
    EXPECT_THAT(Read(records, version), IsRefused(EINVAL));
    EXPECT_EQ(Kept(), 0u);
    EXPECT_EQ(BytesOf(records.data()), BytesOf(Blank(1).data()));
    EXPECT_THAT(Read(records), Returns(0));
  }
}

TEST_F(ScannedRecords, OfASkippedNetworkHaveTheirSlotUsedAgain) {
  Keep(std::string("02:00:00:00:00:01\t2412\t-41\t[ESS]\tfirst\n") +
       "02:00:00:00:00:02\t0\t-42\t[ESS]\tthe second\n" +
       "02:00:00:00:00:03\t2412\t-43\t[ESS]\tthird\n" + kHomeNet + kHomeNet);
  Records records = Blank(3);
  const Observed observed = Read(records);
  EXPECT_THAT(observed, Returns(2));
  EXPECT_EQ(observed.error, ERANGE);
  EXPECT_EQ(NameOf(records[0]), "first");
  EXPECT_EQ(NameOf(records[1]), "third");
  EXPECT_EQ(records[1].recordTag, 0x7EB10001u);
  EXPECT_EQ(records[1].ssid[5], 'e') << "the rest of the skipped name";
  EXPECT_EQ(records[2].recordTag, 0u);
}

TEST_F(ScannedRecords, OfANetworkSkippedLastKeepWhatWasWritten) {
  Keep("02:00:00:00:00:01\t2412\t0\t[ESS]\tname\n");
  Records records = Blank(1);
  EXPECT_THAT(Read(records), Returns(0));
  EXPECT_EQ(records[0].recordTag, 0u);
  EXPECT_EQ(NameOf(records[0]), "name");
  EXPECT_EQ(records[0].bssid[5], 1);
  EXPECT_EQ(records[0].frequencyMhz, 2412u);
  EXPECT_EQ(static_cast<uint8_t>(records[0].signalDbm), kBefore);
  EXPECT_EQ(records[0].security, kBefore);
}

struct Line {
  const char* name;
  const char* frequency;
  const char* signal;
  const char* bssid;
  int result;
  int error;
  uint32_t frequency_mhz;
  int signal_dbm;
};

void PrintTo(const Line& line, std::ostream* stream) { *stream << line.name; }

class ScannedNumbers : public ScannedRecords, public testing::WithParamInterface<Line> {};

constexpr char kBssid[] = "02:00:00:00:00:01";

INSTANTIATE_TEST_SUITE_P(
    Each, ScannedNumbers,
    testing::Values(
        Line{"Plain", "2412", "-30", kBssid, 1, kUntouched, 2412, -30},
        Line{"HexadecimalBase0", "0x96C", "0x10", kBssid, 1, kUntouched, 2412, 16},
        Line{"OctalBase0", "02412", "-010", kBssid, 1, kUntouched, 1290, -8},
        Line{"TrailingText", "2412MHz", "-30dBm", kBssid, 1, kUntouched, 2412, -30},
        Line{"Signs", "+2412", "+30", kBssid, 1, kUntouched, 2412, 30},
        Line{"LowestSignal", "1", "-128", kBssid, 1, kUntouched, 1, -128},
        Line{"HighestSignal", "1", "127", kBssid, 1, kUntouched, 1, 127},
        Line{"HighestFrequency", "4294967294", "-1", kBssid, 1, kUntouched, 4294967294U, -1},
        Line{"NoFrequency", "0", "-30", kBssid, 0, ERANGE, 0, 0},
        Line{"FrequencyWithoutDigits", "abc", "-30", kBssid, 0, ERANGE, 0, 0},
        Line{"NegativeFrequency", "-1", "-30", kBssid, 0, ERANGE, 0, 0},
        Line{"FrequencyBeyondAllNumbers", "99999999999999999999999", "-30", kBssid, 0, ERANGE, 0,
             0},
        Line{"NoSignal", "2412", "0", kBssid, 0, ERANGE, 0, 0},
        Line{"SignalWithoutDigits", "2412", "low", kBssid, 0, ERANGE, 0, 0},
        Line{"SignalTooLow", "2412", "-129", kBssid, 0, ERANGE, 0, 0},
        Line{"SignalFarTooLow", "2412", "-200", kBssid, 0, ERANGE, 0, 0},
        Line{"SignalTooHigh", "2412", "128", kBssid, 0, ERANGE, 0, 0},
        Line{"SignalBeyondAllNumbers", "2412", "-99999999999999999999999", kBssid, 0, ERANGE, 0, 0},
        Line{"ShortAddress", "2412", "-30", "02:00:00:00:00:0", 0, EINVAL, 0, 0},
        Line{"AddressWithoutColons", "2412", "-30", "02-00-00-00-00-01", 0, EINVAL, 0, 0},
        Line{"NothingButTheName", "0", "0", "02", 0, EINVAL, 0, 0}),
    [](const auto& test) { return test.param.name; });

TEST_P(ScannedNumbers, AreReadOrSkipTheNetwork) {
  const Line& line = GetParam();
  Keep(std::string(line.bssid) + '\t' + line.frequency + '\t' + line.signal + "\t[ESS]\tname\n");
  Records records = Blank(1);
  const Observed observed = Read(records);
  EXPECT_THAT(observed, Returns(line.result));
  EXPECT_EQ(observed.error, line.error);
  EXPECT_EQ(records[0].recordTag, line.result == 1 ? 0x7EB10001U : 0U);
  if (line.result == 1) {
    EXPECT_EQ(records[0].frequencyMhz, line.frequency_mhz);
    EXPECT_EQ(records[0].signalDbm, line.signal_dbm);
  }
}

class MissingProperties : public ScannedRecords, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Each, MissingProperties,
                         testing::Values("ssid", "bssid", "freq", "signal_level"));

TEST_P(MissingProperties, SkipTheNetworkAndAreToldOf) {
  Keep(std::string(kHomeNet) + "02:00:00:00:00:03\t2412\t-43\t[ESS]\tthird\n");
  (*context_.scannedNetworks)[0].properties.erase(GetParam());
  Records records = Blank(2);
  const Observed observed = Read(records);
  EXPECT_THAT(observed, Returns(1, MissingProperty()));
  EXPECT_EQ(observed.error, ENODATA);
  EXPECT_EQ(NameOf(records[0]), "third");
  EXPECT_EQ(records[1].recordTag, 0u);
}

TEST_F(ScannedRecords, HaveAnUnknownSecurityForAnyOther) {
  for (const int security : {-1, 3, 256 + 1, 256 + 2}) {
    Keep(kHomeNet);
    (*context_.scannedNetworks)[0].security = security;
    Records records = Blank(1);
    EXPECT_THAT(Read(records), Returns(1));
    EXPECT_EQ(records[0].security, WifiSecurity_Unknown);
  }
}

}  // namespace
}  // namespace kestrel::test
