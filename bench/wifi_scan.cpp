// SPDX-License-Identifier: Apache-2.0
// What WifiConfig_TriggerScanAndGetScannedNetworkCount adds to the two exchanges that it makes: the
// same datagrams over a socket of the same type, to a daemon that has nothing to think about.
#include <benchmark/benchmark.h>
#include <kestrel/wificonfig.h>

#include <array>
#include <string>

#include "bare_calls.h"
#include "overhead_reporter.h"
#include "scan_daemon.h"

namespace {

/// As much of a reply as the library reads.
constexpr size_t kReplySize = 2048;

using Reply = std::array<char, kReplySize>;

/// A list of `count` networks that fills a reply to its last byte.
std::string FullList(int count) {
  std::string list = "bssid / frequency / signal level / flags / ssid\n";
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(10 + i);
    list.append("02:00:00:00:00:").append(number);
    list.append("\t2437\t-48\t[WPA2-PSK-CCMP][ESS]\tKestrel ").append(number).append("\n");
  }
  list.insert(list.size() - 1, kReplySize - list.size(), 'x');
  return list;
}

constexpr int kNetworks = 32;

// NOLINTBEGIN(clang-analyzer-deadcode.DeadStores): the loop variable only counts iterations
void Bare(benchmark::State& state) {
  Reply list;
  for (auto _ : state) {
    benchmark::DoNotOptimize(BareScan(g_scan_daemon->client_end(), list.data(), list.size()));
    benchmark::DoNotOptimize(list);
  }
}

void Library(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(WifiConfig_TriggerScanAndGetScannedNetworkCount());
  }
}
// NOLINTEND(clang-analyzer-deadcode.DeadStores)

constexpr char kLibrary[] = "WifiConfig_TriggerScanAndGetScannedNetworkCount";
constexpr char kBare[] = "bare scan";
constexpr char kLibraryByTheClock[] =
    "WifiConfig_TriggerScanAndGetScannedNetworkCount by the clock";
constexpr char kBareByTheClock[] = "bare scan by the clock";

/// What the calling thread computes, and how long it waits as well: the latter is also about how
/// the kernel changes between two threads.
void Register(const char* name, const char* name_by_the_clock,
              void (*function)(benchmark::State&)) {
  constexpr int kRepetitions = 15;
  benchmark::RegisterBenchmark(name, function)->Repetitions(kRepetitions)->ReportAggregatesOnly();
  benchmark::RegisterBenchmark(name_by_the_clock, function)
      ->Repetitions(kRepetitions)
      ->UseRealTime()
      ->ReportAggregatesOnly();
}

/// Whether both get the whole list from the daemon: else something else would be measured.
bool DaemonAnswersBoth() {
  Reply list;
  return WifiConfig_TriggerScanAndGetScannedNetworkCount() == kNetworks &&
         BareScan(g_scan_daemon->client_end(), list.data(), list.size()) == kReplySize;
}

}  // namespace

int main(int argc, char** argv) {
  const ScanDaemon daemon(FullList(kNetworks));
  g_scan_daemon = &daemon;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv) || !DaemonAnswersBoth()) {
    return 1;
  }
  Register(kBare, kBareByTheClock, Bare);
  Register(kLibrary, kLibraryByTheClock, Library);
  OverheadReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintOverhead(kLibrary, kBare);
  reporter.PrintOverhead(kLibraryByTheClock, kBareByTheClock);
  return 0;
}
