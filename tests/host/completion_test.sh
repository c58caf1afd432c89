#!/usr/bin/env bash
# Bash completion of both tools: options from --help, trace levels, folders
# and files. Usage: completion_test.sh COMPLETION_FILE HOST CHECK
set -euo pipefail
source "$1"
host=$2 check=$3
work=$(mktemp -d "${TMPDIR:-/tmp}/pelorin-completion.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir "$work/recordings" && touch "$work/rec.txt" "$work/out.svg"
cd "$work"
failures=0

# complete PROGRAM WORDS... -> the completions, one a line, sorted
complete_line() {
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=()
  _pelorin_tool "$1" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]:-}"
  if [ ${#COMPREPLY[@]} -gt 0 ]; then printf '%s\n' "${COMPREPLY[@]}" | sort; fi
}

expect() {
  local want=$1 got
  shift
  got=$(complete_line "$@" | tr '\n' ' ')
  if [ "$got" != "$want" ]; then
    echo "FAIL: completing '$*': got '$got', want '$want'"
    failures=$((failures + 1))
  fi
}

expect "--trace " "$host" --tr
expect "2 3 4 " "$host" --trace ""
expect "recordings " "$host" --root rec
expect "" "$host" --timeout ""
expect "rec.txt recordings " "$host" --json re
expect "--json " "$check" --js
expect "--help " "$check" --he
expect "-V " "$check" -V
if [ $failures -ne 0 ]; then exit 1; fi
echo "completion: all cases pass"
