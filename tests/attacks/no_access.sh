#!/usr/bin/env bash
# no_access.sh TEST_PROGRAM SOURCE_DIR BUILD_DIR: while the attacks are read, no file is opened but
# they themselves, the library's own bundle and what the C library needs for encodings, and nothing
# is connected.
set -euo pipefail
program=$1 source=$2 build=$3

if ! strace -o /dev/null true; then
  echo "Skipped: strace cannot trace here"
  exit 77
fi
trace=$(mktemp)
trap 'rm -f "$trace"' EXIT
strace -f -qq -e trace=open,openat,openat2,creat,execve,%network -o "$trace" \
  "$program" --gtest_filter='Attacks.GoldenVerdicts' >/dev/null 2>&1

# From the first attack on. The trace has numbers for what is not ASCII.
during=$(sed -n '\|tests/attacks|,$p' "$trace" | perl -pe 's/\\([23]\d\d)/chr oct $1/ge')
[ -n "$during" ]
own=("\"$source/tests/attacks/" "\"$source/tests/attacks\"" "\"$build/share/com.norvane" /gconv " +++ exited")
strange=$(grep -vF "${own[@]/#/-e}" <<<"$during" || true)
if [ -n "$strange" ]; then
  echo "reached for:"
  echo "$strange"
  exit 1
fi
grep -c . <<<"$during" | sed 's/$/ accesses, all its own/'
