#pragma once

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "bench/ThreadPlacement.h"

namespace tessarine {
namespace bench {

// What one benchmark run measures besides Google Benchmark's own clock:
// the process's CPU time (user + system, every thread: the client, the
// bridge and the raw peer all live in this process) and, when asked, the
// wall time of each operation for its percentiles.
class Measurement {
public:
    using Clock = std::chrono::steady_clock;

    // Construct it once the case's threads have started. `prefix` starts
    // the counters' names, for a case that holds two measurements.
    explicit Measurement(benchmark::State& state, bool perOperation = false, std::string prefix = "")
        : state_(state), prefix_(std::move(prefix)) {
        if (perOperation) samples_.reserve(static_cast<std::size_t>(std::min<benchmark::IterationCount>(state.max_iterations, 1 << 22)));
        ThreadPlacement::settleCaller();  // the case's threads have started
        cpuStart_ = cpuSeconds();
    }

    // Times one operation.
    template <typename Operation>
    void time(Operation&& operation) {
        const auto start = Clock::now();
        operation();
        samples_.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }

    // Times `count` operations in a row as one turn, and counts the CPU time
    // of the turns alone: for two measurements that take turns in one case.
    template <typename Operation>
    void timeTurn(int count, Operation&& operation) {
        const double start = cpuSeconds();
        for (int i = 0; i < count; ++i) time(operation);
        turnsCpu_ += cpuSeconds() - start;
        inTurns_ = true;
    }

    // Sets the counters: CPU microseconds per `unit` (`units` of them in the
    // whole run, or in its turns) and, with timed operations, their p50 and
    // p99 in microseconds.
    void finish(double units, const char* unit = "op") {
        const double cpu = inTurns_ ? turnsCpu_ : cpuSeconds() - cpuStart_;
        if (units > 0) state_.counters[prefix_ + "cpu_us_per_" + unit] = cpu * 1e6 / units;
        if (samples_.empty()) return;
        state_.counters[prefix_ + "p50_us"] = percentile(0.50);
        state_.counters[prefix_ + "p99_us"] = percentile(0.99);
    }

    static double cpuSeconds() {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec * 1e-6; };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }

private:
    double percentile(double p) {
        const auto index = static_cast<std::size_t>(p * static_cast<double>(samples_.size() - 1));
        std::nth_element(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(index), samples_.end());
        return samples_[index];
    }

    benchmark::State& state_;
    std::string prefix_;
    std::vector<double> samples_;
    double cpuStart_ = 0;
    double turnsCpu_ = 0;
    bool inTurns_ = false;
};

}  // namespace bench
}  // namespace tessarine
