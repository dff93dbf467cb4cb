# shellcheck shell=sh
# Shell functions around Wine for ./play and ./test, which set $root (the checkout) and source this.
# The prefix is build/wine or build/wine32; nothing outside the checkout is written, the user's home least of all.

: "${root:?}"

# use_wine 64 or use_wine 32: which Wine the functions below run, and its prefix. 32 is that of
# tools/root32.sh; the machine's own has 64 bits only.
use_wine() {
  wine_bits=$1
  case $wine_bits in
    64) WINEPREFIX=$root/build/wine ;;
    32) WINEPREFIX=$root/build/wine32 ;;
  esac
  export WINEPREFIX
}

use_wine 64
export WINEDEBUG=-all
# No browser engine and no .NET to install, and no menu entries in the user's home. Wine's GStreamer
# filters are off: what they can do depends on the machine's plugins, and their splitter takes every
# file at a higher merit than ours. Off while the prefix is made, they are not even registered in it.
# Wine's other decoders play the same everywhere.
export WINEDLLOVERRIDES='mscoree,mshtml,winegstreamer=;winemenubuilder.exe=d'
export XDG_CACHE_HOME="$root/build/wine-cache"

# Debian's wrapper complains about the missing 32-bit half on every start; the loader itself does not.
if [ -x /usr/lib/wine/wine64 ]; then
  wine_loader=/usr/lib/wine/wine64
else
  wine_loader=wine
fi

# Every Wine program gets a time limit: a crashed or blocked one must not hold up the caller.
# run_wine SECONDS PROGRAM ARGUMENT...
run_wine() {
  wine_limit=$1
  shift
  case $wine_bits in
    64) timeout -k 5 "$wine_limit" "$wine_loader" "$@" ;;
    32) timeout -k 5 "$wine_limit" "$root/tools/root32.sh" enter /usr/lib/wine/wine "$@" ;;
  esac
}

windows_path() {
  printf 'Z:%s' "$1" | tr '/' '\134'
}

# The crash dialog would wait for a click that nobody makes.
switch_off_crash_dialog() {
  run_wine 60 reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
}

make_prefix_locked() {
  [ ! -e "$WINEPREFIX/tarvex-ready" ] || return 0
  echo "wine: making the prefix ${WINEPREFIX#"$root"/}"
  rm -rf "$WINEPREFIX"
  mkdir -p "$WINEPREFIX" "$XDG_CACHE_HOME"
  if ! { DISPLAY='' run_wine 300 wineboot -i && switch_off_crash_dialog; } >"$WINEPREFIX.log" 2>&1; then
    tail -n 20 "$WINEPREFIX.log" >&2
    echo "wine: the prefix could not be made (${WINEPREFIX#"$root"/}.log)" >&2
    return 1
  fi
  end_wine_server
  touch "$WINEPREFIX/tarvex-ready"
}

# What the prefix's server does within 20 seconds: wine_server -k ends it and all its programs, wine_server -w waits
# until it has ended.
wine_server() {
  if [ "$wine_bits" = 32 ]; then
    timeout 20 "$root/tools/root32.sh" enter /usr/lib/wine/wineserver "$1" >>"$WINEPREFIX.log" 2>&1 || true
    return 0
  fi
  for server in /usr/lib/wine/wineserver64 /usr/lib/wine/wineserver wineserver; do
    if command -v "$server" >/dev/null 2>&1; then
      timeout 20 "$server" "$1" >>"$WINEPREFIX.log" 2>&1 || true
      return 0
    fi
  done
}

# The prefix is made without a display, and the desktop of that time has none either. Whatever starts
# while it lingers would find no place for pictures.
end_wine_server() {
  wine_server -k
  wine_server -w
}

# Wine's server outlives the programs by some seconds, so it must not inherit the lock.
make_prefix() {
  [ ! -e "$WINEPREFIX/tarvex-ready" ] || return 0
  mkdir -p "$root/build"
  (
    flock 8
    make_prefix_locked 8>&-
  ) 8>"$root/build/wine.lock"
}

# Registers DLL with regsvr32 unless this very file is registered already.
register_module() {
  module_stamp="$1 $(sha256sum <"$1")"
  if [ "$(cat "$WINEPREFIX/tarvex-registered" 2>/dev/null)" = "$module_stamp" ]; then
    return 0
  fi
  echo "wine: registering $(basename "$1")"
  if ! run_wine 60 regsvr32 /s "$(windows_path "$1")" >"$WINEPREFIX.log" 2>&1; then
    echo "wine: regsvr32 refused $1" >&2
    return 1
  fi
  echo "$module_stamp" >"$WINEPREFIX/tarvex-registered"
}

has_sound_device() {
  [ -n "${PULSE_SERVER:-}" ] || [ -S "${XDG_RUNTIME_DIR:-/nonexistent}/pulse/native" ] ||
    grep -q '^ *[0-9]' /proc/asound/cards 2>/dev/null
}

# Without a sound card an audio renderer cannot be connected. ALSA's null device stands in: it takes
# sound at the pace of a real one. There is no null device for music instruments (MIDI), which Wine looks
# for as well. Every way to be without one writes a line to the terminal, except this: a setting that the
# device does not know makes it refuse to open.
use_null_sound() {
  mkdir -p "$XDG_CACHE_HOME"
  # Others may be reading it.
  cat >"$XDG_CACHE_HOME/asound.conf.$$" <<'END'
pcm.!default { type null }
ctl.!default { type null }
seq.!default { type hw absent true }
END
  mv "$XDG_CACHE_HOME/asound.conf.$$" "$XDG_CACHE_HOME/asound.conf"
  export ALSA_CONFIG_PATH="$XDG_CACHE_HOME/asound.conf"
  # The sound server's client library leaves a folder in the user's configuration otherwise.
  export XDG_CONFIG_HOME="$XDG_CACHE_HOME"
}

# Starts a private X server on a free number and sets DISPLAY. stop_display ends it.
start_display() {
  display_file=$(mktemp)
  Xvfb -displayfd 7 -screen 0 1024x768x24 -nolisten tcp 7>"$display_file" >/dev/null 2>&1 &
  display_pid=$!
  for _ in $(seq 150); do
    DISPLAY=$(cat "$display_file")
    [ -z "$DISPLAY" ] || break
    sleep 0.1
  done
  rm -f "$display_file"
  if [ -z "$DISPLAY" ]; then
    stop_display
    echo 'Xvfb did not start' >&2
    return 1
  fi
  DISPLAY=:$DISPLAY
  export DISPLAY
}

stop_display() {
  if [ -n "${display_pid:-}" ]; then
    kill "$display_pid" 2>/dev/null || true
    wait "$display_pid" 2>/dev/null || true
    display_pid=
  fi
}
