#!/usr/bin/env bash
# failing_malloc.sh FAILING_MALLOC KSAML MESSAGE: lets every fifth allocation of ksaml fail, from before `main`
# to the end, each in a run of its own. It must end with the usual result or with "out of memory".
set -euo pipefail
failing_malloc=$1 command=("$2" read --json --no-schema "$3")

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
"${command[@]}" >expected
bad=0
for ((number = 1; ; number += 5)); do
  status=0
  FAILING=$number LD_PRELOAD=$failing_malloc "${command[@]}" >out 2>log 9>failed || status=$?
  [ -s failed ] || break
  if [ $status = 2 ] && grep -qx 'ksaml: out of memory' log; then continue; fi
  if [ $status = 0 ] && cmp -s out expected; then continue; fi
  echo "allocation $number: status $status" && bad=1
done
echo "$number allocations"
[ "$number" -gt 500 ] && exit $bad
