#!/usr/bin/env bash
# The main job: installs what is missing, builds, and starts tessarine-sim,
# a simulated receiver that runs the bridge, on its built-in scenario.
# Further arguments go to tessarine-sim (for example --socket-dir DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset default
cmake --build --preset default
exec build/default/sim/tessarine-sim "$@"
