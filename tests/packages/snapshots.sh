# shellcheck shell=sh
# What tests/packages/installed.sh looks at: a prefix's registry and files before and after, and whether a player
# finds the splitter. It sets $root, $kept (its folder), $arch and the prefix, and sources this.

: "${root:?}" "${kept:?}" "${arch:?}"

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

# Once in some thousand starts Wine's loader ends before the program is there, when a server ends at that
# moment. The export only reads, so it is made again, and said.
export_registry() {
  for attempt in 1 2 3; do
    rm -f "$kept/registry.reg"
    if run_wine 120 regedit /E "$(windows_path "$kept/registry.reg")" && [ -s "$kept/registry.reg" ]; then
      return 0
    else
      echo "packages: regedit ended with $? (attempt $attempt)" >&2
    fi
    sleep 2
  done
  fail 'the registry could not be exported'
}

# One line for each key and each value, the value with its key before it. What Wine notes down about the
# machine is left out.
registry_lines() {
  export_registry
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

# add_source KEY: below "Media Type", an entry that gives files to something else.
add_source() {
  run_wine 60 reg add "$media_types\\$1" /v 'Source Filter' /d '{00000000-0000-0000-0000-000000000001}' /f
}

# All entries of others that would be asked instead of ours as long as they are there.
add_foreign_entries() {
  for extension in mkv mka mks webm; do
    add_source "Extensions\\.$extension"
  done
  add_source '{00000000-0000-0000-0000-000000000000}\{1AC0BEBD-4D2B-45AD-BCEB-F2C41C5E3788}'
}

# play_from FOLDER: RenderFile takes the splitter of that folder, and the host that lies there plays.
play_from() {
  run_wine 60 "$playback_test" >"$kept/played" || { cat "$kept/played"; fail 'RenderFile does not play'; }
  tr -d '\r' <"$kept/played" | grep -qxF "module $1\\tarvex.dll" || fail "the splitter does not come from $1"
  run_wine 60 "$1\\mkvhost.exe" play --no-clock "$sample" || fail 'the host does not play'
}

# The entries of the splitter in SNAPSHOT, with the module's name in place of its path.
splitter_entries() {
  added_in "$1" registry | grep -v '\\Installer\|\\Uninstall' | sed 's/@=".*\\tarvex\.dll"/@="tarvex.dll"/'
}

# Compared with the kept list. Nothing in it belongs to one user, so a second user finds the same.
entries_are_right() {
  splitter_entries "$1" | diff "$root/tests/packages/entries.txt" - || fail "other entries than in entries.txt ($1)"
}

# What SNAPSHOT has in the list of programs, besides the installer's own numbers.
listed_program() {
  added_in "$1" registry | sed -n 's/^\[.*\\Uninstall\\{.*}\] //p' |
    grep -E '^"(DisplayName|DisplayVersion|Publisher|HelpLink|URLInfoAbout|URLUpdateInfo|NoModify)"='
}

program_is_listed() {
  cat >"$kept/listed" <<END
"DisplayName"="Tarvex Matroska Splitter ($arch)"
"DisplayVersion"="$version"
"HelpLink"="$help_page"
"NoModify"=dword:00000001
"Publisher"="Tarvex"
"URLInfoAbout"="$homepage"
"URLUpdateInfo"="$downloads"
END
  listed_program "$1" | diff "$kept/listed" - || fail 'the list of programs says something else'
  added_in "$1" files | grep -q 'Installer/{.*}/tarvex\.ico$' || fail 'the list of programs has no icon'
}
