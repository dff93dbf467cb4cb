# shellcheck shell=sh
# What a package holds and how it is put together, for ./package, which sets $root and sources this.
# Nothing here may depend on the time, the folder, the user or the order of a folder's entries: the
# packages of one commit are the same bytes everywhere.

: "${root:?}"
# Names below which the installer's codes are made. Must never change: upgrades find older versions by them.
codes_namespace=57076f48-6d98-4968-a353-2019beaf924b
# Packages whose licences want their text beside the binaries that contain them.
noticed_packages='
  libcli11-dev nlohmann-json3-dev libfmt-dev libz-mingw-w64-dev
  mingw-w64-common
'
export LC_ALL=C TZ=UTC
umask 022

package_fail() {
  echo "package: $*" >&2
  exit 1
}

. "$root/packaging/addresses.sh"

# The version is kept in one place, the project's.
version=$(sed -n 's/^project(tarvex VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")
[ -n "$version" ] || package_fail 'CMakeLists.txt names no version'

git_here() {
  git -C "$root" -c safe.directory='*' "$@"
}

# Every time in the packages is the commit's, or SOURCE_DATE_EPOCH where there is no repository.
choose_times() {
  if [ -e "$root/.git" ]; then
    SOURCE_DATE_EPOCH=$(git_here log -1 --format=%ct)
    if [ -n "$(git_here status --porcelain)" ]; then
      echo 'package: the checkout has changes that are not committed; these are no packages to publish' >&2
    fi
  elif [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
    package_fail 'no git repository here; set SOURCE_DATE_EPOCH to the time of the release, in seconds'
  fi
  export SOURCE_DATE_EPOCH
}

# Texts are read with the editors of Windows. install_text FROM TO [SYSTEM-FOLDER]
install_text() {
  sed -e 's/\r*$/\r/' -e "s/@VERSION@/$version/g; s/@SYSTEM@/${3:-}/g" "$1" >"$2"
}

# Where a console of the other width finds this one's programs.
other_system_of() {
  case $1 in
    x64) echo Sysnative ;;
    x86) echo SysWOW64 ;;
  esac
}

# A path in a program would make it another program in another folder.
names_no_folder() {
  if grep -aqF "$root/" "$1"; then
    package_fail "${1##*/} names the folder that it was built in"
  fi
}

# The program as users get it, and its debug information, which debuggers find by the name and checksum that
# the program notes of it. split_program TRIPLET FROM TO SYMBOLS
split_program() {
  "$1-objcopy" --only-keep-debug "$2" "$4"
  "$1-strip" -o "$3" "$2"
  "$1-objcopy" "--add-gnu-debuglink=$4" "$3"
  chmod 755 "$3"
  chmod 644 "$4"
  names_no_folder "$3"
  names_no_folder "$4"
}

# Programs are signed before they are packed, installers when they are done. sign FILE
sign() {
  if [ -n "${TARVEX_SIGN:-}" ]; then
    "$TARVEX_SIGN" "$1" || package_fail "${1##*/} could not be signed"
  fi
}

triplet_of() {
  case $1 in
    x64) echo x86_64-w64-mingw32 ;;
    x86) echo i686-w64-mingw32 ;;
  esac
}

write_notices() {
  cat "$root/THIRD_PARTY_NOTICES.md"
  printf '\n## Licence texts\n\nThe text of the LGPL is in LICENSE.txt.\n'
  for name in $noticed_packages; do
    [ -r "/usr/share/doc/$name/copyright" ] || package_fail "/usr/share/doc/$name/copyright is missing"
    printf '\n\n======== %s ========\n\n' "$name"
    cat "/usr/share/doc/$name/copyright"
  done
}

