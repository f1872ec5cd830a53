// The bridge measured against this machine's raw sockets, every case with
// its baseline in the same run: see docs/PERFORMANCE.md and scripts/bench.sh.
#include <benchmark/benchmark.h>

#include <cstring>

#include "bench/BridgeHost.h"
#include "bench/Cases.h"

int main(int argc, char** argv) {
    // --smoke: one iteration of each case on small workloads (the ctest check).
    bool smoke = false;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--smoke") == 0) {
            smoke = true;
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    tessarine::bench::registerControlCases(smoke);
    tessarine::bench::registerDemuxCases(smoke);
    tessarine::bench::registerSimulatorCases(smoke);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    tessarine::bench::BridgeHost::shutdown();
    return 0;
}
