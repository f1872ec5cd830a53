#!/usr/bin/env bash
# Builds the benchmarks with optimisation, runs every case with its raw
# baseline, and regenerates docs/PERFORMANCE.md (figures, machine, plot)
# from Google Benchmark's JSON. Takes a few minutes.
#   BENCH_REPETITIONS  repetitions of each case, interleaved at random (default 3)
#   BENCH_MIN_TIME     seconds per repetition of each case (default 0.5)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset bench >/dev/null
cmake --build --preset bench --target tessarine_bench -- -j2
json=build/bench/benchmark.json
build/bench/bench/tessarine_bench \
  --benchmark_repetitions="${BENCH_REPETITIONS:-3}" \
  --benchmark_enable_random_interleaving=true \
  --benchmark_min_time="${BENCH_MIN_TIME:-0.5}" \
  --benchmark_report_aggregates_only=true \
  --benchmark_out="$json" --benchmark_out_format=json
# Debian's interpreter, which has python3-matplotlib.
/usr/bin/python3 bench/report.py "$json" docs/PERFORMANCE.md docs/performance-lists.png
cp "$json" docs/performance.json
echo "wrote docs/PERFORMANCE.md, docs/performance-lists.png and docs/performance.json"
