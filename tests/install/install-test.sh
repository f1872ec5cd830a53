#!/usr/bin/env bash
# Installs the build into a fresh prefix, as a package would be, then uses it
# as its users do: a middleware builds examples/minimal-host against it (CMake
# package and pkg-config), and an application developer runs the installed
# tools with a clean environment against that host.
# Arguments: BUILD_DIR SOURCE_DIR WORK_DIR CXX_COMPILER CXX_FLAGS GENERATOR
set -euo pipefail
build=$1 source=$2 work=$3 cxx=$4 flags=$5 generator=$6
rm -rf "$work"
prefix=$work/prefix
sockets=$(mktemp -d -t tessarine-install-XXXXXX)  # short: a socket path must fit 107 characters
host=""
cleanup() { [ -n "$host" ] && kill "$host" 2>/dev/null; rm -rf "$sockets" "$work"; }
trap cleanup EXIT
fail() { echo "install test: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" >/dev/null
for f in include/MiddlewareIpc.h include/tessarine/IpcServerManager.h include/middlewarefacade/VideoFacade.h \
         include/ipcutil/Rectangle_t.h bin/tessarine-cli bin/tessarine-sim; do
  [ -e "$prefix/$f" ] || fail "not installed: $f"
done
[ -n "$(find "$prefix" -name libtessarine.so.1)" ] || fail "no libtessarine.so.1"
if command -v help2man >/dev/null; then
  [ -s "$prefix/share/man/man1/tessarine-cli.1" ] && [ -s "$prefix/share/man/man1/tessarine-sim.1" ] ||
    fail "manual pages missing"
fi

# The installed programs find their libraries with nothing in the environment.
clean=(env -i "PATH=/usr/bin:/bin")
"${clean[@]}" "$prefix/bin/tessarine-sim" --version | grep -q '^tessarine-sim [0-9]' || fail "tessarine-sim --version"
"${clean[@]}" "$prefix/bin/tessarine-cli" --version | grep -q '^tessarine-cli [0-9]' || fail "tessarine-cli --version"

for variant in OFF ON; do
  pc_dir=$(dirname "$(find "$prefix" -name tessarine.pc | head -1)")
  PKG_CONFIG_PATH=$pc_dir cmake -S "$source/examples/minimal-host" -B "$work/host-$variant" -G "$generator" \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_PREFIX_PATH="$prefix" \
    -DUSE_PKG_CONFIG="$variant" >/dev/null
  cmake --build "$work/host-$variant" >/dev/null
done

# The host serves; the installed client asks it through the variable alone.
coproc HOST { exec "$work/host-OFF/minimal-host" "$sockets"; }
host=$HOST_PID
read -r -t 20 line <&"${HOST[0]}" && [ "$line" = serving ] || fail "the host did not start"
answer=$("${clean[@]}" "TESSARINE_SOCKET_DIR=$sockets" "$prefix/bin/tessarine-cli" --json version 1)
grep -Eq '"result": ?1' <<<"$answer" || fail "unexpected answer: $answer"
kill -TERM "$host"
wait "$host" || fail "the host did not stop cleanly"
host=""
echo "install test: installed, built the minimal host twice, ran the installed tools against it"
