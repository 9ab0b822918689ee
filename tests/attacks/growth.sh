#!/usr/bin/env bash
# growth.sh REPLAY FOLDER: reading four times as many errors takes about four times the instructions,
# whatever is wrong. Status 77 when nothing can be counted: without valgrind.
set -euo pipefail
replay=$1 folder=$2

if ! command -v valgrind >/dev/null; then
  echo "Skipped: valgrind is missing (Debian: valgrind)"
  exit 77
fi

instructions() {
  valgrind --tool=none --log-file=/dev/null true # fails where valgrind cannot run
  valgrind --tool=callgrind --callgrind-out-file=/dev/null "$replay" responseWithSchema "$@" 2>&1 |
    sed -n 's/.*refs: *//p' | tr -d ,
}

one() {
  local none once often per_cent
  none=$(instructions --scale=0 "$1")
  once=$(($(instructions --scale=2 "$1") - none))
  often=$(($(instructions --scale=8 "$1") - none))
  per_cent=$((100 * often / once))
  echo "$(basename "$1" .recipe): $once instructions, four times as many errors: $per_cent per cent"
  [ "$per_cent" -lt 500 ]
}
export -f one instructions
export replay
printf '%s\n' "$folder"/invalid-*.recipe | xargs -P "$(nproc)" -I{} bash -euc 'one {}'
