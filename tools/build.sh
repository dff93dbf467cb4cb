# shellcheck shell=sh
# Building one preset, for ./play and ./test, which set $root and source this.

: "${root:?}"

# ninja does not see that a preset changed: its flags would stay what they were. is_configured PRESET
is_configured() {
  [ -e "$root/build/$1/build.ninja" ] && [ ! "$root/CMakePresets.json" -nt "$root/build/$1/build.ninja" ]
}

# Costs one ninja run. preset_is_built PRESET [TARGET...]
preset_is_built() {
  build_folder=$root/build/$1
  is_configured "$1" || return 1
  shift
  ninja -C "$build_folder" -n "$@" 2>/dev/null | tail -n 1 | grep -q 'no work to do'
}

# Prints nothing when there is nothing to do. build_preset PRESET [TARGET...]
build_preset() {
  if preset_is_built "$@"; then
    return 0
  fi
  echo "build: building $1"
  preset=$1
  shift
  if ! is_configured "$preset"; then
    log_build_step "$preset" configure cmake -S "$root" --preset "$preset" || return 1
  fi
  log_build_step "$preset" build ninja -C "$root/build/$preset" "$@"
}

# The end of the log is shown when the step fails. log_build_step PRESET NAME COMMAND...
log_build_step() {
  step_preset=$1
  step_name=$2
  shift 2
  step_log=$root/build/$step_preset.$step_name.log
  mkdir -p "$root/build"
  if (cd "$root" && "$@") >"$step_log" 2>&1; then
    return 0
  fi
  tail -n 40 "$step_log" >&2
  echo "build: $step_name of $step_preset failed (build/$step_preset.$step_name.log)" >&2
  return 1
}
