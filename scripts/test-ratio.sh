#!/usr/bin/env bash
# Prints test lines against the other code's lines: C++, CMake and Python
# files tracked by git, blank and comment lines excluded. Tests are tests/
# and python/tests/; the aim is a quarter to a third of the code.
set -euo pipefail
cd "$(dirname "$0")/.."
files=$(git ls-files | grep -E '(\.(cpp|cc|h|hpp|c|py|cmake)|CMakeLists\.txt)$')
count() { tr '\n' '\0' | xargs -0 -r cat | grep -cvE '^\s*($|//|#|\*|/\*)' || true; }
tests=$(grep -E '^(tests|python/tests)/' <<<"$files" | count)
code=$(grep -vE '^(tests|python/tests)/' <<<"$files" | count)
awk -v t="$tests" -v c="$code" 'BEGIN { printf "tests %d, code %d, ratio %.2f\n", t, c, t / c }'
