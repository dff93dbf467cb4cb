#!/bin/sh
# Installs the packages as their users do, in a Wine prefix that has seen nothing else, plays from there,
# removes them and looks for what is left. Usage: tests/packages/installed.sh STEP [x86], after ./package and
# in this order:
#   prefix      makes the prefix; without registration the player finds no splitter
#   installer   the .msi
#   zip         the .zip with its scripts
#   entries     both had written the same into the registry; the prefix is deleted
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
step=${1:?usage: tests/packages/installed.sh prefix|installer|zip|entries [x86]}
arch=${2:-x64}
. "$root/packaging/wine.sh"
[ "$arch" = x64 ] || use_wine 32
WINEPREFIX=$root/build/wine-packages-$arch
export LC_ALL=C

kept=$root/build/packages-test-$arch
sample=$(windows_path "$root/tests/data/sample.mkv")
render_file=$(windows_path "$root/build/windows-$arch/tests/render_file.exe")
unpacked=$kept/unpacked
extensions='HKLM\Software\Classes\Media Type\Extensions'

fail() {
  echo "packages: $*" >&2
  exit 1
}

# package_of SUFFIX: there is one, whatever the version.
package_of() {
  set -- "$root"/build/packages/tarvex-*-"$arch"."$1"
  [ -e "$1" ] || fail "no package $1; ./package makes it"
  echo "$1"
}

# One line for each key and each value, the value with its key before it. What Wine notes down about the
# machine is left out.
registry_lines() {
  rm -f "$kept/registry.reg"
  run_wine 60 regedit /E "$(windows_path "$kept/registry.reg")" || fail 'the registry could not be exported'
  iconv -f UTF-16 -t UTF-8 "$kept/registry.reg" | awk '
    { sub(/\r$/, "") }
    continued { sub(/^ +/, ""); $0 = line $0 }
    { continued = /=hex.*\\$/ }
    continued { line = substr($0, 1, length($0) - 1); next }
    /^\[/ { key = $0; print; next }
    /=/ { print key, $0 }' |
    grep -E '^\[HKEY_(LOCAL_MACHINE|USERS\\[^\\]*)\\Software' | grep -v '\\Software\\Wine' | sort
}

# Wine's installer makes these for itself on first use and keeps them.
installer_own_keys() {
  for key in 'Classes\Installer' 'Classes\Installer\Features' 'Classes\Installer\Products' \
    'Classes\Installer\UpgradeCodes'; do
    printf '[HKEY_LOCAL_MACHINE\\Software\\%s]\n' "$key"
  done
  for key in UpgradeCodes UserData 'UserData\S-1-5-18' 'UserData\S-1-5-18\Components' \
    'UserData\S-1-5-18\Products'; do
    printf '[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\%s]\n' "$key"
  done
  echo ./windows/Installer
}

file_lines() {
  (cd "$WINEPREFIX/drive_c" && find . | sort)
}

take_snapshot() {
  registry_lines >"$kept/$1.registry"
  file_lines >"$kept/$1.files"
}

# What SNAPSHOT has and the one before any installation has not.
added_in() {
  comm -13 "$kept/before.$2" "$kept/$1.$2"
}

nothing_left() {
  take_snapshot "$1"
  installer_own_keys >"$kept/own"
  for kind in registry files; do
    comm -3 "$kept/before.$kind" "$kept/$1.$kind" | sed 's/^\t//' | grep -vxF -f "$kept/own" || continue
    fail "the $kind is not as it was before ($1)"
  done
}

# An entry of another splitter, which would be asked instead of ours as long as it is there.
add_foreign_entry() {
  run_wine 60 reg add "$extensions\\.mkv" /v 'Source Filter' /d '{00000000-0000-0000-0000-000000000001}' /f
}

# play_from FOLDER: RenderFile takes the splitter of that folder, and the host that lies there plays.
play_from() {
  run_wine 60 "$render_file" "$sample" | tr -d '\r' | tee "$kept/played"
  grep -qxF "module $1\\tarvex.dll" "$kept/played" || fail "the splitter does not come from $1"
  grep -qx played "$kept/played" || fail 'RenderFile plays nothing'
  run_wine 60 "$1\\mkvhost.exe" play --no-clock "$sample" || fail 'the host does not play'
}

# A first play finds the sound devices, which Wine notes down.
make_clean_prefix() {
  end_wine_server
  rm -rf "$WINEPREFIX" "$kept"
  mkdir -p "$kept"
  make_prefix
  python3 -m zipfile -e "$(package_of zip)" "$unpacked"
  run_wine 60 "$(windows_path "$(echo "$unpacked"/*/mkvhost.exe)")" play --no-clock \
    --module "$(windows_path "$(echo "$unpacked"/*/tarvex.dll)")" "$sample"
  if run_wine 60 "$render_file" "$sample"; then
    fail 'RenderFile plays without any splitter'
  fi
  take_snapshot before
}

try_installer() {
  msi=$(windows_path "$(package_of msi)")
  add_foreign_entry
  run_wine 60 msiexec /i "$msi" /qn || fail 'msiexec /i failed'
  take_snapshot installer
  added_in installer files
  play_from 'C:\Program Files\Tarvex Matroska Splitter'
  run_wine 60 msiexec /x "$msi" /qn || fail 'msiexec /x failed'
  nothing_left after-installer
}

try_zip() {
  folder=$WINEPREFIX/drive_c/tools
  mkdir "$folder"
  cp -R "$unpacked"/*/. "$folder"
  add_foreign_entry
  run_wine 60 cmd /c 'C:\tools\register.cmd' /s || fail 'register.cmd failed'
  take_snapshot zip
  play_from 'C:\tools'
  run_wine 60 cmd /c 'C:\tools\unregister.cmd' /s || fail 'unregister.cmd failed'
  rm -r "$folder"
  nothing_left after-zip
}

# The installer knows the entries by a table of its own, which must say what the module says. What it
# writes besides is its own book-keeping.
entries_of() {
  added_in "$1" registry | grep -v '\\Installer\|\\Uninstall' | sed -e 's/@=".*\\\\tarvex\.dll"/@="tarvex.dll"/'
}

compare_entries() {
  entries_of installer >"$kept/installer.entries"
  entries_of zip >"$kept/zip.entries"
  [ -s "$kept/zip.entries" ] || fail 'no entries at all'
  diff "$kept/installer.entries" "$kept/zip.entries" || fail 'the installer and the module write different entries'
  end_wine_server
  rm -rf "$WINEPREFIX"
}

use_null_sound
if [ -z "${DISPLAY:-}" ]; then
  trap stop_display EXIT
  start_display
fi
case $step in
  prefix) make_clean_prefix ;;
  installer) try_installer ;;
  zip) try_zip ;;
  entries) compare_entries ;;
  *) fail "unknown step $step" ;;
esac
