#!/bin/sh
# Looks into a built module. Usage: tests/checks/dll.sh imports|exports|host|guards DLL
#   imports: only DLLs that every Windows has
#   exports: the four functions that COM asks for, undecorated, and nothing else
#   host: no function that changes the process that it is loaded into
#   guards: addresses are random, data is not executable
set -eu

what=${1:?usage: tests/checks/dll.sh imports|exports|host|guards DLL}
dll=${2:?usage: tests/checks/dll.sh imports|exports|host|guards DLL}
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

# Names of imported functions, without the argument sizes of 32-bit ones.
imported_functions() {
  echo "$dump" | sed -n '/^There is an import table/,/^There is an export table/s/^\t[0-9a-f]*\t *[0-9]* *\([A-Za-z_][A-Za-z0-9_]*\).*/\1/p'
}

check_host() {
  imported_functions | grep -qx WaitForSingleObject || { echo 'no imports are seen'; return 1; }
  ! imported_functions | grep -xE 'AddVectored.*|SetUnhandledExceptionFilter|DisableThreadLibraryCalls|SetErrorMode|SetThreadErrorMode|SetCurrentDirectory.|SetDllDirectory.|SetEnvironmentVariable.|SetConsole.*|timeBeginPeriod|SetPriorityClass'
}

check_guards() {
  case $dump in
    *pei-x86-64*) wanted='HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT' ;;
    *) wanted='DYNAMIC_BASE NX_COMPAT' ;;
  esac
  for guard in $wanted; do
    echo "$dump" | grep -q "^[[:space:]]*$guard\$" || { echo "without $guard"; return 1; }
  done
}

case $what in
  host) check_host ;;
  guards) check_guards ;;
  imports) check_imports ;;
  exports) check_exports ;;
  *) exit 2 ;;
esac
