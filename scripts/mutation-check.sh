#!/usr/bin/env bash
# Plants one fault at a time in a copy of the library, the client and the
# simulator, rebuilds the tests that could see it and prints whether they do.
# Usage: scripts/mutation-check.sh [REF]  (default HEAD; works in build/mutation/)
set -uo pipefail
cd "$(dirname "$0")/.."
ref=${1:-HEAD}
work=$PWD/build/mutation/$(git rev-parse --short "$ref")
[ -d "$work" ] || { mkdir -p "$work" && git archive "$ref" | tar -x -C "$work"; }  # kept: a rerun builds little
# ccache, where installed, makes the many small rebuilds cheaper; without it
# the configure step would fail.
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CMAKE_C_COMPILER_LAUNCHER=ccache
fi
cmake -S "$work" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null || exit 1
lib='^(hub|binding|demux|transport|client)_.*test$'
cli='^((client|tools)_.*|binding_requesttable)_test$'
simt='^(sim_.*test|python_tests)$'
# file | sed expression | tests that could catch it
faults=$(cat <<'LIST'
hub/MediaRequests.cpp|s/argument(record, MEDIA_FIRST_OFFSET)/argument(record, MEDIA_SECOND_OFFSET)/|LIB
hub/MediaRequests.cpp|s/\[MEDIA_FLAG_OFFSET\] != 0/[MEDIA_FLAG_OFFSET] == 1/|LIB
hub/MediaRequests.cpp|/record.put(MEDIA_HANDLE_OFFSET, handle);/d|LIB
hub/MediaRequests.cpp|s/hub.setMediaBassLevel(/hub.setMediaTrebleLevel(/|LIB
hub/VideoRequests.cpp|s/code <= VIDEO_GET_RATE_16/code < VIDEO_GET_RATE_16/|LIB
hub/PropertyRequests.cpp|s/writeTextField(record, SECOND_TEXT_OFFSET,/writeTextField(record, FIRST_TEXT_OFFSET,/|LIB
hub/PropertyRequests.cpp|s/listener.removeSystemProperty(name);//|LIB
hub/FanOut.h|s/if (visit(\*listener)) return;/visit(*listener);/|LIB
hub/SiRequests.cpp|s/(length > 0 \&\&/(length > 1 \&\&/|LIB
hub/TunerRequests.cpp|s/record.code == TUNER_CURRENT_TS_ID/record.code != TUNER_CURRENT_TS_ID/|LIB
transport/ChunkedText.cpp|s/text.size() <= CHUNK_SIZE/text.size() < CHUNK_SIZE/|LIB
transport/ListEncoder.h|s/if (!batch.add(record)) return;/batch.add(record);/|LIB
binding/MiddlewareIpc.cpp|s/code > tessarine::VIDEO_GET_RATE_16/code >= tessarine::VIDEO_GET_RATE_16/|LIB
binding/MiddlewareIpc.cpp|s/return video->getLanguage5();/return video->getLanguage3();/|LIB
binding/MiddlewareIpc.cpp|s/video->setMediaMute(handle, wireBool(mute))/video->setMediaMute(handle, false)/|LIB
binding/MiddlewareIpc.cpp|s/set_xor_filter(value, first, second, third)/set_xor_filter(value, first, third, second)/|LIB
binding/RecordConverter.cpp|s/stream.value4 <= 3/stream.value4 <= 4/|LIB
demux/IpcDemuxServer.cpp|s/if (length > MAX_FILTER_LENGTH) return false;//|LIB
demux/IpcDemuxServer.cpp|s/case DEMUX_CLEAR_XOR_FILTER: listener->clear_xor_filter(); break;/case DEMUX_CLEAR_XOR_FILTER: break;/|LIB
client/src/ControlClientMedia.cpp|s/locator.size() > MAX_LOCATOR_LENGTH/locator.size() >= MAX_LOCATOR_LENGTH/|CLI
client/src/ControlClientMedia.cpp|s/flag ? 1 : 0/flag ? 0 : 1/|CLI
client/src/ControlClientMedia.cpp|s/(MEDIA_SECOND_OFFSET, second)/(MEDIA_SECOND_OFFSET, first)/|CLI
client/src/ControlClientMedia.cpp|s/return detail::rectangleAt(\*answer, MEDIA_BOUNDS_OFFSET);/return detail::rectangleAt(*answer, MEDIA_HANDLE_OFFSET);/|CLI
client/src/Expectation.cpp|s/e.code = answer.item;/e.code = code;/|CLI
client/src/StreamReader.cpp|s/if (got == 0) return IoStatus::Closed;//|CLI
client/src/DemuxClient.cpp|s/> options.maxSectionLength/>= options.maxSectionLength/|CLI
sim/SimVideoFacade.cpp|s/return settings_.language5;/return settings_.language3;/|SIM
sim/SimVideoFacade.cpp|/if (listeners.empty()) return Delivery::NoListener;/d|SIM
sim/SimVideoFacade.cpp|s/player.position + elapsed/player.position/|SIM
sim/SimPropertyFacade.cpp|/properties_.remove_if/d|SIM
sim/SimTunerFacade.cpp|s/return settings_.currentTransportStreamId;/return settings_.currentTransportStreamId + 1;/|SIM
LIST
)
# A restored file is touched: its object must not stay the faulty one.
cut -d'|' -f1 <<<"$faults" | sort -u | while read -r f; do
  [ -f "$work/$f.orig" ] && mv "$work/$f.orig" "$work/$f"
  touch "$work/$f"
done
cmake --build "$work/build" -j2 --target $(cd "$work/build" && ctest -N | awk '/Test *#/ {print $3}' | grep -E "$lib|$cli|$simt" | grep -v install_test | sed 's/^python_tests$/tessarine_python/') tessarine-sim >"$work/build.log" 2>&1 || { echo "the unchanged tree does not build"; exit 1; }
(cd "$work/build" && ctest -j2 -R "$lib|$cli|$simt" -E '_attack$|install_consumer' >"$work/ctest.log" 2>&1) || { echo "unchanged tree fails:"; grep -E 'Failed|Timeout' "$work/ctest.log"; exit 1; }
caught=0 missed=0 n=0
while IFS='|' read -r file expr set; do
  n=$((n + 1))
  case $set in LIB) re=$lib ;; CLI) re=$cli ;; SIM) re=$simt ;; esac
  cp "$work/$file" "$work/$file.orig"
  sed -i "$expr" "$work/$file"
  if cmp -s "$work/$file" "$work/$file.orig"; then echo "fault $n: NOT PLANTED $file $expr"; mv "$work/$file.orig" "$work/$file"; touch "$work/$file"; continue; fi
  targets=$(cd "$work/build" && ctest -N -R "$re" | awk '/Test *#/ {print $3}' | grep -v install_test | sed 's/^python_tests$/tessarine_python/')
  if ! cmake --build "$work/build" -j2 --target $targets tessarine-sim >"$work/build.log" 2>&1; then
    result=caught-by-build
  elif (cd "$work/build" && timeout 900 ctest -j2 -R "$re" -E '_attack$|install_consumer' >"$work/ctest.log" 2>&1); then
    result=MISSED
  else
    result=caught
  fi
  [ "$result" = MISSED ] && missed=$((missed + 1)) || caught=$((caught + 1))
  [ "$result" = caught ] && result="caught by $(grep -oE '[0-9]+ - [a-z_]+' "$work/ctest.log" | cut -d' ' -f3 | tr '\n' ' ')"
  echo "fault $n: $result  $file  $expr"
  mv "$work/$file.orig" "$work/$file" && touch "$work/$file"
done <<<"$faults"
echo "caught $caught, missed $missed"
