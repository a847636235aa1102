// SPDX-License-Identifier: Apache-2.0
// How long it takes to load the library into a program that has the C++ library already, and to
// unload it, next to a shared object that has nothing in it.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include "overhead_reporter.h"

namespace {

void Load(benchmark::State& state, const char* path) {
  for (auto _ : state) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
      state.SkipWithError("the library cannot be loaded");
      return;
    }
    dlclose(library);
  }
}

void Register(const char* name, const char* path) {
  benchmark::RegisterBenchmark(name, Load, path)->Repetitions(15)->ReportAggregatesOnly();
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  Register("empty object", EMPTY_LIBRARY);
  Register("libkestrel", KESTREL_LIBRARY);
  OverheadReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintOverhead("libkestrel", "empty object");
  return 0;
}
