// SPDX-License-Identifier: Apache-2.0
// Many threads that use the Wi-Fi daemon at once, each with networks of its own, so that a reply
// which reached another caller would show.
#include <errno.h>
#include <gtest/gtest.h>
#include <kestrel/wificonfig.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "outside_world.h"
#include "support/outcome.h"
#include "support/threads.h"
#include "wifi_exports.h"

namespace kestrel::test {
namespace {

/// The daemon gives every network a higher number than all others have, and the library takes
/// numbers up to 100.
constexpr size_t kRounds = 5;
constexpr char kScanIsRefused[] = "[Kestrel:WifiConfig] Failure performing scan: 6\n";

/// A thread that wants the networks that it has counted keeps others from replacing or taking the
/// list before it has read them.
std::mutex g_stored_list;
std::mutex g_scanned_list;

struct Successes {
  std::atomic<int> scans{0};
  std::atomic<int> listings{0};
};

/// One thread's share of the work.
class Worker {
 public:
  Worker(size_t number, Successes& successes)
      : prefix_("thread " + std::to_string(number) + " round "),
        security_(number % 2 == 0 ? WifiSecurity_Open : WifiSecurity_Wpa2Psk),
        successes_(successes) {}

  void DoRound(size_t round) {
    const std::string name = prefix_ + std::to_string(round);
    EXPECT_EQ(security_ == WifiSecurity_Open ? StoreOpen(name) : StoreWpa2(name, "pass " + name),
              0);
    List(name);
    Scan();
    ReadCurrent();
    Forget(name);
  }

 private:
  /// A call that asks for the details of a network which another thread has just removed is
  /// refused.
  static void ExpectRefusal(int result) {
    EXPECT_EQ(result, -1);
    EXPECT_EQ(errno, EINVAL);
  }

  void List(const std::string& own) {
    const std::scoped_lock guard(g_stored_list);
    const int count = WifiConfig_GetStoredNetworkCount();
    if (count < 0) {
      return ExpectRefusal(count);
    }
    ++successes_.listings;
    std::vector<WifiStoredNetworkRecord> records(static_cast<size_t>(count));
    EXPECT_EQ(
        z__WifiConfig_GetStoredNetworks(records.data(), records.size(), WifiConfig_StructVersion),
        count);
    const auto is_own = [&](const WifiStoredNetworkRecord& record) {
      return NameOf(record) == own && record.security == security_ && record.enabled == 1 &&
             record.connected == 0;
    };
    EXPECT_EQ(std::count_if(records.begin(), records.end(), is_own), 1) << own;
    for (const WifiStoredNetworkRecord& record : records) {
      ExpectKnownName(NameOf(record));
    }
  }

  /// "NONE" is the name of a network that another thread is adding or has removed.
  static void ExpectKnownName(const std::string& name) {
    EXPECT_TRUE(name == "Kestrel Lab" || name == "NONE" || name.rfind("thread ", 0) == 0) << name;
  }

  void Scan() {
    const std::scoped_lock guard(g_scanned_list);
    const int count = WifiConfig_TriggerScanAndGetScannedNetworkCount();
    if (count < 0) {
      return ExpectRefusal(count);
    }
    ++successes_.scans;
    EXPECT_EQ(count, 2);
    std::array<WifiScannedNetworkRecord, 4> records{};
    EXPECT_EQ(
        z__WifiConfig_GetScannedNetworks(records.data(), records.size(), WifiConfig_StructVersion),
        2);
    EXPECT_EQ(NameOf(records[0]), "Kestrel Lab");
    EXPECT_EQ(records[0].signalDbm, -48);
    EXPECT_EQ(NameOf(records[1]), "Kestrel Guest");
    EXPECT_EQ(records[1].security, WifiSecurity_Open);
  }

