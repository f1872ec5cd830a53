#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, ASan+UBSan) and runs each for a while:
# FUZZ_SECONDS each (default 15). Findings are written to build/fuzz/findings.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
seconds="${FUZZ_SECONDS:-15}"
cmake --preset fuzz
cmake --build --preset fuzz
mkdir -p build/fuzz/findings
for target in build/fuzz/fuzz/*_fuzz; do
  name=$(basename "$target")
  corpus="build/fuzz/corpus/$name"
  mkdir -p "$corpus"
  echo "fuzzing $name for ${seconds}s"
  # stderr of the bridge itself (unknown-type lines, failed sends) is expected noise.
  "$target" -close_fd_mask=2 -max_total_time="$seconds" -artifact_prefix=build/fuzz/findings/ "$corpus"
done
