#!/usr/bin/env bash
# Builds the bridge (installing what is missing).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset default
cmake --build --preset default
