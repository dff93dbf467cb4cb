#!/bin/sh
# Configures with libraries that find_package finds, in place of the script's, and sees that libebml without our
# patches is refused. Usage: tests/checks/packages_mode.sh, after the native preset was configured once.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
work=$root/build/packages-mode
deps=$root/build/deps/native

configure() {
  cmake -S "$root" -B "$work/build" -G Ninja -DTARVEX_PRESET=native -DTARVEX_DEPENDENCIES=packages \
    "-DCMAKE_PREFIX_PATH=$1"
}

rm -rf "$work"
mkdir -p "$work/unpatched/include"
configure "$deps"
grep -q "$deps/lib/libmatroska.a" "$work/build/build.ninja" || { echo 'another libmatroska was taken'; exit 1; }
rm -rf "$work/build"

cp -R "$deps/lib" "$deps/include" "$work/unpatched"
sed -i 's/FromHead(/Something(/' "$work/unpatched/include/ebml/EbmlElement.h"
if configure "$work/unpatched" >"$work/log" 2>&1; then
  echo 'libebml without our patches was taken'
  exit 1
fi
# CMake breaks its lines where the folder's name happens to end.
tr -s ' \n' '  ' <"$work/log" | tr -s ' ' | grep -q 'is libebml without' || { cat "$work/log"; exit 1; }
rm -rf "$work"
