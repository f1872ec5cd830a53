#pragma once

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

namespace tessarine {
namespace bench {

// What one benchmark run measures besides Google Benchmark's own clock:
// the process's CPU time (user + system, every thread: the client, the
// bridge and the raw peer all live in this process) and, when asked, the
// wall time of each operation for its percentiles.
class Measurement {
public:
    using Clock = std::chrono::steady_clock;

    explicit Measurement(benchmark::State& state, bool perOperation = false) : state_(state) {
        if (perOperation) samples_.reserve(static_cast<std::size_t>(std::min<benchmark::IterationCount>(state.max_iterations, 1 << 22)));
        cpuStart_ = cpuSeconds();
    }

    // Times one operation.
    template <typename Operation>
    void time(Operation&& operation) {
        const auto start = Clock::now();
        operation();
        samples_.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }

    // Sets the counters: CPU microseconds per `unit` (`units` of them in the
    // whole run) and, with timed operations, their p50 and p99 in microseconds.
    void finish(double units, const char* unit = "op") {
        const double cpu = cpuSeconds() - cpuStart_;
        if (units > 0) state_.counters[std::string("cpu_us_per_") + unit] = cpu * 1e6 / units;
        if (samples_.empty()) return;
        state_.counters["p50_us"] = percentile(0.50);
        state_.counters["p99_us"] = percentile(0.99);
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
    std::vector<double> samples_;
    double cpuStart_ = 0;
};

}  // namespace bench
}  // namespace tessarine
