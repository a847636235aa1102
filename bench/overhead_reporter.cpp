// SPDX-License-Identifier: Apache-2.0
#include "overhead_reporter.h"

#include <cstdio>

void OverheadReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.aggregate_name == "median") {
      // Benchmarks in which another process does part of the work say that they go by the clock.
      const bool by_the_clock = !run.run_name.time_type.empty();
      median_nanoseconds_[run.run_name.function_name] =
          by_the_clock ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
    }
  }
  ConsoleReporter::ReportRuns(runs);
}

void OverheadReporter::PrintOverhead(const std::string& measured, const std::string& bare) const {
  const auto library = median_nanoseconds_.find(measured);
  const auto direct = median_nanoseconds_.find(bare);
  if (library == median_nanoseconds_.end() || direct == median_nanoseconds_.end()) {
    return;
  }
  printf("%s adds %.2f ns to %s: %.2f ns instead of %.2f ns, %.2f times as long\n",
         measured.c_str(), library->second - direct->second, bare.c_str(), library->second,
         direct->second, library->second / direct->second);
}
