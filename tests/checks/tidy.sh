#!/bin/sh
# Runs clang-tidy over the sources of the product. Usage: tests/checks/tidy.sh native|windows-x64
# After the build of that preset. For the Windows preset only those sources are taken that the native build
# does not have. Two jobs at a time, or as many as TARVEX_JOBS says.
# The sources of a folder are checked as one text, since most of the time goes into the headers that all of
# them include. A text that does not pass is taken apart and each of its sources checked alone; what that says
# counts. What passed is not checked again until a source of it, a header of ours, the list of checks or
# clang-tidy itself changes: build/tidy keeps a mark for it.
set -eu

cd "$(dirname -- "$0")/../.."
preset=${1:?usage: tests/checks/tidy.sh native|windows-x64}
folder=$PWD/build/tidy/$preset
mkdir -p "$folder"
product='framework scanner pins filter module pages host include'

arguments="-std=c++20 -I$PWD -I$PWD/include -isystem $PWD/build/deps/$preset/include
  -I$PWD/build/$preset/pins/generated -DEBML_STATIC_DEFINE -DMATROSKA_STATIC_DEFINE
  -Wall -Wextra -Wpedantic -Wconversion"
case $preset in
  native)
    arguments="$arguments -DTARVEX_DEBUG_CHECKS=1"
    units='scanner/*.cpp scanner/*/*.cpp
      framework/*.cpp framework/platform/*.cpp framework/platform/linux/*.cpp
      pins/output/[a-o]*.cpp
      filter/*.cpp
      pins/output/[p-z]*.cpp pins/formats/*.cpp pins/creator/*.cpp'
    ;;
  windows-x64)
    # clang knows the target but not where Debian keeps the cross compiler's headers.
    library=$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)
    library=$(dirname -- "$library")/include/c++
    arguments="$arguments --target=x86_64-w64-mingw32 -nostdinc++ -isystem $library
      -isystem $library/x86_64-w64-mingw32 -isystem /usr/x86_64-w64-mingw32/include
      -DUNICODE -D_UNICODE -DNOMINMAX -D_WIN32_WINNT=0x0601 -DTARVEX_VERSION=\"0\""
    units='host/*.cpp host/commands/*.cpp host/system/*.cpp
      host/graph/*.cpp host/report/*.cpp
      module/*.cpp pages/*.cpp framework/platform/windows/*.cpp
      examples/*.cpp'
    ;;
  *) exit 2 ;;
esac

# The sources of some folders as one text. An #include counts once, so that each header is read once.
one_text() {
  for source; do
    echo "#line 1 \"$source\""
    cat "$source"
  done | awk '/^#include/ && seen[$0]++ { print "//"; next } { print }'
}

# One line for each text that has no mark yet: its mark, and its sources.
list_unchecked() {
  rest=$({
    clang-tidy --version
    cat .clang-tidy tests/checks/tidy.sh
    # shellcheck disable=SC2086  # a list of folders
    find $product -name '*.h' | LC_ALL=C sort | xargs cat
  } | sha256sum)
  echo "$units" | while read -r patterns; do
    # shellcheck disable=SC2086  # lists of names, here and below
    sources=$(LC_ALL=C ls $patterns)
    # shellcheck disable=SC2086
    mark=$({ echo "$rest" && echo $sources && cat $sources; } | sha256sum | cut -c 1-40)
    if [ ! -e "$folder/$mark" ]; then
      # shellcheck disable=SC2086
      one_text $sources >"$folder/$mark.cpp"
      # shellcheck disable=SC2086
      echo "$mark" $sources
    fi
  done
}

cp .clang-tidy "$folder/"
list_unchecked >"$folder/todo"
echo "$(wc -l <"$folder/todo") texts to check"
# shellcheck disable=SC2016  # expanded by the inner shell
ARGUMENTS=$arguments FOLDER=$folder xargs -r -P "${TARVEX_JOBS:-2}" -L 1 sh -c '
  mark=$1
  shift
  if ! clang-tidy --quiet "$FOLDER/$mark.cpp" -- $ARGUMENTS >"$FOLDER/$mark.log" 2>&1; then
    echo "one by one: $*"
    code=0
    for source; do
      clang-tidy --quiet "$source" -- $ARGUMENTS 2>"$FOLDER/$mark.errors" || code=1
      grep -v "warnings\? generated" "$FOLDER/$mark.errors" || true
    done
    if [ $code -ne 0 ]; then exit 1; fi
  fi
  rm -f "$FOLDER/$mark".*
  : >"$FOLDER/$mark"' sh <"$folder/todo"
