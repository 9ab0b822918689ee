#!/usr/bin/env bash
# Builds and runs the consumers against an installed tree, which is moved half-way.
# run.sh KIND SOURCE_DIR BUILD_DIR CXX
set -euo pipefail
kind=$1 source=$2 build=$3 cxx=$4
work=$build/consumers/$kind
message=$source/tests/fixtures/answer.xml
rm -rf "$work"
mkdir -p "$work"

configure() {
  cmake -G Ninja -S "$source/tests/consumers/$1" -B "$work/build" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_BUILD_TYPE=Release "${@:2}" >"$work/log" || { cat "$work/log"; exit 1; }
  cmake --build "$work/build" >>"$work/log" || { cat "$work/log"; exit 1; }
}

# run_both FOLDER_OF_PROGRAMS FOLDER_OF_BUNDLE: the client, and the client of a provider that
# validates, whose requests are validated here by another program.
run_both() {
  "$1/consumer" "$message"
  "$1/standard" "$message" "$work"
  xmllint --nonet --noout --schema "$2/com.norvane.Kestrelink.SAMLFramework/saml-schema-protocol-2.0.xsd" \
    "$work"/{authn,attributes,authz,logout}.xml
}

compile() {
  "$cxx" -std=c++20 -Wall -Wextra -Werror "$source/tests/consumers/$1.cpp" "${@:2}"
}

if [ "$kind" = subdirectory ]; then
  configure subdirectory -DKESTRELINK_SOURCE_DIR="$source"
  # The bundle is staged in the library's own build folder, beside its lib/.
  run_both "$work/build" "$build/share"
  exit
fi

if [ "$kind" = odd_path ]; then
  # A source folder with a blank and an apostrophe, built with the objects that are there already.
  copy="$work/it's a copy"
  mkdir "$copy" && cp -r "$source"/{CMakeLists.txt,CHANGELOG.md,cmake,docs,kestrelink,resources,tools} "$copy"
  # shellcheck disable=SC2016
  printf '%s\n' '#!/bin/sh' 'while [ "$1" != -o ]; do shift; done' 'cp "$BUILT/$2" "$2"' >"$work/copy-built"
  chmod +x "$work/copy-built"
  export BUILT=$build PATH=$work:$PATH
  in_copy() { (cd "$copy" && cmake "$@") >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }
  in_copy -G Ninja -S . -B build -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_COMPILER_LAUNCHER=copy-built \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=/usr -DKESTRELINK_BUILD_TESTS=OFF \
    -DKESTRELINK_BUILD_EXAMPLES=OFF
  in_copy --build build
  in_copy --install build --prefix installed
  "$copy/installed/bin/ksaml" read "$message" | tee "$work/out"
  if grep -q "not validated" "$work/out"; then exit 1; fi
  gzip -t "$copy"/installed/share/doc/*/changelog.gz
  exit
fi

cmake --install "$build" --prefix "$work/prefix" >/dev/null
mv "$work/prefix" "$work/moved"
prefix=$work/moved

case $kind in
  find_package)
    configure find_package -DCMAKE_PREFIX_PATH="$prefix"
    run_both "$work/build" "$prefix/share"
    ;;
  static)
    configure static -DCMAKE_PREFIX_PATH="$prefix"
    if ldd "$work"/build/{consumer,standard} | grep 'libkestrelink.*=>'; then exit 1; fi
    run_both "$work/build" "$work/build/share"
    ;;
  plugin)
    configure plugin -DCMAKE_PREFIX_PATH="$prefix"
    "$work/build/host" "$message" "$work"/build/lib{shared,static}.so
    ;;
  fully_static)
    export PKG_CONFIG_PATH=$prefix/lib/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}
    mapfile -t flags < <(pkg-config --static --cflags --libs kestrelink-saml-static | xargs printf '%s\n')
    compile consumer "${flags[@]}" -fPIE -c -o "$work/consumer.o"
    for form in -static -static-pie; do
      if ! "$cxx" "$form" "$work/consumer.o" "${flags[@]}" -o "$prefix/bin/consumer" 2>"$work/log"; then
        grep -m 1 'cannot find -l\|cannot find.*\.a' "$work/log" && echo "Skipped: a static library is missing" && exit 77
        cat "$work/log"
        exit 1
      fi
      "$prefix/bin/consumer" "$message"
    done
    ;;
  layouts)
    # Library and share/ in one folder, found by a relative path that is soon another; the program elsewhere.
    mkdir -p "$work/flat" "$work/another/folder"
    compile consumer -I "$prefix/include" -L "$prefix/lib" -lkestrelink-saml -o "$work/another/folder/consumer"
    cp -P "$prefix"/lib/lib*.so* "$prefix/bin/ksaml" "$work/flat"
    cp -r "$prefix/share" "$work/flat"
    (cd "$work/flat" && LD_LIBRARY_PATH=. ../another/folder/consumer "$message")
    # Without share/ nothing is validated, and the log says so once.
    rm -r "$work/flat/share"
    said=$(LD_LIBRARY_PATH=$work/flat "$work/flat/ksaml" read "$message" "$message" 2>&1)
    [ "$(grep -c 'read without validation: .* beside .*/flat/libkestrelink' <<<"$said")" -eq 1 ]
    # What cannot work is refused before anything is built.
    while read -r verdict lib data; do
      if cmake -DPROJECT_IS_TOP_LEVEL=ON -DCMAKE_INSTALL_PREFIX=/opt/p -DCMAKE_INSTALL_LIBDIR="$lib" \
        -DCMAKE_INSTALL_DATADIR="$data" -P "$source/cmake/InstallLayout.cmake" 2>"$work/log"; then
        found=works
      else
        found=refused
        grep -q 'CMAKE_INSTALL_DATADIR' "$work/log"
      fi
      [ "$found" = "$verdict" ] || { echo "$lib $data: $found"; exit 1; }
    done <"$source/tests/consumers/layouts.txt"
    ;;
  pkg_config)
    export PKG_CONFIG_PATH=$prefix/lib/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}
    mapfile -t flags < <(pkg-config --cflags --libs kestrelink-saml | xargs printf '%s\n')
    for program in consumer standard; do
      compile "$program" "${flags[@]}" -o "$work/$program"
    done
    LD_LIBRARY_PATH=$prefix/lib run_both "$work" "$prefix/share"
    # The compiler refuses what is not exported, and names the way out.
    for use in kestrelink::SAMLSubject::createElement 'std::make_shared<kestrelink::SAMLSubject>'; do
      if printf '%s\n' '#include <kestrelink/saml/KestrelinkSAML.h>' "auto made = $use();" |
        "$cxx" -O0 -std=c++20 "${flags[@]}" -c -x c++ - -o "$work/refused.o" 2>"$work/log"; then exit 1; fi
      grep -q 'not exported: create elements with standard::newElement' "$work/log"
    done
    # An absolute library folder stays what it is.
    cmake -S "$source" -B "$work/absolute" -G Ninja -DKESTRELINK_BUILD_TESTS=OFF \
      -DKESTRELINK_BUILD_TOOLS=OFF -DCMAKE_INSTALL_LIBDIR=/opt/deep/lib \
      -DCMAKE_INSTALL_DATADIR=/opt/deep/share >/dev/null
    grep -qx 'libdir=/opt/deep/lib' "$work/absolute/kestrelink-saml.pc"
    ;;
esac

# Moved once more, the program that was built still finds library and bundle.
if [ "$kind" = pkg_config ]; then
  mv "$prefix" "$work/again"
  LD_LIBRARY_PATH=$work/again/lib "$work/consumer" "$message"
fi
