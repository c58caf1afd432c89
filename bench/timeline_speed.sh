#!/usr/bin/env bash
# How long pelorin-check takes to draw a large recording with --timeline,
# and how big the picture gets. Generates an events file of realistic
# "$TMC", "$TSL" and "$TOT" lines (several methods, uneven times rising over
# about a week, a few missing "setNewData" files and time stamps that go
# back) in a temporary folder (removed at exit), runs pelorin-check on it
# without and with --timeline, best of three each, and prints the times,
# the extra time the picture costs, peak memory and the SVG size. Exits 1
# when the best run with --timeline takes 3 s of CPU time (user and system)
# or more, or the SVG is 2 MB or more. CPU time rather than wall-clock time,
# because on a shared machine the latter mostly measures the neighbours.
#
# Usage: bench/timeline_speed.sh [path/to/pelorin-check] [LINES]
#   LINES defaults to 1000000.

set -euo pipefail
cd "$(dirname "$0")/.."

check=${1:-}
lines=${2:-1000000}
if [[ -z $check ]]; then
  for candidate in build/bench/bin/pelorin-check build/default/bin/pelorin-check build/*/bin/pelorin-check; do
    if [[ -x $candidate ]]; then check=$candidate; break; fi
  done
fi
if [[ -z $check || ! -x $check ]]; then
  echo "timeline_speed.sh: no pelorin-check found; build one or name it" >&2
  exit 2
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/pelorin-timeline.XXXXXX")
trap 'rm -rf "$work"' EXIT
events=$work/events
svg=$work/timeline.svg

awk -v lines="$lines" 'BEGIN {
  srand(7)
  n = split("$TMC timeStamp=1416131460 LTN=1 SID=34 PID=53761 tmcData=0A:1F:22:3C:00|" \
            "$TMC timeStamp=1416131460 LTN=1 SID=34 PID=53761 tmcData=0B:1F:22:3C:01|" \
            "$TSL serviceType=1 sd_SID=34 sd_LTN=1|$TOT getInventory|$TOT getNewData|" \
            "$TOT setNewSession|$TOT setNewData:tpeg.bin|$TOT setOnlineTrafficDataStatus:1|" \
            "$TOT setTimeoutForFallback:5|$TOT dsiConnectionStateChanged:1", kinds, "|")
  t = 1416131460
  for (i = 0; i < lines; i++) {
    # Mostly dense, now and then a pause of up to a few hours.
    t += (rand() < 0.00001) ? rand() * 20000 : rand() * rand() * 1.2
    back = (i % 100000 == 99999) ? 30 : 0
    printf "%.2f %s\n", t - back, kinds[int(rand() * n) + 1]
  }
}' > "$events"
# No "setNewData" file exists under --root: the problem list fills up.

best() {  # "wall user system peak-KB" of the fastest of three runs of "$@"
  local best_wall="" best_line=""
  for _ in 1 2 3; do
    local line
    line=$( { /usr/bin/time -f "%e %U %S %M" "$@" > /dev/null; } 2>&1 | tail -n 1)
    local wall=${line%% *}
    if [[ -z $best_wall ]] || awk -v a="$wall" -v b="$best_wall" 'BEGIN { exit !(a < b) }'; then
      best_wall=$wall; best_line=$line
    fi
  done
  echo "$best_line"
}

plain=$(best "$check" --root "$work" "$events")
drawn=$(best "$check" --root "$work" --timeline "$svg" "$events")
size=$(wc -c < "$svg")
bytes=$(wc -c < "$events")

awk -v plain="$plain" -v drawn="$drawn" -v size="$size" -v bytes="$bytes" -v lines="$lines" 'BEGIN {
  split(plain, p, " "); split(drawn, d, " ")
  printf "events file:       %.1f MB, %d lines\n", bytes / 1e6, lines
  printf "without timeline:  %6.2f s CPU, %6.2f s wall, peak %d KB\n", p[2] + p[3], p[1], p[4]
  printf "with --timeline:   %6.2f s CPU, %6.2f s wall, peak %d KB\n", d[2] + d[3], d[1], d[4]
  printf "picture costs:     %6.2f s CPU\n", d[2] + d[3] - p[2] - p[3]
  printf "SVG size:          %d bytes (%.2f MB)\n", size, size / 1048576
  exit (d[2] + d[3] < 3 && size < 2 * 1048576) ? 0 : 1
}'