# The programs are those that ./test tries, less their debug information, which goes to FOLDER-symbols.
# stage_files ARCH FOLDER
stage_files() {
  binaries=$root/build/windows-$1
  mkdir -p "$2" "$2-symbols"
  for name in tarvex.dll mkvhost.exe; do
    split_program "$(triplet_of "$1")" "$binaries/$name" "$2/$name" "$2-symbols/$name.debug"
    sign "$2/$name"
  done
  for name in README.txt register.cmd unregister.cmd; do
    install_text "$root/packaging/windows/$name" "$2/$name" "$(other_system_of "$1")"
  done
  install_text "$root/LICENSE" "$2/LICENSE.txt"
  write_notices >"$2/notices"
  install_text "$2/notices" "$2/THIRD_PARTY_NOTICES.txt"
  rm "$2/notices"
  find "$2" "$2-symbols" -exec touch -d "@$SOURCE_DATE_EPOCH" {} +
}

# For host authors: the headers, and an example that builds against them. stage_sdk FOLDER
stage_sdk() {
  mkdir -p "$1/include/tarvex" "$1/examples"
  for file in "$root"/include/tarvex/*.h; do
    install_text "$file" "$1/include/tarvex/${file##*/}"
  done
  for name in CMakeLists.txt play_with_chapters.cpp; do
    install_text "$root/examples/$name" "$1/examples/$name"
  done
  install_text "$root/packaging/windows/SDK.txt" "$1/README.txt"
  install_text "$root/LICENSE" "$1/LICENSE.txt"
  find "$1" -exec touch -d "@$SOURCE_DATE_EPOCH" {} +
}

# make_zip FOLDER NAME ZIP: packs FOLDER/NAME, by name and without what only this machine knows.
make_zip() {
  (cd "$1" && find "$2" -type f | sort | zip -q -9 -X -D "$3" -@) || package_fail "zip failed for $2"
}

# A code that stays the same for the same name. code_for NAME
code_for() {
  python3 -c 'import sys, uuid; print(str(uuid.uuid5(uuid.UUID(sys.argv[1]), sys.argv[2])).upper())' \
    "$codes_namespace" "$1"
}

# Names of Windows' own folders in the installer's language: programs_of ARCH, system_of ARCH
programs_of() {
  case $1 in
    x64) echo ProgramFiles64Folder ;;
    x86) echo ProgramFilesFolder ;;
  esac
}

system_of() {
  case $1 in
    x64) echo System64Folder ;;
    x86) echo SystemFolder ;;
  esac
}

# The two architectures are products of their own, which may be installed side by side.
# run_wixl ARCH FOLDER MSI
run_wixl() {
  case $1 in
    x64) is_win64=yes ;;
    x86) is_win64=no ;;
  esac
  (cd "$2" && wixl -a "$1" -o "$3" -D "Arch=$1" -D "Version=$version" \
    -D "ProgramFiles=$(programs_of "$1")" -D "Win64=$is_win64" \
    -D "Homepage=$homepage" -D "Help=$help_page" -D "Downloads=$downloads" \
    -D "ProductCode=$(code_for "product $1 $version")" -D "UpgradeCode=$(code_for "upgrade $1")" \
    -D "ModuleCode=$(code_for "module $1")" -D "HostCode=$(code_for "host $1")" \
    -D "TextsCode=$(code_for "texts $1")" "$root/packaging/windows/tarvex.wxs")
}

# import_table MSI FILE: the installer's text form of tables has Windows line ends.
import_table() {
  sed 's/\r*$/\r/' "$2" >"$1.idt"
  msibuild "$1" -i "$1.idt"
  rm "$1.idt"
}

# add_action MSI NAME CONDITION SEQUENCE: puts an action of actions.idt into its place in the sequence.
add_action() {
  msibuild "$1" -q \
    "INSERT INTO InstallExecuteSequence (Action, Condition, Sequence) VALUES ('$2', '$3', $4)"
}

