# shellcheck shell=sh
# Building one preset, for ./play and ./test, which set $root and source this.

: "${root:?}"

# Nothing to do costs one ninja run and prints nothing. build_preset PRESET [TARGET...]
build_preset() {
  preset=$1
  shift
  build_folder=$root/build/$preset
  mkdir -p "$build_folder"
  if [ ! -e "$build_folder/build.ninja" ]; then
    echo "build: configuring $preset"
    log_build_step "$preset" configure cmake -S "$root" --preset "$preset" || return 1
  fi
  if ninja -C "$build_folder" -n "$@" 2>/dev/null | tail -n 1 | grep -q 'no work to do'; then
    return 0
  fi
  echo "build: building $preset"
  log_build_step "$preset" build ninja -C "$build_folder" "$@"
}

# A failed configuration leaves no build.ninja behind that would look like a finished one.
log_build_step() {
  step_preset=$1
  step_name=$2
  shift 2
  step_log=$root/build/$step_preset.$step_name.log
  if (cd "$root" && "$@") >"$step_log" 2>&1; then
    return 0
  fi
  tail -n 40 "$step_log" >&2
  echo "build: $step_name of $step_preset failed (build/$step_preset.$step_name.log)" >&2
  return 1
}
