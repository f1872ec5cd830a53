#!/usr/bin/env bash
# The sanitizer runs: every test under AddressSanitizer and
# UndefinedBehaviorSanitizer (the attack group, label attack, among them),
# the concurrency tests under ThreadSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
cmake --preset asan
cmake --build --preset asan
ctest --preset asan

export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
cmake --preset tsan
cmake --build --preset tsan --target concurrency_tests
ctest --preset tsan -L concurrency
