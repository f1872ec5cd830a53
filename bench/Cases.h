#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

// The benchmark cases, registered by area. `smoke` runs each case once on
// a small workload: a check that it still runs, with no meaningful figure.
namespace tessarine {
namespace bench {

// Registers one case, timed by the wall clock (the work runs on several
// threads); in a smoke run, one iteration.
template <typename Function, typename... Arguments>
benchmark::internal::Benchmark* registerCase(bool smoke, const std::string& name, Function&& function,
                                             Arguments&&... arguments) {
    auto* bench = benchmark::RegisterBenchmark(name.c_str(), std::forward<Function>(function),
                                               std::forward<Arguments>(arguments)...);
    bench->UseRealTime()->Unit(benchmark::kMicrosecond);
    if (smoke) bench->Iterations(1);
    return bench;
}

void registerControlCases(bool smoke);
void registerDemuxCases(bool smoke);
void registerSimulatorCases(bool smoke);

}  // namespace bench
}  // namespace tessarine
