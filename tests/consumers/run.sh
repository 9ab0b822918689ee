#!/usr/bin/env bash
# Builds and runs the consumers against an installed tree, which is moved half-way.
# run.sh KIND SOURCE_DIR BUILD_DIR CXX
set -euo pipefail
kind=$1 source=$2 build=$3 cxx=$4
work=$build/consumers/$kind
answer=$source/tests/fixtures/answer.xml
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
  "$1/consumer" "$answer"
  "$1/standard" "$answer" "$work"
  xmllint --nonet --noout --schema "$2/com.norvane.Kestrelink.SAMLFramework/saml-schema-protocol-2.0.xsd" \
    "$work"/{authn,attributes,authz,logout}.xml
}

if [ "$kind" = subdirectory ]; then
  configure subdirectory -DKESTRELINK_SOURCE_DIR="$source"
  # The bundle is staged in the library's own build folder, beside its lib/.
  run_both "$work/build" "$build/share"
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
    configure static -DCMAKE_PREFIX_PATH="$prefix" -DCLIENT_PREFIX="$prefix"
    ! ldd "$prefix/bin/consumer" | grep -q kestrelink
    ! ldd "$prefix/bin/standard" | grep -q kestrelink
    run_both "$prefix/bin" "$prefix/share"
    ;;
  pkg_config)
    export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
    read -ra flags < <(pkg-config --cflags --libs kestrelink-saml)
    for program in consumer standard; do
      "$cxx" -std=c++20 -Wall -Wextra -Werror "$source/tests/consumers/$program.cpp" "${flags[@]}" \
        -o "$work/$program"
    done
    LD_LIBRARY_PATH=$prefix/lib run_both "$work" "$prefix/share"
    # An absolute library folder stays what it is.
    cmake -S "$source" -B "$work/absolute" -G Ninja -DKESTRELINK_BUILD_TESTS=OFF \
      -DKESTRELINK_BUILD_TOOLS=OFF -DCMAKE_INSTALL_LIBDIR=/opt/deep/lib >/dev/null
    grep -qx 'libdir=/opt/deep/lib' "$work/absolute/kestrelink-saml.pc"
    ;;
esac

# Moved once more, the program that was built still finds library and bundle.
if [ "$kind" = pkg_config ]; then
  mv "$prefix" "$work/again"
  LD_LIBRARY_PATH=$work/again/lib "$work/consumer" "$answer"
fi
