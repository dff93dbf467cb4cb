#!/bin/sh
# Builds the third-party libraries that a preset links: libebml and libmatroska from Debian's source
# packages with our patches, and GoogleTest. Usage: cmake/deps.sh PRESET
# The result is build/deps/PRESET (include/, lib/). CMake calls this while configuring; when the result
# is up to date it costs a few milliseconds and prints nothing. Two callers at once are fine: the
# second waits for the first.
set -eu

preset=${1:?usage: cmake/deps.sh PRESET}
root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
cache=$root/build/deps
sources=$cache/src
prefix=$cache/$preset
work=$cache/tree/$preset
patches=$root/third_party/patches
ebml_version=1.4.4
matroska_version=1.7.1
googletest=/usr/src/googletest

fail() {
  echo "cmake/deps.sh: $*" >&2
  exit 1
}

# Runs a function with its output in a log, whose end is shown when it fails. Not written as
# "function || ...", because there the shell would ignore failing commands inside the function.
logged() {
  log=$cache/$1.log
  message=$2
  shift 2
  set +e
  (
    set -e
    "$@"
  ) >"$log" 2>&1
  code=$?
  set -e
  if [ $code -ne 0 ]; then
    tail -n 30 "$log" >&2
    fail "$message (build/deps/${log##*/})"
  fi
}

# The compiler and the flags are those that the preset gives our own code, but for less debug information: a
# sanitizer sees only what is instrumented, and ThreadSanitizer reports false races where half the program is
# not.
choose_compiler() {
  toolchain=
  compiler=c++
  flags='-O2 -g1 -fno-omit-frame-pointer'
  case $preset in
    native) ;;
    native-asan) flags='-O1 -g1 -fno-omit-frame-pointer -fsanitize=address,undefined -fno-sanitize-recover=all' ;;
    native-tsan) flags='-O1 -g1 -fno-omit-frame-pointer -fsanitize=thread' ;;
    native-fuzz)
      compiler=clang++
      flags="$flags -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all" ;;
    windows-x64)
      compiler=x86_64-w64-mingw32-g++-posix toolchain=$root/cmake/toolchain-windows-x64.cmake
      flags='-O2 -g1 -DNDEBUG -fno-ipa-ra -fno-ipa-stack-alignment' ;;
    windows-x86)
      compiler=i686-w64-mingw32-g++-posix toolchain=$root/cmake/toolchain-windows-x86.cmake
      flags='-O2 -g1 -DNDEBUG -fno-ipa-ra -fno-ipa-stack-alignment' ;;
    *) fail "unknown preset $preset" ;;
  esac
  command -v "$compiler" >/dev/null || fail "$compiler is missing; tools/setup.sh installs it"
}

patch_files() {
  for file in "$patches/$1"/*.patch; do
    if [ -e "$file" ]; then
      echo "$file"
    fi
  done
}

# Everything that the result depends on. A change of any of it is a reason to build again. Of what presets
# differ in only this one's counts, so that another preset is no reason.
stamp_text() {
  "$compiler" --version | head -n 1
  echo "$flags" "$ebml_version" "$matroska_version"
  sed '/^choose_compiler() {/,/^}/d' "$root/cmake/deps.sh"
  cat "$root"/cmake/toolchain-*.cmake
  for name in libebml libmatroska; do
    for file in $(patch_files $name); do
      echo "$name/${file##*/}"
      cat "$file"
    done
  done
}

# A private copy of the machine's own apt sources with the source packages switched on, so that the
# machine's configuration stays as it is. Only this release's entries: other vendors' have no such
# packages, and may not answer for source lists at all.
write_apt_sources() {
  # shellcheck source=/dev/null
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  rm -rf "$cache/apt/parts"
  mkdir -p "$cache/apt/parts" "$cache/apt/lists/partial"
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -e "$file" ] || continue
    awk -v release="$codename" 'BEGIN { RS = ""; ORS = "\n\n" }
      $0 ~ "(^|\n)Suites:[^\n]* " release && sub(/(^|\n)Types:[^\n]*/, "\nTypes: deb-src")' \
      "$file" >"$cache/apt/parts/${file##*/}"
  done
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -e "$file" ] || continue
    sed -nE "s/^deb(-src)?( +\\[[^]]*\\])? +([^ ]+) +(${codename}[^ ]*) +/deb-src\\2 \\3 \\4 /p" \
      "$file" >"$cache/apt/parts/$(basename "$file" .list).list"
  done
  find "$cache/apt/parts" -type f -size -2c -exec rm {} +
}

