// SPDX-License-Identifier: Apache-2.0
#include "overhead_reporter.h"

#include <cstdio>

void OverheadReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.aggregate_name == "median") {
      median_nanoseconds_[run.run_name.function_name] = run.GetAdjustedCPUTime();
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
