#!/bin/sh
# Compiles the public headers as hosts do: as C11 and as C++14, 17 and 20, with clang for the target of
# Microsoft's compiler and with the cross compiler. Usage: tests/checks/headers.sh
# The platform's headers are the cross compiler's in both cases. So this shows that ours are valid, without a
# warning, where _MSC_VER is set, __declspec(uuid) works and C++ names and layouts are Microsoft's; it does not
# show how they get on with the headers of Microsoft's own kit.
set -eu

cd "$(dirname -- "$0")/../.."
warnings='-Wall -Wextra -Wpedantic -Werror'
failed=0

# compile NAME COMMAND...
compile() {
  name=$1
  shift
  # shellcheck disable=SC2086  # a list of options
  if "$@" $warnings -Iinclude -fsyntax-only; then
    echo "ok      $name"
  else
    echo "FAILED  $name"
    failed=1
  fi
}

# Those headers keep clang's vector types from working unless it says that it knows GNU C.
# shellcheck disable=SC2317  # compile calls it
as_microsoft() {
  clang --target=x86_64-pc-windows-msvc -fgnuc-version=4.2.1 -isystem /usr/x86_64-w64-mingw32/include "$@"
}

compile 'C11, Microsoft' as_microsoft -std=c11 tests/checks/headers.c
for standard in 14 17 20; do
  compile "C++$standard, Microsoft" as_microsoft -std=c++$standard -DTARVEX_UUIDOF_IS_CONSTANT tests/checks/headers.cpp
done
compile 'C11, cross' x86_64-w64-mingw32-gcc-posix -std=c11 tests/checks/headers.c
for standard in 14 17 20; do
  compile "C++$standard, cross" x86_64-w64-mingw32-g++-posix -std=c++$standard tests/checks/headers.cpp
done
exit $failed
