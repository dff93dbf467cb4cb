#!/bin/sh
# Looks into a built module. Usage: tests/checks/dll.sh imports|exports DLL
#   imports: only DLLs that every Windows has
#   exports: the four functions that COM asks for, undecorated, and nothing else
set -eu

what=${1:?usage: tests/checks/dll.sh imports|exports DLL}
dll=${2:?usage: tests/checks/dll.sh imports|exports DLL}
dump=$(x86_64-w64-mingw32-objdump -p "$dll")

check_imports() {
  imports=$(echo "$dump" | sed -n 's/^.*DLL Name: //p' | tr '[:upper:]' '[:lower:]' | sort -u)
  [ -n "$imports" ]
  code=0
  for name in $imports; do
    case $name in
      kernel32.dll | msvcrt.dll | ole32.dll | oleaut32.dll | advapi32.dll | user32.dll | gdi32.dll | \
        version.dll | comctl32.dll | shell32.dll | winmm.dll) ;;
      *)
        echo "imports $name"
        code=1
        ;;
    esac
  done
  return $code
}

check_exports() {
  expected='DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer '
  exports=$(echo "$dump" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] *\(+base\[ *[0-9]*\]\)* *\([0-9a-f]\{4\} \)*//p' | sort | tr '\n' ' ')
  if [ "$exports" != "$expected" ]; then
    echo "exports $exports"
    return 1
  fi
}

case $what in
  imports) check_imports ;;
  exports) check_exports ;;
  *) exit 2 ;;
esac
