#!/bin/sh
# What an installer says: every table of it and its summary, compared with the kept list, table by table. What
# differs from version to version stands there as a word in capitals. Usage: tests/packages/tables.sh x64|x86,
# after ./package. A change that is meant goes into the kept list; that of a component's code never is.
set -eu

arch=${1:?usage: tests/packages/tables.sh x64|x86}
root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
kept=$root/tests/packages/tables-$arch.txt
found=$root/build/test-logs/tables-$arch.txt
mkdir -p "$root/build/test-logs"
set -- "$root"/build/packages/tarvex-*-"$arch".msi
[ -e "$1" ] || { echo "no installer for $arch; ./package makes it" >&2; exit 1; }
msi=$1
version=${msi##*/tarvex-}
version=${version%-"$arch".msi}

# msiinfo writes the icon of that table into the folder that it is in.
cd "$root/build/test-logs"

rows() {
  msiinfo export "$msi" "$1" | tr -d '\r' | tail -n +4 | sort
}

# Sizes and hashes are the build's.
table() {
  case $1 in
    _SummaryInformation) msiinfo suminfo "$msi" | grep -vE '^(Revision|Created|Last saved)' ;;
    File) rows File | awk -F '\t' 'BEGIN { OFS = FS } { $4 = "SIZE"; print }' ;;
    MsiFileHash) rows MsiFileHash | awk -F '\t' '{ print $1 "\tHASH" }' ;;
    Property) rows Property | sed 's/^ProductCode\t.*/ProductCode\tCODE/' ;;
    *) rows "$1" ;;
  esac
}

for name in $(msiinfo tables "$msi" | sort); do
  table "$name" | sed "s/^/$name\t/; s/\<$(echo "$version" | sed 's/\./\\./g')\>/VERSION/g"
done >"$found"
diff "$kept" "$found"