  static void ReadCurrent() {
    WifiCurrentNetworkRecord current{};
    EXPECT_EQ(z__WifiConfig_GetCurrentNetwork(&current, WifiConfig_StructVersion), 0);
    EXPECT_EQ(NameOf(current), "Kestrel Lab");
    EXPECT_EQ(current.frequencyMhz, 2437U);
    EXPECT_EQ(current.security, WifiSecurity_Wpa2Psk);
  }

  void Forget(const std::string& own) const {
    WifiStoredNetworkRecord record{};
    record.recordTag = WifiStoredNetworkRecord_Complete;
    own.copy(reinterpret_cast<char*>(record.ssid), sizeof record.ssid);
    record.ssidLength = static_cast<uint8_t>(own.size());
    record.security = security_;
    int result = z__WifiConfig_ForgetNetwork(&record);
    while (result != 0 && errno == EINVAL) {
      result = z__WifiConfig_ForgetNetwork(&record);
    }
    EXPECT_EQ(result, 0) << errno;
  }

  const std::string prefix_;
  const WifiSecurity security_;
  Successes& successes_;
};

/// The radio is on a network, and the daemon has the results of a scan.
void AwaitConnectionAndScan() {
  ASSERT_EQ(StoreWpa2("Kestrel Lab", "kestrel-lab"), 0);
  AwaitConnection();
  ASSERT_EQ(AwaitScan(), 2);
}

/// The text without all of its lines that are like this one.
std::string Without(const std::string& line, std::string text) {
  for (size_t at = text.find(line); at != std::string::npos; at = text.find(line, at)) {
    text.erase(at, line.size());
  }
  return text;
}

TEST(WifiThreads, GetTheRepliesToTheirOwnCommands) {
  AwaitConnectionAndScan();
  Successes successes;
  const Observed observed = Observe([&] {
    OnThreads(8, [&](size_t number) {
      Worker worker(number, successes);
      for (size_t round = 0; round < kRounds; ++round) {
        worker.DoRound(round);
      }
    });
    return 0;
  });
  EXPECT_THAT(observed, LeaksNothing());
  EXPECT_EQ(Without(kScanIsRefused, observed.standard_error), "");
  EXPECT_GT(successes.scans, 0);
  EXPECT_GT(successes.listings, 0);
  EXPECT_GT(WifiCommandsOf(getpid()), 1000U);
  const std::vector<WifiStoredNetworkRecord> left = Stored();
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(NameOf(left[0]), "Kestrel Lab");
  EXPECT_EQ(WifiConfig_ForgetAllNetworks(), 0);
}

TEST(WifiThreads, ShareTheKeptListsAndSoHaveToTakeTurns) {
  ASSERT_EQ(AwaitScan(), 2);
  ASSERT_EQ(WifiConfig_GetStoredNetworkCount(), 0);
  int taken = 0;
  std::thread([&] {
    std::array<WifiScannedNetworkRecord, 2> records{};
    taken =
        z__WifiConfig_GetScannedNetworks(records.data(), records.size(), WifiConfig_StructVersion);
    EXPECT_EQ(StoreOpen("another thread's"), 0);
    EXPECT_EQ(WifiConfig_GetStoredNetworkCount(), 1);
  }).join();
  EXPECT_EQ(taken, 2);
  std::array<WifiScannedNetworkRecord, 2> scanned{};
  EXPECT_EQ(
      z__WifiConfig_GetScannedNetworks(scanned.data(), scanned.size(), WifiConfig_StructVersion), 0)
      << "the other thread has them";
  std::array<WifiStoredNetworkRecord, 2> stored{};
  EXPECT_EQ(z__WifiConfig_GetStoredNetworks(stored.data(), stored.size(), WifiConfig_StructVersion),
            1)
      << "this thread has counted none";
  EXPECT_EQ(NameOf(stored[0]), "another thread's");
  EXPECT_EQ(WifiConfig_ForgetAllNetworks(), 0);
}

}  // namespace
}  // namespace kestrel::test
