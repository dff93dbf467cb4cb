#!/bin/sh
# A small 32-bit Debian in build/wine32-root, with the 32-bit half of Wine, which a 64-bit machine cannot have
# beside its own without becoming a machine of two architectures. Nothing outside the checkout is changed.
# Usage: tools/root32.sh STEP
#   allowed           says nothing and succeeds where this user may enter such a folder, or says why not
#   make              makes it, unless it is there
#   enter COMMAND...  runs a command in it, as the caller and with the caller's Wine and test variables
# The checkout is seen in it at its own path, and so are /tmp, /dev and /proc. These mounts belong to the
# command alone: they go with it, however it ends.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
folder=$root/build/wine32-root
# Of what Wine only recommends, OpenGL alone: pictures are drawn with it.
included='wine32,wine,libgl1,libgl1-mesa-dri'
variables='WINEPREFIX WINEDEBUG WINEDLLOVERRIDES DISPLAY ALSA_CONFIG_PATH XDG_CACHE_HOME XDG_CONFIG_HOME LC_ALL TZ'

fail() {
  echo "root32: $*" >&2
  exit 1
}

as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  else
    sudo -n "$@"
  fi
}

is_allowed() {
  if [ "$(id -u)" != 0 ] && ! sudo -n true 2>/dev/null; then
    echo 'neither root nor allowed to use sudo without a password, so no 32-bit root can be entered'
    return 1
  fi
  if ! as_root unshare -m chroot / true 2>/dev/null; then
    echo 'this machine lets nobody use mounts and chroot of their own, so no 32-bit root can be entered'
    return 1
  fi
}

# The release's own suite, from wherever this machine gets it.
mirror() {
  apt-get indextargets --format '$(SITE)' 'Created-By: Packages' "Codename: $1" 'Component: main' | head -n 1
}

# debootstrap mounts /proc in the new folder; in a mount namespace of its own none of that can be left over.
make_locked() {
  [ "$(cat "$folder/made-of" 2>/dev/null)" != "$included" ] || return 0
  echo 'root32: making build/wine32-root, a 32-bit Debian with Wine'
  # shellcheck source=/dev/null
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  from=$(mirror "$codename")
  [ -n "$from" ] || fail "this machine's apt knows no source of $codename"
  as_root rm -rf "$folder" "$folder.new"
  if ! as_root unshare -m debootstrap --arch=i386 --variant=minbase "--include=$included" \
    "$codename" "$folder.new" "$from" >"$root/build/root32.log" 2>&1; then
    tail -n 20 "$root/build/root32.log" >&2
    fail 'the 32-bit root could not be made (build/root32.log)'
  fi
  as_root sh -c 'rm -rf "$1"/var/cache/apt/archives/*.deb "$1"/var/lib/apt/lists/* && echo "$2" >"$1/made-of"' - \
    "$folder.new" "$included"
  as_root mv "$folder.new" "$folder"
}

make_root() {
  mkdir -p "$root/build"
  (
    flock 8
    make_locked 8>&-
  ) 8>"$root/build/root32.lock"
}

# Runs as root in a mount namespace of its own. /dev and /proc with what is mounted in them.
mount_and_enter() {
  inside=$1
  checkout=$2
  user=$3
  shift 3
  mount --rbind /dev "$inside/dev"
  mount --rbind /proc "$inside/proc"
  mount --bind /tmp "$inside/tmp"
  mkdir -p "$inside$checkout"
  mount --bind "$checkout" "$inside$checkout"
  cd "$checkout"
  exec chroot "--userspec=$user" "$inside" "$@"
}

enter() {
  for name in $variables; do
    eval "value=\${$name:-}"
    [ -z "$value" ] || set -- "$name=$value" "$@"
  done
  while read -r name; do
    eval "set -- \"$name=\$$name\" \"\$@\""
  done <<LIST
$(env | sed -n 's/^\(TARVEX_[A-Z_]*\)=.*/\1/p')
LIST
  as_root unshare -m "$root/tools/root32.sh" mounted "$folder" "$root" "$(id -u):$(id -g)" \
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME="$root/build" "$@"
}

step=${1:?usage: tools/root32.sh allowed|make|enter COMMAND...}
shift
case $step in
  allowed) is_allowed ;;
  make) make_root ;;
  enter) enter "$@" ;;
  mounted) mount_and_enter "$@" ;;
  *) fail "unknown step $step" ;;
esac