# The registry tables write all entries. The actions write the same ones through the platform's filter mapper
# besides: it keeps what it knows of registered filters for each user, and hears of changes from its own calls
# only. Their kind (64, continue) keeps a failure of theirs from ending an installation or a removal; those
# of kind 256 run when one is rolled back, and stand before what they undo. add_actions ARCH MSI
add_actions() {
  sed "s/@SYSTEM@/$(system_of "$1")/g" "$root/packaging/windows/actions.idt" >"$2.actions"
  import_table "$2" "$2.actions"
  rm "$2.actions"
  add_action "$2" MapFilterAgain 'REMOVE="ALL"' 2598
  add_action "$2" UnmapFilter 'REMOVE="ALL"' 2599
  add_action "$2" UnmapFilterAgain 'NOT Installed' 5001
  add_action "$2" MapFilter 'NOT REMOVE' 5002
}

# What wixl has no words for. A file with a version replaces one with a lower version only if the
# installer knows its version. And of two versions' equal registry entries, the older's removal must not
# take the newer's away, so the older product goes first, within what is rolled back when the newer fails.
# complete_tables ARCH MSI
complete_tables() {
  import_table "$2" "$root/packaging/windows/registry.idt"
  import_table "$2" "$root/packaging/windows/remove_registry.idt"
  add_actions "$1" "$2"
  msibuild "$2" -q "UPDATE InstallExecuteSequence SET Sequence = 1501 WHERE Action = 'RemoveExistingProducts'"
  for name in tarvex.dll mkvhost.exe; do
    msibuild "$2" -q "UPDATE File SET Version = '$version.0', Language = '1033' WHERE File = '$name'"
    msibuild "$2" -q "DELETE FROM MsiFileHash WHERE File_ = '$name'"
  done
}

# write_summary ARCH PACKAGE-CODE, in the form of an installer table
write_summary() {
  case $1 in
    x64) platform=x64 ;;
    x86) platform=Intel ;;
  esac
  time=$(date -d "@$SOURCE_DATE_EPOCH" '+%Y/%m/%d %H:%M:%S')
  printf 'PropertyId\tValue\ni2\tl255\n_SummaryInformation\tPropertyId\n'
  printf '%s\t%s\n' 1 1252 2 'Installation Database' 3 "Tarvex Matroska Splitter $version ($1)" 4 Tarvex \
    5 Installer 7 "$platform;1033" 9 "{$2}" 12 "$time" 13 "$time" 14 200 15 2 18 wixl 19 2
}

# The package code must be another for every other content. So it is made from all the rest of the file.
# make_installer ARCH FOLDER MSI
make_installer() {
  python3 -B "$root/packaging/windows/make_icon.py" "$2/../tarvex.ico"
  run_wixl "$1" "$2" "$3" || package_fail "wixl failed for $3"
  complete_tables "$1" "$3"
  write_summary "$1" 00000000-0000-0000-0000-000000000000 >"$3.summary"
  import_table "$3" "$3.summary"
  write_summary "$1" "$(code_for "package $(sha256sum <"$3")")" >"$3.summary"
  import_table "$3" "$3.summary"
  rm "$3.summary"
  sign "$3"
}

# What other software's lists and package managers ask for. describe_packages STAGE DONE
describe_packages() {
  python3 -B "$root/packaging/spdx.py" "$version" "$SOURCE_DATE_EPOCH" "$homepage" "$root" \
    "x64=$1/tarvex-$version-x64" "x86=$1/tarvex-$version-x86" >"$2/tarvex-$version.spdx.json" ||
    package_fail 'the list of what is linked in could not be made'
  python3 -B "$root/packaging/winget.py" "$version" "$(date -d "@$SOURCE_DATE_EPOCH" +%Y-%m-%d)" "$homepage" \
    "$downloads" "$2" || package_fail 'the manifests could not be made'
  case $homepage in
    *.example | *.example/*)
      echo 'package: packaging/addresses.sh has placeholders; these are no packages to publish' >&2 ;;
  esac
}
