#!/usr/bin/env bash
# Throughput of the whole system seen from outside: pelorin-host plays a
# generated file of "$TMC" records all at once and writes JSON Lines to
# /dev/null. Prints records per second beside the time `wc -l` needs to read
# the same file, and the host's peak resident memory.
#
#   bench/host_speed.sh [PELORIN_HOST] [RECORDS]
#
# PELORIN_HOST defaults to the first of build/{bench,default,*}/bin/pelorin-host;
# RECORDS to 1000000.
set -euo pipefail
cd "$(dirname "$0")/.."

host=${1:-}
records=${2:-1000000}
if [ -z "$host" ]; then
  for candidate in build/bench/bin/pelorin-host build/default/bin/pelorin-host build/*/bin/pelorin-host; do
    if [ -x "$candidate" ]; then host=$candidate; break; fi
  done
fi
if [ -z "$host" ] || [ ! -x "$host" ]; then
  echo "host_speed.sh: no pelorin-host found; build one or name it" >&2
  exit 2
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/pelorin-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
events=$work/events

# One record every 100 ms of recording time, each a distinct TMC message.
awk -v n="$records" 'BEGIN {
  t = 1416131460
  for (i = 0; i < n; i++) {
    s = t + int(i / 10)
    printf "%d.%d $TMC timeStamp=%d LTN=1 SID=34 PID=53761 tmcData=0A:1F:%02X:%02X:00\n", s, i % 10, s, int(i / 256) % 256, i % 256
  }
}' > "$events"

now() { date +%s.%N; }
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", b - a }'; }

start=$(now)
wc -l < "$events" > /dev/null
wc_seconds=$(elapsed "$start" "$(now)")

rss_file=$work/rss
start=$(now)
if [ -x /usr/bin/time ]; then
  /usr/bin/time -f "%M" -o "$rss_file" "$host" --batched --json "$events" > /dev/null
else
  python3 - "$host" "$events" "$rss_file" <<'PY'
import resource, subprocess, sys
subprocess.run([sys.argv[1], "--batched", "--json", sys.argv[2]], stdout=subprocess.DEVNULL, check=True)
with open(sys.argv[3], "w") as out:
    out.write("%d\n" % resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
PY
fi
host_seconds=$(elapsed "$start" "$(now)")
peak_kib=$(tail -n 1 "$rss_file")

awk -v n="$records" -v h="$host_seconds" -v w="$wc_seconds" -v m="$peak_kib" -v f="$(stat -c %s "$events")" 'BEGIN {
  printf "records:          %d (%.1f MB)\n", n, f / 1e6
  printf "pelorin-host:     %.3f s  %.0f records/s\n", h, (h > 0 ? n / h : 0)
  printf "wc -l:            %.3f s  %.0f records/s\n", w, (w > 0 ? n / w : 0)
  printf "peak RSS (host):  %d KiB\n", m
}'
