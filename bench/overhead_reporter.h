// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BENCH_OVERHEAD_REPORTER_H
#define KESTREL_BENCH_OVERHEAD_REPORTER_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/// Prints the usual table and remembers the medians, so that what one benchmark adds to another
/// can be printed at the end.
class OverheadReporter : public benchmark::ConsoleReporter {
 public:
  OverheadReporter() : ConsoleReporter(OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override;

  /// Prints by how many nanoseconds and how many times `measured` takes longer than `bare`.
  void PrintOverhead(const std::string& measured, const std::string& bare) const;

 private:
  std::map<std::string, double> median_nanoseconds_;
};

#endif  // KESTREL_BENCH_OVERHEAD_REPORTER_H
