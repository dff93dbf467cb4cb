#!/bin/sh
# One of the rows of tests that ./test runs side by side. Usage: tests/checks/row.sh ROW [quick] [CORPUS], in a
# session of its own while tests/checks/jobs.sh builds what it needs. It prints what it finds and leaves its
# counts in build/test-logs/ROW.counts; without them it did not come to its end.
#   native    the native programs, then those with sanitizers
#   wine      the 64-bit programs, mkvhost and the examples under Wine, also from the package for host authors
#   packages  modules and packages, in Wine prefixes of their own
#   wine32    what goes through the 32-bit module's border, and its packages, under a 32-bit Wine
set -eu

row=${1:?usage: tests/checks/row.sh native|wine|packages|wine32 [quick] [CORPUS]}
quick=${2:-}
corpus=${3:-}
root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
cd "$root"
. "$root/tools/wine.sh"
. "$root/tests/checks/counting.sh"
. "$root/tests/checks/wine32.sh"

end_row() {
  echo "$passed $failed $skipped $restarts" >"$logs/$row.counts"
  exit 0
}

# A job that fails is counted by ./test, and what needs it has nothing to show.
needs() {
  for name; do
    await_job "$name"
    [ "$job_code" = 0 ] || end_row
  done
}

# An instrumented or emulated program is slower than the limit was meant for.
time_factor() {
  case $1 in
    native) echo 1 ;;
    *) echo 3 ;;
  esac
}

# One line for each program of a preset, all of them or those with a keyword, as run_program.sh takes them:
# listed PRESET KEYWORD|all alone|beside
listed() {
  cat /dev/null "$root/build/$1/tests"/*.test | while read -r program limit keywords; do
    case " $keywords all " in *" $2 "*) ;; *) continue ;; esac
    case " $keywords " in *' alone '*) manner=alone ;; *) manner=beside ;; esac
    if [ $manner = "$3" ]; then
      echo "$1-$program $1 $program $((limit * $(time_factor "$1")))"
    fi
  done
}

# run_list LIST NUMBER: runs so many at once, and counts them in the order of the list.
run_list() {
  [ -s "$1" ] || return 0
  # A result of an earlier run is none of this one.
  while read -r label _; do
    rm -f "$logs/$label.code" "$logs/$label.json"
    : >"$logs/$label.log"
  done <"$1"
  xargs -P "$2" -L 1 tests/checks/run_program.sh <"$1" &
  list_id=$!
  while read -r label preset program _; do
    wait_for_code "$logs/$label.code" "$list_id" >/dev/null
    count_program "$preset/$program" "$label"
  done <"$1"
  wait "$list_id" || true
}

# run_tests PRESET KEYWORD|all
run_tests() {
  for manner in beside alone; do
    listed "$1" "$2" $manner >"$logs/$1.$manner"
  done
  check "programs of $1" [ -s "$logs/$1.beside" ]
  run_list "$logs/$1.beside" 2
  run_list "$logs/$1.alone" 1
}

# The comparison program takes another corpus from its environment. run_corpus PRESET PROGRAM FOLDER SECONDS
run_corpus() {
  TARVEX_CORPUS=$3
  export TARVEX_CORPUS
  tests/checks/run_program.sh "corpus-$1" "$1" "$2" "$4"
  unset TARVEX_CORPUS
  count_program "$1/corpus_test over the given corpus" "corpus-$1"
}

test_natively() {
  needs native
  run_tests native all
  if [ -n "$corpus" ]; then
    run_corpus native corpus_test "$corpus" 900
  fi
}

test_with_sanitizers() {
  needs native-asan
  ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1
  export ASAN_OPTIONS UBSAN_OPTIONS
  run_tests native-asan all
  needs native-tsan
  TSAN_OPTIONS=halt_on_error=0:second_deadlock_stack=1
  # The search runs on one thread; the builds before this one compare it over all of its files.
  TARVEX_SEARCHED_FILES=40
  export TSAN_OPTIONS TARVEX_SEARCHED_FILES
  run_tests native-tsan tsan
}

# The example is what hosts start from, so it must do what it says.
example_works() {
  run_wine 60 "$(windows_path "$root/build/windows-x64/play_with_chapters.exe")" \
    "$(windows_path "$root/tests/data/sample.mkv")" >"$logs/example.output" || return 1
  tr -d '\r' <"$logs/example.output" >"$logs/example.text"
  for line in 'sound: A: High tone [German]' 'chapter at 2.500 s: Second half' 'played from 2.500 s'; do
    grep -qxF "$line" "$logs/example.text" || { cat "$logs/example.text"; return 1; }
  done
}

# What users type and what it answers.
try_host() {
  for part in help hostile refusals reports samples playing names dump positions manifest; do
    check "mkvhost: $part" python3 -B tests/host/host.py "$wine_loader" build/windows-x64 $part
  done
}

# A display and a sound device of the row's own, so that the result does not depend on the user's.
prepare_wine() {
  use_null_sound
  unset WAYLAND_DISPLAY PULSE_SERVER
  trap stop_display EXIT
  start_display
}

test_under_wine() {
  needs windows-x64 pictures
  make_prefix
  # What played a moment ago leaves a desktop for some seconds, on a display that is gone.
  wine_server -w
  check 'register the module' register_module "$root/build/windows-x64/tarvex.dll"
  check 'example' example_works
  run_tests windows-x64 all
  try_host
  if [ -n "$corpus" ]; then
    run_corpus windows-x64 corpus_test.exe "Z:$corpus" 1800
  fi
  needs packages
  check 'packages: for host authors' tests/packages/sdk.sh
}

check_modules() {
  needs native windows-x64 windows-x86
  check 'headers for hosts' tests/checks/headers.sh
  check 'libraries from packages' tests/checks/packages_mode.sh
  for preset in windows-x64 windows-x86; do
    check "imports $preset" tests/checks/dll.sh imports "build/$preset/tarvex.dll"
    check "exports $preset" tests/checks/dll.sh exports "build/$preset/tarvex.dll"
    check "effects on the host $preset" tests/checks/dll.sh host "build/$preset/tarvex.dll"
    for program in tarvex.dll mkvhost.exe; do
      check "guards $preset $program" tests/checks/dll.sh guards "build/$preset/$program"
    done
  done
}

# As their users get the programs: from the packages, in a prefix that has seen nothing else.
test_packages() {
  needs packages pictures
  for step in prefix installer actions upgrade zip pages end; do
    check "packages: $step" tests/packages/installed.sh "$step"
  done
  check 'packages: lists for others' python3 -B tests/packages/published.py build/packages
  check 'packages: signed' tests/packages/signed.sh
  for arch in x64 x86; do
    check "packages: tables $arch" tests/packages/tables.sh "$arch"
    check "packages: symbols $arch" tests/packages/symbols.sh "$arch"
  done
}

case $row in
  native)
    test_natively
    [ -n "$quick" ] || test_with_sanitizers
    ;;
  wine)
    prepare_wine
    test_under_wine
    ;;
  packages)
    prepare_wine
    check_modules
    test_packages
    ;;
  wine32)
    prepare_wine
    test_32_bits
    ;;
esac
end_row
