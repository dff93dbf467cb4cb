#!/bin/sh
# Checks that every C++ file of the checkout is formatted as .clang-format says.
# Usage: tests/checks/format.sh, or with --fix to format them.
set -eu

cd "$(dirname -- "$0")/../.."
mode='--dry-run -Werror'
if [ "${1:-}" = --fix ]; then
  mode=-i
fi

# Tracked files where there is git; a file deleted in the work tree is still tracked, hence the test.
list_sources() {
  if [ -e .git ]; then
    git -c safe.directory='*' ls-files '*.cpp' '*.h' ':!build'
  else
    find . -path ./build -prune -o -type f \( -name '*.cpp' -o -name '*.h' \) -print
  fi
}

list_sources | while read -r file; do
  if [ -e "$file" ]; then
    printf '%s\0' "$file"
  fi
done >build/format.list
if [ ! -s build/format.list ]; then
  echo 'no C++ files' >&2
  exit 1
fi
# shellcheck disable=SC2086  # two words
xargs -0 -P 2 -n 20 clang-format $mode <build/format.list
