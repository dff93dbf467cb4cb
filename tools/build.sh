# shellcheck shell=sh
# Building one preset, for ./play and ./test, which set $root and source this.

: "${root:?}"

# Costs one ninja run. preset_is_built PRESET [TARGET...]
preset_is_built() {
  build_folder=$root/build/$1
  shift
  [ -e "$build_folder/build.ninja" ] &&
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
  if [ ! -e "$root/build/$preset/build.ninja" ]; then
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
