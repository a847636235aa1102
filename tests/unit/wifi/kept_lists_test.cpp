// SPDX-License-Identifier: Apache-2.0
// The two kept lists of networks between threads that fill, read and empty them as they like.
#include <errno.h>
#include <gtest/gtest.h>
#include <kestrel/wificonfig.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/threads.h"
#include "unit/wifi/answering_daemon.h"
#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

constexpr size_t kThreads = 16;
constexpr int kCallsOfAThread = 300;

/// Networks of a scan. Their name has the scan's number, so parts of two scans show, and a scan
/// that is given twice.
constexpr size_t kScanned = 30;

constexpr size_t kStored = 3;

template <typename Record>
std::string NameOf(const Record& record) {
  return {reinterpret_cast<const char*>(record.ssid), record.ssidLength};
}

std::string ScanOf(int number) {
  std::string reply = "bssid / frequency / signal level / flags / ssid\n";
  for (size_t i = 0; i < kScanned; ++i) {
    reply += "02:00:00:00:00:01\t2437\t-48\t[ESS]\tthe networks of scan " + std::to_string(number) +
             "\n";
  }
  return reply;
}

std::string Listing() {
  std::string reply = "network id / ssid / bssid / flags\n";
  for (size_t i = 0; i < kStored; ++i) {
    reply += std::to_string(i) + "\tname\tany\t[DISABLED]\n";
  }
  return reply;
}

std::string Answer(const std::string& command) {
  static int scans = 0;
  if (command == "SCAN_RESULTS") {
    return ScanOf(++scans);
  }
  if (command == "LIST_NETWORKS") {
    return Listing();
  }
  return command.rfind("GET_NETWORK", 0) == 0 ? "\"name of a stored network\"" : "OK\n";
}

/// What the readers of scans have been given, by the name that all networks of a scan have.
class ScansRead {
 public:
  void Add(const std::string& name) {
    const std::scoped_lock guard(mutex_);
    names_.push_back(name);
  }
  size_t count() const { return names_.size(); }
  size_t different() const { return std::set<std::string>(names_.begin(), names_.end()).size(); }

 private:
  std::mutex mutex_;
  std::vector<std::string> names_;
};

class KeptLists : public testing::Test {
 protected:
  KeptLists() : context_(FreshContext()), daemon_(std::make_unique<AnsweringDaemon>(Answer)) {
    context_.client->ipc->Adopt(daemon_->client_end());
  }
  ~KeptLists() override { FreshContext(); }

  void ReadScan() {
    std::array<WifiScannedNetworkRecord, kScanned + 2> records{};
    const int filled =
        z__WifiConfig_GetScannedNetworks(records.data(), records.size(), WifiConfig_StructVersion);
    if (filled == 0) {
      return;
    }
    EXPECT_EQ(filled, static_cast<int>(kScanned));
    const std::string name = NameOf(records[0]);
    EXPECT_EQ(std::count_if(records.begin(), records.begin() + filled,
                            [&](const auto& record) { return NameOf(record) == name; }),
              filled);
    scans_read_.Add(name);
  }

  static void ReadStored() {
    std::array<WifiStoredNetworkRecord, kStored + 2> records{};
    const int filled =
        z__WifiConfig_GetStoredNetworks(records.data(), records.size(), WifiConfig_StructVersion);
    EXPECT_TRUE(filled == 0 || filled == static_cast<int>(kStored)) << filled;
  }

  static void ReadWithAWrongVersion() {
    WifiScannedNetworkRecord record{};
    EXPECT_EQ(z__WifiConfig_GetScannedNetworks(&record, 1, WifiConfig_StructVersion + 1), -1);
    EXPECT_EQ(errno, EINVAL);
  }

  void CallAtRandom(size_t thread) {
    const std::array<std::function<void()>, 6> calls = {
        [this] {
          EXPECT_EQ(WifiConfig_TriggerScanAndGetScannedNetworkCount(), static_cast<int>(kScanned));
          ++scans_;
        },
        [this] { ReadScan(); },
        [this] { ReadScan(); },
        ReadWithAWrongVersion,
        [] { EXPECT_EQ(WifiConfig_GetStoredNetworkCount(), static_cast<int>(kStored)); },
        ReadStored,
    };
    std::minstd_rand random(static_cast<unsigned int>(thread + 1));
    for (int i = 0; i < kCallsOfAThread; ++i) {
      calls.at(random() % calls.size())();
    }
  }

  wifi::WifiContext& context_;
  std::unique_ptr<AnsweringDaemon> daemon_;
  ScansRead scans_read_;
  std::atomic<size_t> scans_{0};
};

TEST_F(KeptLists, StayWholeBetweenSixteenThreadsThatCallAtRandom) {
  OnThreads(kThreads, [this](size_t thread) { CallAtRandom(thread); });
  EXPECT_GT(scans_read_.count(), 0U);
  EXPECT_EQ(scans_read_.different(), scans_read_.count()) << "a scan was given to two readers";
  EXPECT_LE(scans_read_.count(), scans_);
}

}  // namespace
}  // namespace kestrel::test
