#!/usr/bin/env bash
# failing_files.sh KSAML BUILD_DIR: lets each system call with which the library finds and reads its schema
# files fail, one at a time. A message that is not valid must be refused, also when the error passes: then the
# next attempt reads the schema. Only when a file is there and cannot be read is the message accepted, and the
# log says why.
set -euo pipefail
shopt -s extglob
ksaml=$1 build=$2

if ! strace -o /dev/null true; then
  echo "Skipped: strace cannot trace here"
  exit 77
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
echo '<Response/>' >message.xml # accepted without a schema

verdict() {
  if [ "$1" = 1 ] && cmp -s out expected; then
    echo refused
  elif [ "$1" = 1 ] && grep -q 'Schema is not valid' log; then
    echo 'refused without its imports'
  elif [ "$1" = 2 ] && grep -q 'ksaml: out of memory' log; then
    echo 'out of memory'
  elif [ "$1" = 0 ] && [ "$(grep -c 'read without validation: .*([A-Z].*)' log)" = 1 ]; then
    echo 'accepted with a reason'
  else
    echo "status $1"
  fi
}

# The name of each system call on the library's own file or in its bundle, and its number among those.
strace -y -qq -o trace -e trace=readlink,readlinkat,stat,newfstatat,statx,fstat,open,openat,read \
  "$ksaml" read message.xml >expected || test $? -eq 1
awk -v own="$build/" -F'[(]' '{ ++number[$1] }
  index($0, own) && !/\.so[^ ]*", O_RDONLY|\.so[^ ]*>|\/bin\// { print $1, number[$1] }' \
  <(perl -pe 's/\\([23]\d\d)/chr oct $1/ge' trace) >points # a trace has numbers for what is not ASCII
grep -q '^read ' points

declare -A seen
bad=0
while read -r call number; do
  for fault in error={EINTR,ENOMEM,EMFILE,ENFILE,EAGAIN,EIO,EACCES} retval=0; do
    [ "$fault" != retval=0 ] || [ "$call" = read ] || continue # the end of a file that was cut short
    status=0
    strace -qq -o injected -e trace="$call" -e inject="$call:$fault:when=$number" \
      "$ksaml" read message.xml >out 2>log || status=$?
    grep -q INJECTED injected
    what="$fault: $(verdict $status)"
    seen[$what]=$((${seen[$what]:-0} + 1))
    case $what in
      *': refused') ;;
      error=@(ENOMEM|EMFILE|ENFILE|EAGAIN)': out of memory' | retval=0': out of memory') ;;
      error=@(EIO|EACCES)': '@(accepted with a reason|refused without its imports)) ;;
      *) echo "FAULT $call $number $what" && bad=1 ;;
    esac
  done
done <points
for what in "${!seen[@]}"; do echo "${seen[$what]} times $what"; done | sort -k3
exit $bad
