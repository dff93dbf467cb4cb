# shellcheck shell=sh
# The 32-bit module under a 32-bit Wine. ./test sources this; it sets $root, a display and the sound first.

: "${root:?}"

# Those that go through the module's border, where the width of a pointer or a calling convention matters.
programs32='registration_test contract_test corpus_test seeking_test stop_test pages_test playback_test'

run_program32() {
  report=$logs/windows-x86-$1.json
  run_counted "windows-x86/$1" "$report" run_wine "$2" "$(windows_path "$root/build/windows-x86/tests/$1.exe")" \
    "--gtest_output=json:Z:$report"
}

run_programs32() {
  for program in $programs32; do
    read -r _ limit _ <"$root/build/windows-x86/tests/$program.test"
    run_program32 "$program" $((limit * 3))
  done
}

# Needs the packages and the movies of the 64-bit tests.
test_32_bits() {
  if ! reason=$(packaging/root32.sh allowed); then
    skip '32 bits' "$reason"
    return 0
  fi
  # shellcheck disable=SC2086  # a list of names
  build windows-x86 tarvex mkvhost render_file $programs32
  check '32-bit root' packaging/root32.sh make
  use_wine 32
  check '32-bit prefix' make_prefix
  check 'register the 32-bit module' register_module "$root/build/windows-x86/tarvex.dll"
  run_programs32
  for step in prefix installer actions upgrade zip end; do
    check "packages for 32 bits: $step" tests/packages/installed.sh "$step" x86
  done
  end_wine_server
  use_wine 64
}
