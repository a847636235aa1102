// SPDX-License-Identifier: Apache-2.0
// Compiled twice, with the copy of a name as it is by default and with the one that ends at the end
// of the caller's array. Everything that is overrun here belongs to the test.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

constexpr uint8_t kBefore = 0xA5;

#ifdef KESTREL_BOUND_SSID_COPY
constexpr bool kIsBound = true;
#else
constexpr bool kIsBound = false;
#endif

/// Room for records and slack behind them, on the heap so that the address sanitizer sees its end.
/// A bound copy gets no slack at all.
template <typename Record>
class Memory {
 public:
  Memory(size_t records, size_t slack)
      : size_(records * sizeof(Record) + (kIsBound ? 0 : slack)), bytes_(new uint8_t[size_]) {
    memset(bytes_.get(), kBefore, size_);
  }

  Record* records() { return reinterpret_cast<Record*>(bytes_.get()); }

  /// The bytes from the name of record `index` on.
  std::string FromNameOf(size_t index) const {
    const size_t begin = index * sizeof(Record) + offsetof(Record, ssid);
    return {reinterpret_cast<const char*>(bytes_.get()) + begin, size_ - begin};
  }

 private:
  size_t size_;
  std::unique_ptr<uint8_t[]> bytes_;
};

/// How much of a text of `length` arrives when `room` bytes are left in the array.
size_t Copied(size_t length, size_t room) { return kIsBound ? std::min(length, room) : length; }

/// A name of which every byte tells its place.
std::string LongName(size_t length) {
  std::string name;
  for (size_t i = 0; i < length; ++i) {
    name += static_cast<char>('!' + i % 90);
  }
  return name;
}

class LongNames : public WifiTest, public testing::WithParamInterface<size_t> {
 protected:
  LongNames() : name_(LongName(GetParam())) {}

  void KeepScanned(int networks) {
    std::string reply = "header\n";
    for (int i = 0; i < networks; ++i) {
      reply += "02:00:00:00:00:01\t2412\t-30\t[ESS]\t" + name_ + "\n";
    }
    Expect({{"SCAN", "OK\n"}, {"SCAN_RESULTS", reply}});
    ASSERT_EQ(WifiConfig_TriggerScanAndGetScannedNetworkCount(), networks);
  }

  std::string name_;
};

INSTANTIATE_TEST_SUITE_P(Lengths, LongNames,
                         testing::Values(32, 33, 36, 47, 48, 49, 100, 128, 255, 256, 257, 288, 300,
                                         900));

TEST_P(LongNames, RunOnOverTheFieldsThatAreWrittenAfterwards) {
  Memory<WifiScannedNetworkRecord> memory(1, GetParam());
  KeepScanned(1);
  EXPECT_THAT(Observe([&] { return z__WifiConfig_GetScannedNetworks(memory.records(), 1, 1); }),
              Returns(1));
  const WifiScannedNetworkRecord& record = *memory.records();
  const size_t copied = Copied(name_.size(), 48);
  EXPECT_EQ(record.recordTag, 0x7EB10001u);
  EXPECT_EQ(memcmp(record.ssid, name_.data(), 32), 0);
  EXPECT_EQ(record.bssid[5], 1);
  EXPECT_EQ(record.ssidLength, static_cast<uint8_t>(copied));
  EXPECT_EQ(record.security, WifiSecurity_Open);
  EXPECT_EQ(record.frequencyMhz, 2412u);
  EXPECT_EQ(record.signalDbm, -30);
}

TEST_P(LongNames, ArriveWholeOrEndWithTheArray) {
  Memory<WifiScannedNetworkRecord> memory(1, GetParam());
  KeepScanned(1);
  ASSERT_EQ(z__WifiConfig_GetScannedNetworks(memory.records(), 1, 1), 1);
  const std::string bytes = memory.FromNameOf(0);
  // The fields behind the name end at 45 bytes from its beginning, and nothing is written later.
  const size_t copied = Copied(name_.size(), 48);
  for (size_t i = 45; i < bytes.size(); ++i) {
    const char expected = i < copied ? name_[i] : static_cast<char>(kBefore);
    ASSERT_EQ(bytes[i], expected) << i;
  }
}

TEST_P(LongNames, AreOverwrittenByTheNextRecord) {
  Memory<WifiScannedNetworkRecord> memory(3, GetParam());
  KeepScanned(2);
  ASSERT_EQ(z__WifiConfig_GetScannedNetworks(memory.records(), 3, 1), 2);
  EXPECT_EQ(memory.records()[1].recordTag, 0x7EB10001u);
  EXPECT_EQ(memory.records()[1].ssidLength, static_cast<uint8_t>(Copied(name_.size(), 48 + 52)));
  EXPECT_EQ(memcmp(memory.records()[1].ssid, name_.data(), 32), 0);
  EXPECT_EQ(memory.records()[2].recordTag, 0u);
}