private_apt() {
  apt-get -qq -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$cache/apt/parts" \
    -o Dir::State::lists="$cache/apt/lists" -o APT::Sandbox::User=root "$@"
}

# libmatroska carries no Debian patches, so its upstream archive alone is what is needed; libebml's
# security fixes are in its patch archive, which dpkg-source applies while it unpacks.
fetch_sources() {
  [ ! -e "$sources/complete" ] || return 0
  echo 'deps: fetching the sources of libebml and libmatroska'
  rm -rf "$sources"
  mkdir -p "$sources"
  logged fetch 'the sources could not be fetched' fetch_into_sources
  touch "$sources/complete"
}

fetch_into_sources() {
  cd "$sources"
  write_apt_sources
  private_apt update
  private_apt source libebml || fail 'the mirror has no source package libebml'
  private_apt source --tar-only libmatroska || fail 'the mirror has no source package libmatroska'
  [ -d "libebml-$ebml_version" ] || fail "the mirror has another libebml than $ebml_version"
  [ -e "libmatroska_$matroska_version.orig.tar.xz" ] ||
    fail "the mirror has another libmatroska than $matroska_version"
  tar -xf "libmatroska_$matroska_version.orig.tar.xz"
}

# Copies one library's sources and applies our patches to the copy, in name order.
patched_copy() {
  cp -R "$sources/$1-$2" "$work/$1"
  for file in $(patch_files "$1"); do
    echo "patch $1: ${file##*/}"
    patch -d "$work/$1" -p1 --no-backup-if-mismatch -F0 <"$file"
  done
}

# All sources of a library go through the compiler as one: they are many and small and include the same.
build_one() {
  source=$1
  shift
  build=$work/build-$(basename "$source")
  set -- "-DCMAKE_INSTALL_PREFIX=$prefix.new" -DCMAKE_INSTALL_LIBDIR=lib "-DCMAKE_PREFIX_PATH=$prefix.new" "$@"
  if [ -n "$toolchain" ]; then
    set -- "-DCMAKE_TOOLCHAIN_FILE=$toolchain" "-DCMAKE_FIND_ROOT_PATH=$prefix.new" "$@"
  fi
  if [ "$compiler" = clang++ ]; then
    set -- -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ "$@"
  fi
  cmake -S "$source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None "-DCMAKE_CXX_FLAGS=$flags $arch_flags" \
    -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0 -DBUILD_SHARED_LIBS=OFF -DCMAKE_POLICY_DEFAULT_CMP0074=NEW "$@"
  cmake --build "$build" --target install
}

# Header-only libraries are the same for every target, but /usr/include as a whole is not: the cross
# compilers must not see the machine's own system headers. So just these folders are linked.
link_header_libraries() {
  for name in CLI nlohmann fmt; do
    [ -d "/usr/include/$name" ] || fail "/usr/include/$name is missing; tools/setup.sh installs it"
    ln -s "/usr/include/$name" "$prefix.new/include/$name"
  done
}

build_all() {
  rm -rf "$work" "$prefix.new"
  mkdir -p "$work" "$prefix.new/include"
  # The debug information names files from the checkout on, so that it is the same wherever it was made.
  arch_flags="-ffile-prefix-map=$root=."
  [ "$preset" != windows-x86 ] || arch_flags="$arch_flags -msse2 -mfpmath=sse -mstackrealign"
  patched_copy libebml $ebml_version
  patched_copy libmatroska $matroska_version
  build_one "$work/libebml" -DDISABLE_PKGCONFIG=ON
  build_one "$work/libmatroska" -DDISABLE_PKGCONFIG=ON "-DEBML_DIR=$prefix.new/lib/cmake/EBML"
  build_one $googletest -DBUILD_GMOCK=OFF
  link_header_libraries
}

choose_compiler
mkdir -p "$cache"
exec 9>"$cache/lock"
flock 9
stamp=$(stamp_text | sha256sum | cut -d ' ' -f 1)
if [ "$(cat "$prefix/stamp" 2>/dev/null)" = "$stamp" ]; then
  exit 0
fi
[ -d $googletest ] || fail "$googletest is missing; tools/setup.sh installs it"
fetch_sources
echo "deps: building libebml, libmatroska and GoogleTest for $preset"
logged "$preset" "the libraries for $preset could not be built" build_all
echo "$stamp" >"$prefix.new/stamp"
rm -rf "$prefix" "$work"
mv "$prefix.new" "$prefix"
