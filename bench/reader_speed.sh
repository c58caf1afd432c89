#!/usr/bin/env bash
# Compares how fast RecordReader reads an events file with how fast `wc -l`
# counts its lines. Generates an events file of realistic "$TMC", "$TSL" and
# "$TOT" lines in a temporary folder (removed at exit), reads it whole
# through RecordReader::ReadRecord (RecordReaderBench --read-file) and with
# `wc -l`, best of three each on a warm page cache, and prints both speeds
# and their ratio. Exits 1 when the reader is slower than a tenth of wc -l.
#
# Usage: bench/reader_speed.sh [path/to/RecordReaderBench]
#   READER_SPEED_MB  size of the events file in MB (default 128, at least 100)

set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
bench=${1:-}
if [[ -z $bench ]]; then
  for candidate in "$root"/build/bench/bin/RecordReaderBench "$root"/build/*/bin/RecordReaderBench; do
    if [[ -x $candidate ]]; then bench=$candidate; break; fi
  done
fi
if [[ -z $bench || ! -x $bench ]]; then
  echo "RecordReaderBench not found; build it (cmake --preset bench && cmake --build build/bench)" \
       "or pass its path" >&2
  exit 2
fi

size_mb=${READER_SPEED_MB:-128}
(( size_mb >= 100 )) || size_mb=100

tmp=$(mktemp -d "${TMPDIR:-/tmp}/pelorin-speed-XXXXXX")
trap 'rm -rf "$tmp"' EXIT
events=$tmp/events

# Mostly TMC messages, some service lists and online traffic calls, times
# rising by a quarter second with a fraction in every stamp.
awk -v limit=$(( size_mb * 1000000 )) 'BEGIN {
  total = 0
  for (i = 0; total < limit; i++) {
    t = 1416131460 + int(i / 4); f = (i * 37) % 100
    if (i % 20 == 7)
      line = sprintf("%d.%02d $TSL serviceType=1 sd_SID=%d sd_LTCC=13 sd_LTN=1 sd_PID=53761 sd_SPN=RADIO1 monitorState=1", t, f, 30 + i % 9)
    else if (i % 20 == 13)
      line = sprintf("%d.%02d $TOT setNewData:tpeg_%06d.bin", t, f, i)
    else
      line = sprintf("%d.%02d $TMC timeStamp=%d LTN=1 SID=34 PID=53761 tmcData=%02X:%02X:%02X:3C:%02X", t, f, t, i % 256, int(i / 8) % 256, int(i / 32) % 256, i % 7)
    print line
    total += length(line) + 1
  }
}' > "$events"

bytes=$(wc -c < "$events")
lines=$(wc -l < "$events")  # also warms the page cache

best_ns=0
for _ in 1 2 3; do
  start=$(date +%s%N)
  wc -l "$events" > /dev/null
  stop=$(date +%s%N)
  elapsed=$(( stop - start ))
  if (( best_ns == 0 || elapsed < best_ns )); then best_ns=$elapsed; fi
done

reader_line=$("$bench" --read-file="$events" --passes=3)
reader_mbps=$(sed -n 's/.*mb_per_s=\([0-9.]*\).*/\1/p' <<< "$reader_line")
records=$(sed -n 's/.*records=\([0-9]*\).*/\1/p' <<< "$reader_line")
if [[ $records != "$lines" ]]; then
  echo "reader saw $records records, wc -l $lines lines" >&2
  exit 1
fi

awk -v bytes="$bytes" -v lines="$lines" -v ns="$best_ns" -v reader="$reader_mbps" 'BEGIN {
  wc = bytes / 1e6 / (ns / 1e9)
  ratio = reader / wc
  printf "events file:  %.1f MB, %d lines\n", bytes / 1e6, lines
  printf "RecordReader: %8.1f MB/s\n", reader
  printf "wc -l:        %8.1f MB/s\n", wc
  printf "ratio:        %8.3f (reader / wc -l; at least 0.100 required)\n", ratio
  exit ratio >= 0.1 ? 0 : 1
}'
