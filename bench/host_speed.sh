#!/usr/bin/env bash
# Throughput of the whole system seen from outside: pelorin-host plays a
# generated file of "$TMC" records all at once and writes JSON Lines to
# /dev/null, and pelorin-check (found beside pelorin-host) checks the same
# file. Prints records per second and MB per second beside the time `wc -l`
# needs to read the file, and the host's peak resident memory. Each program
# runs five times on a warm page cache, taking turns with the baseline; the
# best run counts (on a shared machine the slowest runs say little).
#
#   bench/host_speed.sh [PELORIN_HOST] [RECORDS] [BASELINE_BIN]
#
# PELORIN_HOST defaults to the first of build/{bench,default,*}/bin/pelorin-host;
# RECORDS to 1000000. BASELINE_BIN, a folder with an older build's
# pelorin-host and pelorin-check, runs those too, taking turns with the
# programs measured, and prints how much faster these are.
set -euo pipefail
cd "$(dirname "$0")/.."

host=${1:-}
records=${2:-1000000}
baseline=${3:-}
if [ -z "$host" ]; then
  for candidate in build/bench/bin/pelorin-host build/default/bin/pelorin-host build/*/bin/pelorin-host; do
    if [ -x "$candidate" ]; then host=$candidate; break; fi
  done
fi
if [ -z "$host" ] || [ ! -x "$host" ]; then
  echo "host_speed.sh: no pelorin-host found; build one or name it" >&2
  exit 2
fi
check=$(dirname "$host")/pelorin-check
if [ -n "$baseline" ] && [ ! -x "$baseline/pelorin-host" ]; then
  echo "host_speed.sh: no pelorin-host in $baseline" >&2
  exit 2
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/pelorin-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
events=$work/events

awk -v n="$records" -f bench/tmc_records.awk > "$events"
bytes=$(stat -c %s "$events")

now() { date +%s.%N; }
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", b - a }'; }
smaller() { awk -v a="$1" -v b="$2" 'BEGIN { print (a == "" || b < a) ? b : a }'; }

# Seconds of one run of the command; its output goes nowhere.
seconds_of() {
  local start
  start=$(now)
  "$@" > /dev/null
  elapsed "$start" "$(now)"
}

# The host once more, for its peak resident memory.
peak_kib() {
  local rss_file=$work/rss
  if [ -x /usr/bin/time ]; then
    /usr/bin/time -f "%M" -o "$rss_file" "$1" --batched --json "$events" > /dev/null
  else
    python3 - "$1" "$events" "$rss_file" <<'PY'
import resource, subprocess, sys
subprocess.run([sys.argv[1], "--batched", "--json", sys.argv[2]], stdout=subprocess.DEVNULL, check=True)
with open(sys.argv[3], "w") as out:
    out.write("%d\n" % resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
PY
  fi
  tail -n 1 "$rss_file"
}

wc_s="" host_s="" check_s="" old_host_s="" old_check_s=""
for _ in 1 2 3 4 5; do
  wc_s=$(smaller "$wc_s" "$(seconds_of wc -l "$events")")
  host_s=$(smaller "$host_s" "$(seconds_of "$host" --batched --json "$events")")
  if [ -x "$check" ]; then check_s=$(smaller "$check_s" "$(seconds_of "$check" "$events")"); fi
  if [ -n "$baseline" ]; then
    old_host_s=$(smaller "$old_host_s" "$(seconds_of "$baseline/pelorin-host" --batched --json "$events")")
    old_check_s=$(smaller "$old_check_s" "$(seconds_of "$baseline/pelorin-check" "$events")")
  fi
done

report() {  # label seconds
  awk -v label="$1" -v s="$2" -v n="$records" -v f="$bytes" 'BEGIN {
    if (s == "") exit
    printf "%-20s %.3f s  %9.0f records/s  %7.1f MB/s\n", label ":", s, (s > 0 ? n / s : 0), (s > 0 ? f / 1e6 / s : 0)
  }'
}
ratio() {  # label old new
  awk -v label="$1" -v a="$2" -v b="$3" 'BEGIN { if (a != "" && b > 0) printf "%-20s %.2f times as fast\n", label ":", a / b }'
}

printf "records:             %d (%.1f MB)\n" "$records" "$(awk -v f="$bytes" 'BEGIN { print f / 1e6 }')"
report "pelorin-host" "$host_s"
report "pelorin-check" "$check_s"
report "wc -l" "$wc_s"
printf "peak RSS (host):     %d KiB\n" "$(peak_kib "$host")"
if [ -n "$baseline" ]; then
  report "baseline host" "$old_host_s"
  report "baseline check" "$old_check_s"
  printf "peak RSS (baseline): %d KiB\n" "$(peak_kib "$baseline/pelorin-host")"
  ratio "host speed-up" "$old_host_s" "$host_s"
  ratio "check speed-up" "$old_check_s" "$check_s"
fi
