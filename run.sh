#!/usr/bin/env bash
# The project's two entry points on a fresh machine. Each installs what it
# needs from the distribution's packages, then builds.
#
#   ./run.sh demo   build the library and run the demo program, which writes
#                   its pictures to build/gcc/demo-output/
#   ./run.sh test   build with GCC, with Clang, and with Clang under Address-,
#                   Leak- and UndefinedBehaviorSanitizer, warnings as errors,
#                   and run every test suite in each build: in the GCC build
#                   under valgrind's memcheck too, in the sanitizer build the
#                   fuzzers for 45 seconds each (the file readers' for 25)
#   ./run.sh fuzz [seconds]
#                   run each fuzzer longer in the sanitizer build
set -euo pipefail
cd "$(dirname "$0")"

# Debian packages the build and the tests need.
PACKAGES=(cmake ninja-build g++ clang binutils libgtest-dev libgmock-dev libbenchmark-dev
          pkgconf libpng-dev doxygen valgrind libclang-rt-14-dev dpkg-dev lintian)

ensure_packages() {
  local missing=()
  for package in "${PACKAGES[@]}"; do
    dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
  done
  [[ ${#missing[@]} -eq 0 ]] && return 0
  echo "Installing: ${missing[*]}"
  local sudo=()
  [[ $(id -u) -ne 0 ]] && sudo=(sudo)
  "${sudo[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

case "${1:-}" in
  demo)
    ensure_packages
    cmake --preset gcc >/dev/null
    cmake --build --preset gcc --target zt-demo zt-convert
    # The pictures land in build/gcc/demo-output/; zt-convert, built too in
    # build/gcc/tools/, converts them further.
    ./build/gcc/examples/zt-demo build/gcc/demo-output
    ;;
  test)
    ensure_packages
    cmake --workflow --preset gcc
    cmake --workflow --preset clang
    cmake --workflow --preset asan
    ;;
  fuzz)
    # Each fuzz target for [seconds] (default 600) in the sanitizer build,
    # two at a time; a finding fails, its reproducer is left in
    # build/asan/tests/fuzz/<target>-run/.
    ensure_packages
    seconds=${2:-600}
    cmake --preset asan >/dev/null
    cmake --build --preset asan --target zt_fuzzers
    ZT_FUZZ_SECONDS=$seconds ctest --preset asan -L fuzz --timeout $((seconds + 300))
    ;;
  *)
    echo "usage: $0 demo|test|fuzz [seconds]" >&2
    exit 2
    ;;
esac
