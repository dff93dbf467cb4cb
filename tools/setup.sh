#!/bin/sh
# Installs the Debian packages that ./play, ./package, ./test or ./bench needs and the machine lacks.
# Usage: tools/setup.sh play|package|test|bench|fuzz. Prints nothing when there is nothing to do.
set -eu

purpose=${1:?usage: tools/setup.sh play|package|test|bench|fuzz}

# What building the Windows host takes.
build_packages='
  cmake ninja-build patch dpkg-dev xz-utils python3
  g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64
  googletest libcli11-dev nlohmann-json3-dev libfmt-dev
  libz-mingw-w64-dev
'
# Wine, and what it loads while it runs and only recommends: windows, fonts, and drawing through OpenGL.
play_packages="$build_packages
  wine wine64 xvfb
  libxcomposite1 libxcursor1 libxfixes3 libxi6 libxinerama1 libxrandr2 libxrender1 libxxf86vm1
  fonts-wine libgl1 libgl1-mesa-dri
"
# What the 32-bit module and the packages take besides.
package_packages='
  git g++-mingw-w64-i686-posix binutils-mingw-w64-i686
  zip wixl msitools
'
# What the native builds and the checks take besides.
test_packages='
  g++ procps
  clang clang-tidy clang-format ffmpeg debootstrap osslsigncode openssl python3-yaml
  libgtest-dev zlib1g-dev libgcrypt20-dev libgpg-error-dev
'
# What ./bench takes beyond that: the other demuxers, and what makes the files.
bench_packages='
  ffmpeg mkvtoolnix pkg-config
  libavformat-dev libavcodec-dev libavutil-dev
  libgstreamer1.0-dev gstreamer1.0-plugins-good
'
# What fuzzing and counting lines take: no Wine.
fuzz_packages='
  cmake ninja-build patch dpkg-dev xz-utils python3 g++ clang llvm
  googletest libgtest-dev libcli11-dev nlohmann-json3-dev libfmt-dev
  zlib1g-dev libgcrypt20-dev libgpg-error-dev
'

fail() {
  echo "setup: $*" >&2
  exit 1
}

case $purpose in
  play) wanted=$play_packages ;;
  package) wanted="$build_packages $package_packages" ;;
  test) wanted="$play_packages $package_packages $test_packages" ;;
  bench) wanted="$play_packages $package_packages $test_packages $bench_packages" ;;
  fuzz) wanted=$fuzz_packages ;;
  *) fail "unknown purpose $purpose" ;;
esac

# dpkg-query complains about names it has never heard of; to us those are simply missing.
missing_packages() {
  # shellcheck disable=SC2086  # a list of names
  set -- $wanted
  present=$(dpkg-query -W -f='${db:Status-Abbrev} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^ii  *//p' || true)
  for name; do
    case "
$present
" in
      *"
$name
"*) ;;
      *) printf '%s ' "$name" ;;
    esac
  done
}

as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    fail "not root, and there is no sudo. As root: apt-get install $missing"
  fi
}

apt() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300 "$@"
}

unknown_packages() {
  for name in $missing; do
    candidate=$(apt-cache policy "$name" 2>/dev/null | sed -n 's/^ *Candidate: //p')
    case $candidate in
      '' | '(none)') printf '%s ' "$name" ;;
    esac
  done
}

install_missing() {
  if [ -n "$(unknown_packages)" ]; then
    apt update
  fi
  unknown=$(unknown_packages)
  if [ -n "$unknown" ]; then
    fail "the mirror has no package ${unknown% }"
  fi
  # A package list older than the mirror asks for files that are gone; a fresh list cures that.
  # shellcheck disable=SC2086  # a list of names
  apt install -y --no-install-recommends $missing || {
    apt update
    apt install -y --no-install-recommends $missing
  }
}

command -v apt-get >/dev/null || fail 'this is no Debian system: apt-get is missing'
missing=$(missing_packages)
[ -n "$missing" ] || exit 0
echo "setup: installing ${missing% }"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
set +e
(
  set -e
  install_missing
) </dev/null >"$log" 2>&1
code=$?
set -e
if [ $code -ne 0 ]; then
  tail -n 20 "$log" >&2
  exit 1
fi
left=$(missing_packages)
[ -z "$left" ] || fail "still missing after installing: $left"
