#!/usr/bin/env bash
# Installs what is missing, then configures, builds and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset ci
cmake --build --preset ci
ctest --preset ci
