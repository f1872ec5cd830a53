#!/usr/bin/env bash
# The main job: installs what is missing, builds the simulator and the CLI
# (only those: scripts/test.sh builds the rest), and starts tessarine-sim, a
# simulated receiver that runs the bridge, on its built-in scenario.
# Further arguments go to tessarine-sim (for example --socket-dir DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
jobs=$(nproc)
echo "run.sh: building tessarine-sim and tessarine-cli in build/default, $jobs jobs (one per core)" >&2
cmake --preset default >/dev/null
cmake --build --preset default --target tessarine-sim tessarine-cli -j "$jobs"
exec build/default/sim/tessarine-sim "$@"
