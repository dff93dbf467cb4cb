#!/bin/sh
# The debug information beside the packages belongs to the programs in them: a place in the module, which a crash
# report would name, is found in it. Usage: tests/packages/symbols.sh x64|x86, after ./package
set -eu

arch=${1:?usage: tests/packages/symbols.sh x64|x86}
root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
work=$root/build/packages-symbols-$arch
case $arch in
  x64) tools=x86_64-w64-mingw32 entry=DllRegisterServer ;;
  x86) tools=i686-w64-mingw32 entry=DllRegisterServer ;;
esac
rm -rf "$work"
for name in "$root"/build/packages/tarvex-*-"$arch".zip "$root"/build/packages/tarvex-*-"$arch"-symbols.zip; do
  python3 -m zipfile -e "$name" "$work"
done
module=$(echo "$work"/tarvex-*-"$arch"/tarvex.dll)
symbols=$(echo "$work"/tarvex-*-"$arch"-symbols/tarvex.dll.debug)
"$tools-objdump" -s -j .gnu_debuglink "$module" | grep -q 'tarvex.dll.de' || { echo 'the module names no symbols'; exit 1; }

# The exported function's address, from the published module alone.
dump=$("$tools-objdump" -p "$module")
base=$(echo "$dump" | sed -n 's/^ImageBase[[:space:]]*//p')
table=$(echo "$dump" | grep -n "$entry\$" | head -n 1 | sed 's/.*\[ *\([0-9]*\)\].*/\1/')
offset=$(echo "$dump" | sed -n "s/^\t\[ *$table\] +base\[ *[0-9]*\] \([0-9a-f]*\) Export RVA\$/\1/p")
address=$(printf '0x%x' $((0x$base + 0x$offset)))
place=$("$tools-addr2line" -f -e "$symbols" "$address")
echo "$address is $place"
echo "$place" | grep -q "$entry" && echo "$place" | grep -q '^\./.*module/exports\.cpp:[0-9]'
