// SPDX-License-Identifier: Apache-2.0
#include "wifi_scan.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string>

#include "failure.h"
#include "interruption.h"
#include "progress_line.h"
#include "wifi_failure.h"
#include "wifi_library.h"

namespace kestrelctl {
namespace {

using Clock = std::chrono::steady_clock;

/// From one question to the next.
constexpr Milliseconds kPause(250);

LibraryAnswer TriggerScan() { return AskLibrary(WifiConfig_TriggerScanAndGetScannedNetworkCount); }

bool IsRefused(const LibraryAnswer& answer) { return answer.value < 0 && answer.error == EINVAL; }

/// The networks that the answer counts; nothing after reporting its failure.
std::optional<ScannedNetworks> NetworksOf(const LibraryAnswer& answer) {
  if (answer.value < 0) {
    ReportWifiFailure("scan", answer,
                      {{EINVAL,
                        "the Wi-Fi daemon refused, as it does while a scan is running; --wait "
                        "waits for that"}});
    return std::nullopt;
  }
  return ReadScannedNetworks(answer.value);
}

std::string Seconds(Clock::duration time) {
  return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(time).count());
}

std::optional<ScannedNetworks> GiveUp(const std::string& problem) {
  ReportProblem("scan: " + problem);
  return std::nullopt;
}

/// Asks until the daemon takes an order to scan, which it refuses while one is running.
std::optional<ScannedNetworks> WaitForEnd(Milliseconds limit) {
  const Interruption interruption;
  ProgressLine progress;
  const Clock::time_point start = Clock::now();
  LibraryAnswer answer;
  do {
    progress.Show("scanning: " + Seconds(Clock::now() - start) + " of " + Seconds(limit) +
                  " seconds");
    const auto left = std::chrono::ceil<Milliseconds>(std::max(limit - (Clock::now() - start), {}));
    if (interruption.WaitFor(std::min(kPause, left)) != WaitEnd::kTime) {
      progress.Clear();
      return GiveUp("interrupted");
    }
    answer = TriggerScan();
  } while (IsRefused(answer) && Clock::now() - start < limit);
  progress.Clear();
  if (IsRefused(answer)) {
    return GiveUp("the time is up: the Wi-Fi daemon is still scanning, or refuses to");
  }
  return NetworksOf(answer);
}

}  // namespace

std::optional<ScannedNetworks> Scan() { return NetworksOf(TriggerScan()); }

std::optional<ScannedNetworks> ScanFreshly(Milliseconds limit) {
  // Where a scan is running already, its end will do.
  const LibraryAnswer answer = TriggerScan();
  if (answer.value < 0 && !IsRefused(answer)) {
    return NetworksOf(answer);
  }
  return WaitForEnd(limit);
}

}  // namespace kestrelctl
