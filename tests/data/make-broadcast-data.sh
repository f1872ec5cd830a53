#!/usr/bin/env bash
# Recipe of the broadcast test streams in this folder. Re-running it makes
# them again (byte-identical with the same ffmpeg and libdvbpsi versions).
#
# 1. ffmpeg muxes three seconds of two test patterns and two tones as two
#    services (101 and 102, video + audio each) with PAT, PMT and SDT, at a
#    constant 1 Mbit/s so that null packets leave room for more tables.
# 2. tools/ts-si-generator writes a NIT (network name, service list,
#    terrestrial delivery) and EIT present/following and schedule (short and
#    extended event, content, parental rating) with libdvbpsi's writers into
#    the null packets: NIT every 2 s, EIT p/f every 0.5 s, schedule 1.5 s.
#    broadcast.ts keeps version 0; broadcast-version.ts moves the EIT p/f and
#    the NIT to version 1 at 1.5 s. Each .tsv manifest lists what was written.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$(cd "$here/../.." && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

c++ -std=c++17 -O1 "$root/tools/ts-si-generator/main.cpp" -o "$work/ts-si-generator" \
  $(pkg-config --cflags --libs libdvbpsi)

ffmpeg -hide_banner -loglevel error -y -bitexact \
  -f lavfi -i "testsrc=size=176x144:rate=25:duration=3" \
  -f lavfi -i "smptebars=size=176x144:rate=25:duration=3" \
  -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=3" \
  -f lavfi -i "sine=frequency=880:sample_rate=48000:duration=3" \
  -map 0:v -map 2:a -map 1:v -map 3:a \
  -c:v mpeg2video -b:v 150k -maxrate 150k -bufsize 300k -g 12 -c:a mp2 -b:a 64k \
  -metadata:s:a:0 language=eng -metadata:s:a:1 language=deu \
  -program "title=Tessarine One:program_num=101:st=0:st=1" \
  -program "title=Tessarine Two:program_num=102:st=2:st=3" \
  -metadata:p:0 "service_provider=Test Provider A" -metadata:p:1 "service_provider=Test Provider B" \
  -mpegts_original_network_id 0x2001 -mpegts_transport_stream_id 0x0421 \
  -mpegts_pmt_start_pid 0x100 -mpegts_start_pid 0x200 \
  -muxrate 1000000 -sdt_period 0.5 -pat_period 0.1 -f mpegts "$work/base.ts"

common=(--in "$work/base.ts" --muxrate 1000000 --service 101 --service 102
        --tsid 0x0421 --onid 0x2001 --network-id 0x3001)
"$work/ts-si-generator" "${common[@]}" --out "$here/broadcast.ts" --manifest "$here/broadcast.tsv"
"$work/ts-si-generator" "${common[@]}" --change-at 1.5 \
  --out "$here/broadcast-version.ts" --manifest "$here/broadcast-version.tsv"
