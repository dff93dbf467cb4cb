#!/bin/sh
# Runs clang-tidy over the sources of a build folder, two at a time. Usage: tests/checks/tidy.sh PRESET
# For a Windows preset only those sources are taken that the native build does not have.
# A source that passed is not checked again until it, a header of ours that it includes, the list of
# checks or clang-tidy itself changes: build/tidy keeps a mark per passed content.
set -eu

cd "$(dirname -- "$0")/../.."
root=$PWD
preset=${1:?usage: tests/checks/tidy.sh PRESET}
build=$root/build/$preset
marks=$root/build/tidy
mkdir -p "$marks"

# clang knows the target but not where Debian keeps the cross compiler's headers.
windows_arguments='' only=.
case $preset in
  windows-*)
    library=$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)
    library=$(dirname -- "$library")/include/c++
    only='^(examples|host|module|pages|framework/platform/windows|tests/(host|packages|pages|playback|registration)|benchmarks/play/windows)/'
    for argument in --target=x86_64-w64-mingw32 -nostdinc++ "-isystem$library" \
      "-isystem$library/x86_64-w64-mingw32" -isystem/usr/x86_64-w64-mingw32/include; do
      windows_arguments="$windows_arguments --extra-arg=$argument"
    done
    ;;
esac
common=$({ clang-tidy --version && cat .clang-tidy && echo "$preset"; } | sha256sum)

# One line for each object file: its own source first, then what it includes of ours.
sources_with_headers() {
  ninja -C "$build" -t deps | awk -v root="$root/" -v generated="$root/build/" '
    function flush() { if (line != "") print line; line = "" }
    /^[^ ]/ { flush() }
    /^ / {
      path = $1
      if (index(path, "../../") == 1) path = root substr(path, 7)
      if (index(path, root) == 1 && index(path, generated) != 1) line = line (line == "" ? "" : " ") substr(path, length(root) + 1)
    }
    END { flush() }' | grep -E '^[^ ]+\.cpp' | grep -E "$only" | sort -u
}

mark_of() {
  # shellcheck disable=SC2086  # a list of names
  { echo "$common" && echo "$1" && cat $1; } | sha256sum | cut -d ' ' -f 1
}

sources_with_headers | while read -r files; do
  source=${files%% *}
  if [ ! -e "$source" ]; then
    continue
  fi
  mark=$(mark_of "$files")
  if [ ! -e "$marks/$mark" ]; then
    echo "$source $mark"
  fi
done >"$marks/$preset.todo"

echo "$(wc -l <"$marks/$preset.todo") sources to check"
# shellcheck disable=SC2016  # expanded by the inner shell
TIDY_ARGUMENTS=$windows_arguments xargs -r -P 2 -L 1 sh -c '
  build=$1 marks=$2 source=$3 mark=$4
  if clang-tidy --quiet -p "$build" $TIDY_ARGUMENTS "$source" >"$marks/$mark.log" 2>&1; then
    rm -f "$marks/$mark.log"
    : >"$marks/$mark"
  else
    grep -v "warnings\? generated" "$marks/$mark.log" || true
    rm -f "$marks/$mark.log"
    exit 1
  fi' sh "$build" "$marks" <"$marks/$preset.todo"
