#!/usr/bin/env bash
# The project's two entry points on a fresh machine. Each installs what it
# needs from the distribution's packages, then builds.
#
#   ./run.sh demo   build the library and run the demo program, which writes
#                   its pictures to build/gcc/demo-output/
#   ./run.sh test   check that the C++ sources keep the layout of
#                   .clang-format and that test code stays at most 35% of
#                   all code; build with GCC, with Clang, and with
#                   Clang under Address-, Leak- and UndefinedBehaviorSanitizer,
#                   warnings as errors,
#                   and run every test suite in each build: in the GCC build
#                   under valgrind's memcheck too, in the sanitizer build the
#                   fuzzers for 45 seconds each (the file readers' for 25);
#                   then cross-compile for AArch64 and run the suites under
#                   qemu-user
#   ./run.sh fuzz [seconds]
#                   run each fuzzer longer in the sanitizer build
#   ./run.sh bench [benchmark options]
#                   build zt-convert-bench with OpenCV beside it in build/bench
#                   and run it once per x86 class this processor can stand
#                   in for (AVX-512, AVX2, baseline), each ending in a
#                   markdown table; the tables are printed together at the end
set -euo pipefail
cd "$(dirname "$0")"

# Debian packages the build and the tests need.
PACKAGES=(cmake ninja-build g++ clang binutils libgtest-dev libgmock-dev libbenchmark-dev
          pkgconf libpng-dev doxygen valgrind libclang-rt-14-dev dpkg-dev lintian
          g++-aarch64-linux-gnu qemu-user googletest clang-format-14
          python3-dev pybind11-dev python3-numpy python3-pytest python3-dask python3-distributed)
# The conversion benchmark's, OpenCV among them for comparison; never needed
# by the library or its tests.
BENCH_PACKAGES=(cmake ninja-build g++ libbenchmark-dev libopencv-core-dev libopencv-imgproc-dev)

# ensure_packages [package...]: installs those missing, by default PACKAGES.
ensure_packages() {
  local wanted=("$@")
  [[ ${#wanted[@]} -eq 0 ]] && wanted=("${PACKAGES[@]}")
  local missing=()
  for package in "${wanted[@]}"; do
    dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
  done
  [[ ${#missing[@]} -eq 0 ]] && return 0
  echo "Installing: ${missing[*]}"
  local sudo=()
  [[ $(id -u) -ne 0 ]] && sudo=(sudo)
  "${sudo[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# check_format: fails, naming them, on C++ sources that clang-format-14
# would lay out otherwise than they are.
check_format() {
  local files=()
  mapfile -t files < <(find source tests bench examples fuzz python tools -type f \
                         \( -name '*.cpp' -o -name '*.h' \) | sort)
  clang-format-14 --dry-run --Werror "${files[@]}"
  echo "The ${#files[@]} C++ sources keep the layout of .clang-format."
}

# check_test_share: fails when the code built or run only for tests (tests/
# and fuzz/) passes 35% of all code: C, C++, Python, shell and CMake files
# of the repository, blank lines not counted.
check_test_share() {
  local code='\.(h|hpp|hh|cpp|cc|cxx|inl|ipp|c|py|sh|cmake)$|CMakeLists\.txt$'
  local tests all
  tests=$(git ls-files -- tests fuzz | grep -E "$code" | xargs cat | grep -c -v -E '^\s*$')
  all=$(git ls-files | grep -E "$code" | xargs cat | grep -c -v -E '^\s*$')
  awk -v t="$tests" -v a="$all" 'BEGIN {
    printf "Test code: %d of %d lines of all code, %.1f%% (at most 35%%).\n", t, a, 100 * t / a
    exit (100 * t > 35 * a) }' || { echo "Test code passes 35% of all code: fold it." >&2; return 1; }
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
    check_format
    check_test_share
    cmake --workflow --preset gcc
    cmake --workflow --preset clang
    cmake --workflow --preset asan
    cmake --workflow --preset aarch64
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
  bench)
    # One process per class. The engine chooses its path by the features the
    # C library reports, which GLIBC_TUNABLES narrows; OpenCV by its own
    # switch. memcpy of the C library follows the tunables too.
    ensure_packages "${BENCH_PACKAGES[@]}"
    cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=g++ \
      -DZT_BUILD_BENCHMARKS=ON -DZT_BUILD_TESTS=OFF -DZT_BUILD_EXAMPLES=OFF \
      -DZT_BUILD_TOOLS=OFF -DZT_INSTALL=OFF >/dev/null
    cmake --build build/bench --target zt-convert-bench
    flags=$(grep -m1 '^flags' /proc/cpuinfo || true)
    rm -f build/bench/avx512.txt build/bench/avx2.txt build/bench/baseline.txt
    classes=("avx512|avx512f" "avx2|avx2" "baseline|")
    for class in "${classes[@]}"; do
      name=${class%%|*} needs=${class#*|}
      [[ -n $needs && " $flags " != *" $needs "* ]] && continue
      case $name in
        avx512) tunables=() ;;
        avx2) tunables=(GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX512F OPENCV_CPU_DISABLE=AVX512-SKX) ;;
        baseline) tunables=(GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX512F,-AVX2,-FMA
                            OPENCV_CPU_DISABLE=AVX512-SKX,AVX2) ;;
      esac
      echo "== class $name: ${tunables[*]:-as the processor is}"
      env "${tunables[@]}" ./build/bench/bench/zt-convert-bench --benchmark_min_time=0.2 \
        --benchmark_enable_random_interleaving=true "${@:2}" | tee "build/bench/$name.txt"
    done
    echo
    for class in "${classes[@]}"; do
      file="build/bench/${class%%|*}.txt"
      if [[ -f $file ]]; then
        sed -n '/^#### /,$p' "$file"
        echo
      fi
    done
    ;;
  *)
    echo "usage: $0 demo|test|fuzz [seconds]|bench [benchmark options]" >&2
    exit 2
    ;;
esac
