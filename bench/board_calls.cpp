// SPDX-License-Identifier: Apache-2.0
// What the functions that make several system calls take, next to the same calls in C. To be run on
// a virtual board, which has the devices.
#include <benchmark/benchmark.h>
#include <kestrel/kestrel.h>
#include <unistd.h>

#include "bare_calls.h"
#include "overhead_reporter.h"

namespace {

constexpr uint32_t kPort = 0;
constexpr char kPortPath[] = "/dev/ttyS0";

// NOLINTBEGIN(clang-analyzer-deadcode.DeadStores): the loop variable only counts iterations
void BareOpen(benchmark::State& state) {
  for (auto _ : state) {
    close(BareUartOpen(kPortPath));
  }
}

void LibraryOpen(benchmark::State& state) {
  UartConfigRecord config;
  z__UART_InitConfig(&config, UART_CONFIG_VERSION);
  for (auto _ : state) {
    close(z__UART_Open(kPort, &config));
  }
}

void BareReady(benchmark::State& state) {
  int ready = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(BareIsNetworkingReady(&ready));
  }
}

void LibraryReady(benchmark::State& state) {
  bool ready = false;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Networking_IsNetworkingReady(&ready));
  }
}

void BareId(benchmark::State& state) {
  char text[129];
  for (auto _ : state) {
    benchmark::DoNotOptimize(BareGetDeviceId(text));
  }
}

void LibraryId(benchmark::State& state) {
  char text[129];
  for (auto _ : state) {
    benchmark::DoNotOptimize(Manufacturing_GetDeviceId(text, sizeof text));
  }
}
// NOLINTEND(clang-analyzer-deadcode.DeadStores)

void Register(const char* name, void (*function)(benchmark::State&)) {
  benchmark::RegisterBenchmark(name, function)
      ->Repetitions(7)
      ->MinTime(0.1)
      ->UseRealTime()
      ->ReportAggregatesOnly();
}

/// Whether every call that is measured succeeds: failing ones would be measured as well.
bool DevicesAreThere() {
  UartConfigRecord config;
  z__UART_InitConfig(&config, UART_CONFIG_VERSION);
  char text[129];
  int bare_ready = 0;
  bool ready = false;
  return close(z__UART_Open(kPort, &config)) == 0 && close(BareUartOpen(kPortPath)) == 0 &&
         Networking_IsNetworkingReady(&ready) == 0 && BareIsNetworkingReady(&bare_ready) == 0 &&
         Manufacturing_GetDeviceId(text, sizeof text) > 0 && BareGetDeviceId(text) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv) || !DevicesAreThere()) {
    return 1;
  }
  Register("bare port", BareOpen);
  Register("z__UART_Open", LibraryOpen);
  Register("bare readiness", BareReady);
  Register("Networking_IsNetworkingReady", LibraryReady);
  Register("bare identifier", BareId);
  Register("Manufacturing_GetDeviceId", LibraryId);
  OverheadReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintOverhead("z__UART_Open", "bare port");
  reporter.PrintOverhead("Networking_IsNetworkingReady", "bare readiness");
  reporter.PrintOverhead("Manufacturing_GetDeviceId", "bare identifier");
  return 0;
}
