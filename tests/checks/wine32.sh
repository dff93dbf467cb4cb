# shellcheck shell=sh
# The 32-bit module under a 32-bit Wine. ./test and its rows source this after setting $root.

: "${root:?}"

# Those that go through the module's border, where the width of a pointer or a calling convention matters.
programs32='contract_test corpus_test seeking_test fuzz_control_test pages_test playback_test'

# What the build of the 32-bit module takes besides, where it can be run.
targets32() {
  ! tools/root32.sh allowed >/dev/null || echo "$programs32"
}

# As run_program.sh takes them; an emulated program is slower than the limit was meant for.
list_programs32() {
  for name in $programs32; do
    read -r program limit _ <"$root/build/windows-x86/tests/$name.test"
    echo "windows-x86-$name windows-x86 $program $((limit * 3))"
  done
}

# The row sets a display and the sound first.
test_32_bits() {
  if ! reason=$(tools/root32.sh allowed); then
    skip '32 bits' "$reason"
    return 0
  fi
  check '32-bit root' tools/root32.sh make
  use_wine 32
  check '32-bit prefix' make_prefix
  wine_server -w
  needs windows-x86 pictures
  check 'register the 32-bit module' register_module "$root/build/windows-x86/tarvex.dll"
  list_programs32 >"$logs/windows-x86.list"
  run_list "$logs/windows-x86.list" 1
  needs packages
  for step in prefix installer actions upgrade zip end; do
    check "packages for 32 bits: $step" tests/packages/installed.sh "$step" x86
  done
  end_wine_server
}
