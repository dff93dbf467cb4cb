#!/bin/sh
# Says how much of the code is tests, in lines that are neither blank nor comment. Usage: tests/checks/share.sh
# Tests are wanted to be at most 33 of 100 lines of the product, and with the fuzzers at most 40. They are more
# yet, so this says it only; with verdict=fail it is a check.
set -eu

cd "$(dirname -- "$0")/../.."
verdict=pass

# Lines of the C++ files below some folders. A comment's lines are // lines, or from /* to */ at their ends.
lines_in() {
  find "$@" '(' -name '*.cpp' -o -name '*.h' ')' -exec cat {} + | awk '
    inside { if (/\*\//) inside = 0; next }
    /^[ \t]*\/\*/ { if (!/\*\//) inside = 1; next }
    /^[ \t]*(\/\/.*)?\r?$/ { next }
    { count++ }
    END { print count + 0 }'
}

product=$(lines_in module filter scanner pins pages framework host include)
tests=$(lines_in tests)
fuzzers=$(lines_in fuzz)
code=0

# say WHAT LINES WANTED
say() {
  percent=$(($2 * 100 / product))
  echo "$1: $2 of $product lines, $percent % (at most $3 % are wanted)"
  if [ "$percent" -gt "$3" ]; then code=1; fi
}

say 'tests' "$tests" 33
say 'tests and fuzzers' $((tests + fuzzers)) 40
[ $verdict = pass ] || exit $code
