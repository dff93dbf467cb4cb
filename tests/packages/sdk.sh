#!/bin/sh
# Uses the package for host authors as they do: unpacks it, builds its example with the example's own project
# and a host in C against its headers, and runs both under Wine. Usage: tests/packages/sdk.sh, after ./package
# and with the module registered in the usual prefix.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
. "$root/tools/wine.sh"
work="$root/build/sdk test"
triplet=x86_64-w64-mingw32

fail() {
  echo "sdk: $*" >&2
  exit 1
}

# The sounds of the sample, with names that no code page has all of.
make_movie() {
  cat >"$work/names" <<'END'
;FFMETADATA1
[CHAPTER]
TIMEBASE=1/1000
START=0
END=2500
title=Начало
[CHAPTER]
TIMEBASE=1/1000
START=2500
END=5000
title=第二章 – fin 🎬
END
  ffmpeg -v error -y -i "$root/tests/data/sample.mkv" -f ffmetadata -i "$work/names" -map 0:a -map_chapters 1 -c copy \
    -metadata:s:a title='Звук' "$work/第二章.mkv"
}

expect_line() {
  grep -qxF "$2" "$1" || { cat "$1"; fail "no line \"$2\""; }
}

unpack() {
  set -- "$root"/build/packages/tarvex-*-sdk.zip
  [ -e "$1" ] || fail 'no package; ./package makes it'
  rm -rf "$work"
  mkdir -p "$work"
  python3 -m zipfile -e "$1" "$work"
  mv "$work"/tarvex-*-sdk "$work/sdk"
}

try_example() {
  cmake -S "$work/sdk/examples" -B "$work/build" -G Ninja \
    "-DCMAKE_TOOLCHAIN_FILE=$root/cmake/toolchain-windows-x64.cmake" '-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Werror'
  cmake --build "$work/build"
  make_movie
  run_wine 60 "$(windows_path "$work/build/play_with_chapters.exe")" "$(windows_path "$work/第二章.mkv")" >"$work/output"
  tr -d '\r' <"$work/output" >"$work/example.text"
  expect_line "$work/example.text" 'chapter at 0.000 s: Начало'
  expect_line "$work/example.text" 'chapter at 2.500 s: 第二章 – fin 🎬'
  expect_line "$work/example.text" 'sound: A: Звук [German]'
  expect_line "$work/example.text" 'played from 2.500 s'
}

# S_OK is 0, E_NOTIMPL 80004001, and true is 1 here.
try_c() {
  "$triplet-gcc-posix" -std=c11 -Wall -Wextra -Wpedantic -Werror "-I$work/sdk/include" -o "$work/c_host.exe" \
    "$root/tests/packages/c_host.c" -static -lole32 -loleaut32 -luuid
  run_wine 60 "$(windows_path "$work/c_host.exe")" >"$work/output"
  tr -d '\r' <"$work/output" >"$work/c.text"
  for line in 'set 00000000' 'get 00000000 1' 'position 80004001' 'dirty 00000000' 'listen 00000000' \
    'leave 00000000' 'left 0'; do
    expect_line "$work/c.text" "$line"
  done
}

use_null_sound
if [ -z "${DISPLAY:-}" ]; then
  trap stop_display EXIT
  start_display
fi
unpack
try_example
try_c
rm -rf "$work"
