#!/bin/sh
# Runs jobs one after another: tests/checks/jobs.sh FOLDER, with one job for each line of FOLDER/list, its name
# and its command. In FOLDER it leaves NAME.log and, last of all, NAME.code for each. ./test has it build and
# check sources while programs that are built already run.
set -eu

folder=${1:?usage: tests/checks/jobs.sh FOLDER}
root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
cd "$root"
. "$root/tools/build.sh"

while read -r name command; do
  code=0
  # The command is a line of words, and may be a function of build.sh. Its exit code, not its output, counts.
  # shellcheck disable=SC2086
  $command >"$folder/$name.log" 2>&1 </dev/null || code=$?
  echo $code >"$folder/$name.code.new"
  mv "$folder/$name.code.new" "$folder/$name.code"
done <"$folder/list"
