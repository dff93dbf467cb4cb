#!/bin/sh
# Runs one GoogleTest program of a build, natively or under Wine.
# Usage: tests/checks/run_program.sh LABEL PRESET PROGRAM SECONDS
# In build/test-logs it leaves LABEL.log, LABEL.json (GoogleTest's report) and, last of all, LABEL.code.
set -eu

label=${1:?usage: tests/checks/run_program.sh LABEL PRESET PROGRAM SECONDS}
preset=$2
program=$3
seconds=$4
root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
output=$root/build/test-logs/$label
rm -f "$output.json" "$output.code"

run() {
  case $preset in
    windows-*)
      # The report is written by a Windows program, to a path as Wine shows it.
      . "$root/tools/wine.sh"
      [ "$preset" != windows-x86 ] || use_wine 32
      run_wine "$seconds" "$(windows_path "$root/build/$preset/tests/$program")" "--gtest_output=json:Z:$output.json"
      ;;
    *)
      timeout -k 5 "$seconds" "$root/build/$preset/tests/$program" "--gtest_output=json:$output.json"
      ;;
  esac
}

code=0
run >"$output.log" 2>&1 </dev/null || code=$?
echo $code >"$output.code.new"
mv "$output.code.new" "$output.code"
