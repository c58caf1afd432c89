#!/usr/bin/env bash
# How fast pelorin-edit cuts a whole recording against `cp` of the same
# file: a generated file of 85-byte "$TMC" records (1 000 000 by default,
# 85 MB), written to a file in the same folder, best of five runs each on a
# warm page cache, taking turns. pelorin-edit reads every line with the
# module's reader and writes through a temporary file that it syncs and
# renames into place; cp does neither. Also its peak resident memory, which
# does not grow with the file.
#
#   bench/edit_speed.sh [PELORIN_EDIT] [RECORDS]
#
# PELORIN_EDIT defaults to the first of build/{bench,default,*}/bin/pelorin-edit.
set -euo pipefail
cd "$(dirname "$0")/.."

edit=${1:-}
records=${2:-1000000}
if [ -z "$edit" ]; then
  for candidate in build/bench/bin/pelorin-edit build/default/bin/pelorin-edit build/*/bin/pelorin-edit; do
    if [ -x "$candidate" ]; then edit=$candidate; break; fi
  done
fi
if [ -z "$edit" ] || [ ! -x "$edit" ]; then
  echo "edit_speed.sh: no pelorin-edit found; build one or name it" >&2
  exit 2
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/pelorin-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
events=$work/events
awk -v n="$records" -f bench/tmc_records.awk > "$events"
bytes=$(stat -c %s "$events")

now() { date +%s.%N; }
smaller() { awk -v a="$1" -v b="$2" 'BEGIN { print (a == "" || b < a) ? b : a }'; }
seconds_of() {
  local start
  start=$(now)
  "$@" > /dev/null
  awk -v a="$start" -v b="$(now)" 'BEGIN { printf "%.3f", b - a }'
}

cp_s="" edit_s=""
for _ in 1 2 3 4 5; do
  rm -f "$work/copy" "$work/cut"
  cp_s=$(smaller "$cp_s" "$(seconds_of cp "$events" "$work/copy")")
  edit_s=$(smaller "$edit_s" "$(seconds_of "$edit" -o "$work/cut" "$events")")
done
cmp -s "$events" "$work/cut" || { echo "edit_speed.sh: the cut differs from the recording" >&2; exit 1; }

rss_kib=$( { /usr/bin/time -f "%M" "$edit" -o "$work/cut" "$events" > /dev/null; } 2>&1 | tail -n 1)
awk -v n="$records" -v f="$bytes" -v c="$cp_s" -v e="$edit_s" -v r="$rss_kib" 'BEGIN {
  printf "records:             %d (%.1f MB)\n", n, f / 1e6
  printf "cp:                  %.3f s  %7.1f MB/s\n", c, f / 1e6 / c
  printf "pelorin-edit:        %.3f s  %7.1f MB/s\n", e, f / 1e6 / e
  printf "peak RSS (edit):     %d KiB\n", r
  printf "edit against cp:     %.2f times as fast\n", c / e
}'
