// SPDX-License-Identifier: Apache-2.0
// What GPIO_SetValue and GPIO_GetValue add to the ioctl that they make. The ioctl returns at once,
// so that the kernel's share does not hide the library's.
#include <benchmark/benchmark.h>
#include <kestrel/gpio.h>
#include <linux/gpio.h>
#include <sys/ioctl.h>

#include "ioctl_stand_in.h"
#include "overhead_reporter.h"

namespace {

// Never reaches a kernel.
constexpr int kLine = 5;

// NOLINTBEGIN(clang-analyzer-deadcode.DeadStores): the loop variable only counts iterations
void BareSet(benchmark::State& state) {
  gpiohandle_data data{};
  for (auto _ : state) {
    data.values[0] = 1;
    benchmark::DoNotOptimize(ioctl(kLine, GPIOHANDLE_SET_LINE_VALUES_IOCTL, &data));
  }
}

void BareGet(benchmark::State& state) {
  gpiohandle_data data{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(ioctl(kLine, GPIOHANDLE_GET_LINE_VALUES_IOCTL, &data));
    benchmark::DoNotOptimize(data.values[0]);
  }
}

void SetValue(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(GPIO_SetValue(kLine, GpioLevel_High));
  }
}

void GetValue(benchmark::State& state) {
  GpioLevel level = GpioLevel_Low;
  for (auto _ : state) {
    benchmark::DoNotOptimize(GPIO_GetValue(kLine, &level));
    benchmark::DoNotOptimize(level);
  }
}
// NOLINTEND(clang-analyzer-deadcode.DeadStores)

void Register(const char* name, void (*function)(benchmark::State&)) {
  benchmark::RegisterBenchmark(name, function)->Repetitions(15)->ReportAggregatesOnly();
}

/// Whether the library's ioctl is the program's: else the kernel would be measured.
bool StandInIsUsed() {
  GPIO_SetValue(kLine, GpioLevel_High);
  return g_ioctl_calls == 1;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv) || !StandInIsUsed()) {
    return 1;
  }
  Register("ioctl(SET)", BareSet);
  Register("GPIO_SetValue", SetValue);
  Register("ioctl(GET)", BareGet);
  Register("GPIO_GetValue", GetValue);
  OverheadReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintOverhead("GPIO_SetValue", "ioctl(SET)");
  reporter.PrintOverhead("GPIO_GetValue", "ioctl(GET)");
  return 0;
}