TEST_P(LongNames, OfStoredNetworksRunOnToo) {
  Memory<WifiStoredNetworkRecord> memory(1, GetParam());
  context_.storedNetworks->resize(1);
  context_.storedNetworks->front().SetProperty("ssid", Text(name_));
  EXPECT_THAT(Observe([&] { return z__WifiConfig_GetStoredNetworks(memory.records(), 1, 1); }),
              Returns(1));
  const size_t copied = Copied(name_.size(), 36);
  EXPECT_EQ(memcmp(memory.records()->ssid, name_.data(), 32), 0);
  EXPECT_EQ(memory.records()->ssidLength, static_cast<uint8_t>(copied));
  EXPECT_EQ(memory.records()->enabled, 0);
  const std::string bytes = memory.FromNameOf(0);
  for (size_t i = 36; i < bytes.size(); ++i) {
    const char expected = i < copied ? name_[i] : static_cast<char>(kBefore);
    ASSERT_EQ(bytes[i], expected) << i;
  }
}

TEST_P(LongNames, OfTheCurrentNetworkRunOnToo) {
  Memory<WifiCurrentNetworkRecord> memory(1, GetParam());
  Expect({{"STATUS", "bssid=02:00:00:00:00:01\nfreq=2412\nssid=" + name_ + "\n"}});
  EXPECT_THAT(Observe([&] { return z__WifiConfig_GetCurrentNetwork(memory.records(), 1); }),
              Returns(0));
  const size_t copied = Copied(name_.size(), 48);
  EXPECT_EQ(memory.records()->recordTag, 0x09EF0001u);
  EXPECT_EQ(memcmp(memory.records()->ssid, name_.data(), 32), 0);
  EXPECT_EQ(memory.records()->ssidLength, static_cast<uint8_t>(copied));
  EXPECT_EQ(memory.records()->frequencyMhz, 2412u);
  const std::string bytes = memory.FromNameOf(0);
  for (size_t i = 45; i < bytes.size(); ++i) {
    const char expected = i < copied ? name_[i] : static_cast<char>(kBefore);
    ASSERT_EQ(bytes[i], expected) << i;
  }
}

TEST_P(LongNames, HaveALengthModulo256WithAndWithoutABound) {
  Memory<WifiScannedNetworkRecord> memory(20, GetParam());
  KeepScanned(1);
  ASSERT_EQ(z__WifiConfig_GetScannedNetworks(memory.records(), 20, 1), 1);
  EXPECT_EQ(memory.records()->ssidLength, GetParam() % 256);
}

class LongestNames : public WifiTest {
 protected:
  /// What the daemon shows for 32 bytes that cannot be printed.
  static std::string LongestText() {
    std::string text;
    for (int i = 0; i < 32; ++i) {
      text += R"(\xff)";
    }
    return text;
  }
};

TEST_F(LongestNames, NeedTheSlackThatTheHeaderNames) {
  ASSERT_EQ(LongestText().size(), 128u);
  Memory<WifiScannedNetworkRecord> scanned(1, 80);
  Expect({{"SCAN", "OK\n"},
          {"SCAN_RESULTS", "header\n02:00:00:00:00:01\t2412\t-30\t[ESS]\t" + LongestText()}});
  ASSERT_EQ(WifiConfig_TriggerScanAndGetScannedNetworkCount(), 1);
  EXPECT_EQ(z__WifiConfig_GetScannedNetworks(scanned.records(), 1, 1), 1);
  Memory<WifiCurrentNetworkRecord> current(1, 80);
  Expect({{"STATUS", "bssid=02:00:00:00:00:01\nfreq=2412\nssid=" + LongestText()}});
  EXPECT_EQ(z__WifiConfig_GetCurrentNetwork(current.records(), 1), 0);
  if (!kIsBound) {
    EXPECT_EQ(scanned.FromNameOf(0).back(), 'f');
    EXPECT_EQ(current.FromNameOf(0).back(), 'f');
  }
}

TEST_F(LongestNames, ThatFillAReplyOverrunByAsMuchAsTheHeaderNames) {
  const std::string name = LongName(wifi::kReplyBufferSize - 2);
  Memory<WifiStoredNetworkRecord> memory(1, 2010);
  Expect({{"LIST_NETWORKS", "header\n0\tx\tany\t\n"},
          {"GET_NETWORK 0 ssid", '"' + name + '"'},
          {"GET_NETWORK 0 key_mgmt", "NONE"},
          {"STATUS", "header\nwpa_state=SCANNING\n"}});
  ASSERT_EQ(WifiConfig_GetStoredNetworkCount(), 1);
  EXPECT_EQ(z__WifiConfig_GetStoredNetworks(memory.records(), 1, 1), 1);
  EXPECT_EQ(memory.FromNameOf(0).size(), Copied(name.size(), 36));
  if (!kIsBound) {
    EXPECT_EQ(memory.FromNameOf(0).back(), name.back());
  }
}

}  // namespace
}  // namespace kestrel::test
