#!/bin/sh
# Installs the Debian packages that ./bench needs beyond those of ./test: the other demuxers, and what makes
# the files. Prints nothing when there is nothing to do. Usage: benchmarks/setup.sh
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
"$here/../packaging/setup.sh" test

wanted='
  ffmpeg mkvtoolnix pkg-config
  libavformat-dev libavcodec-dev libavutil-dev
  libgstreamer1.0-dev gstreamer1.0-plugins-good
'

missing_packages() {
  for name in $wanted; do
    case $(dpkg-query -W -f='${db:Status-Abbrev}' "$name" 2>/dev/null || true) in
      ii*) ;;
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
    echo "bench: not root, and there is no sudo. As root: apt-get install $missing" >&2
    exit 1
  fi
}

apt() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300 "$@"
}

# A package list older than the mirror asks for files that are gone; a fresh list cures that.
install_missing() {
  # shellcheck disable=SC2086  # a list of names
  apt install -y --no-install-recommends $missing || {
    apt update
    apt install -y --no-install-recommends $missing
  }
}

missing=$(missing_packages)
[ -n "$missing" ] || exit 0
echo "bench: installing ${missing% }"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! install_missing </dev/null >"$log" 2>&1; then
  tail -n 20 "$log" >&2
  exit 1
fi
left=$(missing_packages)
[ -z "$left" ] || { echo "bench: still missing after installing: $left" >&2; exit 1; }
