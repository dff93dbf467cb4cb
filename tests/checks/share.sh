#!/bin/sh
# Says how much of the code is tests, in lines that are neither blank nor comment. Usage: tests/checks/share.sh
# Fails when tests are more than 33 of 100 lines of the product, or more than 40 with the fuzzers.
set -eu

cd "$(dirname -- "$0")/../.."

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

# say WHAT LINES MOST
say() {
  tenths=$(($2 * 1000 / product))
  echo "$1: $2 of $product lines, $((tenths / 10)).$((tenths % 10)) % (at most $3 %)"
  if [ $(($2 * 100)) -gt $(($3 * product)) ]; then code=1; fi
}

say 'tests' "$tests" 33
say 'tests and fuzzers' $((tests + fuzzers)) 40
exit $code
