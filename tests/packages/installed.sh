#!/bin/sh
# Installs the packages as their users do, in a Wine prefix that has seen nothing else, plays from there,
# removes them and looks for what is left. Usage: tests/packages/installed.sh STEP [x86], after ./package and
# in this order:
#   prefix      makes the prefix; without registration the player finds no splitter
#   installer   the .msi is installed, plays, is repaired and removed
#   actions     the installer's actions write what its tables write, and do no harm when they fail
#   upgrade     a newer installer while the older module plays; the older one is refused after it
#   zip         the .zip with its scripts
#   pages       both pages at twice the density, where nothing else can be disturbed by it
#   end         the prefix is deleted
# Installer and scripts must write just what entries.txt says, and leave nothing.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
step=${1:?usage: tests/packages/installed.sh prefix|installer|actions|upgrade|zip|pages|end [x86]}
arch=${2:-x64}
. "$root/tools/wine.sh"
. "$root/packaging/addresses.sh"
[ "$arch" = x64 ] || use_wine 32
WINEPREFIX=$root/build/wine-packages-$arch
export LC_ALL=C

kept=$root/build/packages-test-$arch
sample=$(windows_path "$root/tests/data/sample.mkv")
playback_test=$(windows_path "$root/build/windows-$arch/tests/playback_test.exe")
unpacked=$kept/unpacked
programs='C:\Program Files\Tarvex Matroska Splitter'
splitter='{F90F48F0-3C28-4C86-AD91-B62C99A0EA47}'
wine_settings='HKCU\Software\Wine\AppDefaults'
version=$(sed -n 's/^project(tarvex VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")
media_types='HKLM\Software\Classes\Media Type'

. "$root/tests/packages/snapshots.sh"

# Needs the pictures of make_pictures.sh. A first play finds the sound devices, which Wine notes down.
make_clean_prefix() {
  end_wine_server
  rm -rf "$WINEPREFIX" "$kept"
  mkdir -p "$kept"
  make_prefix
  python3 -m zipfile -e "$(package_of zip)" "$unpacked"
  run_wine 60 "$(windows_path "$(echo "$unpacked"/*/mkvhost.exe)")" play --no-clock \
    --module "$(windows_path "$(echo "$unpacked"/*/tarvex.dll)")" "$sample"
  if run_wine 60 "$playback_test"; then
    fail 'RenderFile plays without any splitter'
  fi
  # Others, which must stay.
  add_source 'Extensions\.tarvextest'
  add_source '{00000000-0000-0000-0000-000000000000}\{00000000-0000-0000-0000-000000000001}'
  take_snapshot before
}

# Of a Windows path on drive C.
unix_path() {
  printf '%s/drive_c/%s' "$WINEPREFIX" "${1#C:?}" | tr '\\' '/'
}

msi_of_package() {
  windows_path "$(package_of msi)"
}

installer_property() {
  msiinfo export "$(package_of msi)" Property | tr -d '\r' | sed -n "s/^$1\t//p"
}

# install MSI [PROPERTY=VALUE...]
install() {
  run_wine 60 msiexec /i "$@" /qn
}

# remove MSI SNAPSHOT
remove() {
  run_wine 60 msiexec /x "$1" /qn || fail 'msiexec /x failed'
  nothing_left "after-$2"
}

# Wine says here that it is that Windows.
refused_on_old_windows() {
  run_wine 60 reg add "$wine_settings\\msiexec.exe" /v Version /d vista /f
  if install "$(msi_of_package)"; then
    fail 'it can be installed on Windows Vista'
  fi
  run_wine 60 reg delete "$wine_settings" /f
  nothing_left after-refusal
}

# A file and an entry that are gone come back. The long form of msiexec /f, which Wine has not.
try_repair() {
  rm "$(unix_path "$programs")/README.txt"
  run_wine 60 reg delete "HKLM\\Software\\Classes\\CLSID\\$splitter\\InprocServer32" /f
  install "$(msi_of_package)" REINSTALL=ALL REINSTALLMODE=amus || fail 'the repair failed'
  take_snapshot repaired
  entries_are_right repaired
  [ -s "$(unix_path "$programs")/README.txt" ] || fail 'a repair leaves a file missing'
}

try_installer() {
  refused_on_old_windows
  add_foreign_entries
  install "$(msi_of_package)" || fail 'msiexec /i failed'
  take_snapshot installer
  added_in installer files
  entries_are_right installer
  program_is_listed installer
  play_from "$programs"
  try_repair
  remove "$(msi_of_package)" installer
}

# variant NAME STATEMENT...: the installer with something else in its tables.
variant() {
  variant_file=$kept/$1.msi
  shift
  cp "$(package_of msi)" "$variant_file"
  for statement; do
    msibuild "$variant_file" -q "$statement"
  done
  windows_path "$variant_file"
}

try_actions() {
  alone=$(variant alone 'DELETE FROM Registry' 'DELETE FROM RemoveRegistry')
  install "$alone" || fail 'the installer without its tables failed'
  take_snapshot alone
  entries_are_right alone
  remove "$alone" alone
  failing=$(variant failing "UPDATE CustomAction SET Target = 'C:\\no-such-program.exe'")
  install "$failing" || fail 'a failing action ends the installation'
  take_snapshot failing
  entries_are_right failing
  remove "$failing" failing
}

# The same but for its version and code.
older_version() {
  variant older \
    "UPDATE Property SET Value = '{11111111-2222-3333-4444-555555555555}' WHERE Property = 'ProductCode'" \
    "UPDATE Property SET Value = '0.0.1' WHERE Property = 'ProductVersion'" \
    "UPDATE File SET Version = '0.0.1.0' WHERE Version = '$version.0'" \
    "DELETE FROM Upgrade WHERE ActionProperty = 'WIX_DOWNGRADE_DETECTED'" \
    "INSERT INTO Upgrade (UpgradeCode, VersionMin, Attributes, ActionProperty) VALUES
      ('$(installer_property UpgradeCode)', '0.0.1', 2, 'WIX_DOWNGRADE_DETECTED')"
}

# The host's log has a line as soon as the module is loaded.
start_player() {
  rm -f "$kept/player.log"
  run_wine 60 "$programs\\mkvhost.exe" play --log "$(windows_path "$kept/player.log")" "$sample" &
  player=$!
  for _ in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do
    [ ! -s "$kept/player.log" ] || return 0
    sleep 0.5
  done
  fail 'the player does not start'
}

try_upgrade() {
  older=$(older_version)
  install "$older" || fail 'the older version cannot be installed'
  start_player
  install "$(msi_of_package)" || fail 'the newer version cannot be installed over the older'
  kill -0 "$player" || fail 'the player had ended before'
  wait "$player" || fail 'the player did not survive'
  take_snapshot upgraded
  entries_are_right upgraded
  program_is_listed upgraded
  play_from "$programs"
  if install "$older"; then
    fail 'the older version can be installed over the newer'
  fi
  remove "$(msi_of_package)" upgrade
}

# Where nothing can be written, as the scripts see it: no program there does what it is told.
scripts_say_who_may() {
  for script in register unregister; do
    run_wine 60 cmd /c "set SystemRoot=C:\\nowhere& C:\\tools\\$script.cmd /s" | tr -d '\r' >"$kept/refused"
    grep -qx "Not allowed to $script: .* and choose \"Run as administrator\"\\." "$kept/refused" ||
      fail "$script.cmd does not say who may"
  done
}

try_zip() {
  folder=$WINEPREFIX/drive_c/tools
  mkdir "$folder"
  cp -R "$unpacked"/*/. "$folder"
  scripts_say_who_may
  add_foreign_entries
  for _ in once again; do
    run_wine 60 cmd /c 'C:\tools\register.cmd' /s || fail 'register.cmd failed'
  done
  take_snapshot zip
  entries_are_right zip
  play_from 'C:\tools'
  for _ in once again; do
    run_wine 60 cmd /c 'C:\tools\unregister.cmd' /s || fail 'unregister.cmd failed'
  done
  rm -r "$folder"
  nothing_left after-zip
}

# What the pages say of their widths: "NAME page PIXELS wide".
page_widths() {
  run_wine 120 "$(windows_path "$root/build/windows-x64/tests/pages_test.exe")" \
    '--gtest_filter=AboutPage*:SettingsPage.Shows*:SettingsPage.OnADenser*' >"$kept/pages" || fail 'the pages differ'
  tr -d '\r' <"$kept/pages" | grep -o '[a-z]* page [0-9]* wide'
}

try_pages() {
  page_widths >"$kept/usual"
  run_wine 60 reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d 192 /f
  page_widths >"$kept/dense"
  run_wine 60 reg delete 'HKCU\Control Panel\Desktop' /v LogPixels /f
  paste "$kept/usual" "$kept/dense" | awk '
    $1 != $5 || $7 * 10 < $3 * 17 { wrong = 1 }
    { print }
    END { exit wrong || NR != 2 }' || fail 'a page does not grow with the density'
}

end_prefix() {
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
  actions) try_actions ;;
  upgrade) try_upgrade ;;
  zip) try_zip ;;
  pages) try_pages ;;
  end) end_prefix ;;
  *) fail "unknown step $step" ;;
esac
