#!/usr/bin/env bash
# Compares the ABI with what is kept here, so that a change is a decision: the dynamic symbols, the
# virtual tables through which clients call elements, and the types of the exported interfaces. With
# --update it keeps what the library has.
# check.sh symbols|vtables|abi BUILD_DIR [--update]
set -euo pipefail
what=$1 build=$2 update=${3:-}
kept=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
shared=$build/lib/libkestrelink-saml.so archive=$build/lib/libkestrelink-saml.a

case $what in
  symbols)
    kept+=/symbols.txt
    nm -DC --defined-only "$shared" | cut -d' ' -f3- | LC_ALL=C sort -u >"$work/found"
    ;;
  vtables)
    kept+=/vtables.txt
    # What a class inherits from the base of them all is listed there, once.
    objdump -rC "$archive" | sed -E 's/std::__cxx11::basic_string<char, [^<>]*<char>, [^<>]*<char> >/std::string/g' |
      awk '/^RELOCATION RECORDS FOR/ { own = 0; if ($0 ~ /_ZTVN10kestrelink/) { own = 1; print "" } }
           own && /^[0-9a-f]+ / { sub(/^[^ ]+ +[^ ]+ +/, "")
             if (/^typeinfo/) base = /XMLWrapperElement$/
             if (base || !/^kestrelink::XMLWrapperElement::/) print }' >"$work/found"
    ;;
  abi)
    # Types of the standard library are in it, so it is compared for one compiler only.
    if ! readelf -p .comment "$shared" | grep -q 'GCC: (Debian 12\.'; then
      echo "Skipped: the ABI is kept as GCC 12 of Debian 12 makes it"
      exit 77
    fi
    kept+=/library.abi.gz
    abidw --headers-dir "$(dirname "$0")/../../kestrelink" --drop-private-types --exported-interfaces-only \
      --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names \
      --no-write-default-sizes --type-id-style hash --out-file "$work/found.abi" "$shared"
    gzip -9nc "$work/found.abi" >"$work/found"
    ;;
esac

if [ "$update" = --update ]; then
  cp "$work/found" "$kept"
elif [ "$what" = abi ]; then
  gunzip -c "$kept" >"$work/kept.abi"
  abidiff --no-show-locs "$work/kept.abi" "$work/found.abi"
else
  diff -u "$kept" "$work/found"
fi
