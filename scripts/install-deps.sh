#!/usr/bin/env bash
# Installs, with apt-get, whatever the build and the tests need and this
# machine lacks. Does nothing when everything is present.
set -euo pipefail

packages=(
  g++ clang cmake ninja-build pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  nlohmann-json3-dev libcli11-dev libedit-dev help2man
  libdvbpsi-dev dvbpsi-utils libbitstream-dev ffmpeg
  python3-matplotlib python3-dev pybind11-dev python3-pytest
  tshark
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
$sudo apt-get update -qq
# tshark's package asks whether non-root users may capture; the captures here are files.
echo "wireshark-common wireshark-common/install-setuid boolean false" | $sudo debconf-set-selections
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
