#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, ASan+UBSan) and runs each for a while:
# FUZZ_SECONDS each (default 15), starting from the checked-in seeds in
# fuzz/corpus/NAME. New inputs go to build/fuzz/corpus/NAME, findings to
# build/fuzz/findings; copy a finding into fuzz/corpus/NAME once it is fixed,
# and ctest replays it from then on.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
seconds="${FUZZ_SECONDS:-15}"
targets=(dispatcher_fuzz demux_fuzz client_fuzz scenario_fuzz ts_fuzz)
cmake --preset fuzz
cmake --build --preset fuzz -j2 --target "${targets[@]}"
mkdir -p build/fuzz/findings
for name in "${targets[@]}"; do
  corpus="build/fuzz/corpus/$name"
  mkdir -p "$corpus"
  echo "fuzzing $name for ${seconds}s"
  # stderr of the bridge itself (unknown-type lines, failed sends) is expected noise.
  "build/fuzz/fuzz/$name" -close_fd_mask=2 -max_total_time="$seconds" -artifact_prefix=build/fuzz/findings/ \
    "$corpus" "fuzz/corpus/$name"
done
