#!/usr/bin/env bash
# Counts the instructions of three operations and compares them with the bounds in instructions.txt,
# with 5 per cent room; with --update it keeps what is counted now. Status 77 when nothing can be
# compared: without valgrind, or when the bounds are those of another build.
# instructions.sh BUILD_DIR BUILD [--update]
set -euo pipefail
build=$1 holds_for="$2, libxml2 $(pkg-config --modversion libxml-2.0)" update=${3:-}
here=$(dirname "$0")
bounds=$here/instructions.txt

if ! command -v valgrind >/dev/null; then
  echo "Skipped: valgrind is missing (Debian: valgrind)"
  exit 77
fi
if [ "$update" != --update ] && ! grep -qFx "# Holds for: $holds_for" "$bounds"; then
  echo "Skipped: $(grep 'Holds for' "$bounds"), and this is $holds_for"
  exit 77
fi

# The C library chooses its string functions by processor: here always the plainest.
export GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX512VL,-AVX512BW,-AVX2,-AVX,-BMI2,-ERMS,-SSE4_2,-SSE4_1,-SSSE3

# instructions WORK TIMES - of a process that does the work so many times
instructions() {
  local log
  log=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null \
    "$build/bin/cold-library" "$1" "$here/../examples/answer.xml" "$2" 2>&1) ||
    { echo "$log" >&2 && exit 1; }
  sed -n 's/.*refs: *//p' <<<"$log" | tr -d ,
}

status=0
counted=""
for work in read read-no-schema request; do
  once=$(instructions "$work" 1)
  count=$((($(instructions "$work" 6) - once) / 5))
  counted+="$work $count"$'\n'
  kept=$(sed -n "s/^$work //p" "$bounds")
  echo "$work: $count instructions, kept $kept"
  if [ "$update" != --update ] && [ "$count" -gt $((kept * 105 / 100)) ]; then
    echo "$work: more than 5 per cent above; if the change is worth it, renew $bounds"
    status=1
  fi
done
if [ "$update" = --update ]; then
  kept=$(grep '^#' "$bounds" | grep -v 'Holds for')
  printf '%s\n' "$kept" "# Holds for: $holds_for" "${counted%$'\n'}" >"$bounds"
fi
exit $status
