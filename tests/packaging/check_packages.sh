#!/usr/bin/env bash
# Runs CPack on a configured build and checks what it makes.
#
#   check_packages.sh <build dir> <work dir> [<c++ compiler>]
#
# The tarball must hold the three libraries, the umbrella header, the CMake
# package and the pkg-config file; unpacked anywhere, pkg-config must lead to
# the unpacked libraries and headers and zt-convert must run.
#
# With a compiler given, the Debian packages are checked too: each file in
# its package and place, the libraries in the multiarch directory, no run
# path, the exact dependency of the development package, the ldconfig
# trigger, a copyright file each, no lintian error (when lintian is there);
# then all of them are unpacked with dpkg --root into a scratch root and a
# consumer is built against that root with find_package and run.
set -euo pipefail
build=$1 work=$2 cxx=${3:-}
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"
cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1 || {
  cat "$work/cpack.log"
  exit 1
}

status=0
fail() { echo "FAIL: $*"; status=1; }

tgz=$(find "$work" -maxdepth 1 -name 'zt-core-ex-*.tar.gz' | head -1)
[[ -n $tgz ]] || { echo "no tarball in $work:"; ls "$work"; exit 1; }

check_tree() {  # <what> <unpacked root>
  local what=$1 root=$2
  local pc
  pc=$(find "$root" -name zt-core-ex.pc | head -1)
  if [[ -z $pc ]]; then
    fail "$what: no zt-core-ex.pc"
    return
  fi
  local libdir includedir
  libdir=$(PKG_CONFIG_LIBDIR=$(dirname "$pc") pkg-config --variable=libdir zt-core-ex)
  includedir=$(PKG_CONFIG_LIBDIR=$(dirname "$pc") pkg-config --variable=includedir zt-core-ex)
  for file in "$libdir/libZt.Core.Ex.so" "$libdir/libZt.Core.so" "$libdir/libZt.Interop.Runtime30.so" \
              "$libdir/libZt.Core.Ex.so.1" "$includedir/ZtCoreEx/ZtCoreEx.h" \
              "$libdir/cmake/ZtCoreEx/ZtCoreExConfig.cmake"; do
    [[ -e $file ]] || fail "$what: $file is missing"
  done
  # The tool finds the unpacked libraries by its relative run path.
  local tool
  tool=$(find "$root" -path '*/bin/zt-convert' | head -1)
  if [[ -n $tool ]] && ! "$tool" --help >/dev/null; then
    fail "$what: $tool does not run from where it was unpacked"
  fi
  echo "$what: libdir ${libdir#"$root"}, includedir ${includedir#"$root"}${tool:+, zt-convert runs}"
}

mkdir -p "$work/tgz"
tar -xzf "$tgz" -C "$work/tgz"
check_tree "$(basename "$tgz")" "$work/tgz"

[[ -n $cxx ]] || exit $status

# --- The Debian packages ------------------------------------------------------
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
libdir=usr/lib/$multiarch
deb() { find "$work" -maxdepth 1 -name "$1_*.deb" | head -1; }
runtime=$(deb libzt-core-ex1) development=$(deb libzt-core-ex-dev) tools=$(deb zt-core-ex-tools)
for package in runtime development tools; do
  [[ -n ${!package} ]] || { echo "no $package package in $work:"; ls "$work"; exit 1; }
done
version=$(dpkg-deb -f "$runtime" Version)

# contains <package file> <path...>: each path is in that package.
contains() {
  local file=$1 listing
  shift
  listing=$(dpkg-deb -c "$file" | awk '{ print $6 }' | sed 's|^\./|/|')
  for path in "$@"; do
    grep -qxF -- "$path" <<<"$listing" || fail "$(basename "$file") lacks $path"
  done
}
contains "$runtime" /$libdir/libZt.Core.Ex.so.1 /$libdir/libZt.Core.so.1 /$libdir/libZt.Interop.Runtime30.so.1 \
  /usr/share/doc/libzt-core-ex1/copyright
contains "$development" /usr/include/ZtCoreEx/ZtCoreEx.h /$libdir/libZt.Core.Ex.so \
  /$libdir/cmake/ZtCoreEx/ZtCoreExConfig.cmake /$libdir/pkgconfig/zt-core-ex.pc \
  /usr/share/doc/libzt-core-ex-dev/copyright
contains "$tools" /usr/bin/zt-convert /usr/share/man/man1/zt-convert.1.gz \
  /usr/share/bash-completion/completions/zt-convert /usr/share/doc/zt-core-ex-tools/copyright
# Nothing in a package belongs to another one, and no library outside the multiarch directory.
if dpkg-deb -c "$runtime" | grep -qE '/usr/include/|\.so$|/bin/'; then fail "the run-time package holds development files"; fi
if dpkg-deb -c "$tools" | grep -q '\.so'; then fail "the tools package holds libraries"; fi
for file in "$runtime" "$development" "$tools"; do
  if dpkg-deb -c "$file" | grep -E '\.so' | grep -vq "/$libdir/"; then fail "$(basename "$file"): a library outside /$libdir"; fi
done

[[ $(dpkg-deb -f "$development" Depends) == *"libzt-core-ex1 (= $version)"* ]] ||
  fail "libzt-core-ex-dev does not depend on libzt-core-ex1 (= $version): $(dpkg-deb -f "$development" Depends)"
tools_depends=$(dpkg-deb -f "$tools" Depends)
[[ $tools_depends == *"libzt-core-ex1 (= $version)"* && $tools_depends == *libpng* && $tools_depends == *'libc6 (>='* ]] ||
  fail "zt-core-ex-tools does not have its computed dependencies: $tools_depends"
[[ $(dpkg-deb -I "$runtime" triggers 2>/dev/null) == *"activate-noawait ldconfig"* ]] || fail "no ldconfig trigger"
[[ $(dpkg-deb -I "$runtime" shlibs 2>/dev/null) == *"libZt.Core.Ex 1 libzt-core-ex1"* ]] || fail "no shlibs file"

if command -v lintian >/dev/null; then
  # Errors fail; warnings are listed (the README gives the reason each stays).
  lintian --fail-on error --suppress-tags initial-upload-closes-no-bugs "$runtime" "$development" "$tools" ||
    fail "lintian reports errors"
else
  echo "lintian is not installed: not run"
fi

# Unpacked into a scratch root: dpkg records them, the files are in place,
# the tool carries no run path and runs, and a consumer builds against them.
root=$work/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
touch "$root/var/lib/dpkg/status"
dpkg --root="$root" --log=/dev/null --force-not-root --force-depends --unpack \
  "$runtime" "$development" "$tools" >"$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log"; exit 1; }
for package in libzt-core-ex1 libzt-core-ex-dev zt-core-ex-tools; do
  dpkg --root="$root" -s "$package" 2>/dev/null | grep -q "^Version: $version" || fail "$package is not recorded in $root"
done
[[ -L $root/$libdir/libZt.Core.Ex.so && -f $root/$libdir/libZt.Core.Ex.so.1.0.0 ]] || fail "libraries not in /$libdir"
if readelf -d "$root/usr/bin/zt-convert" | grep -qE 'RPATH|RUNPATH'; then fail "zt-convert carries a run path"; fi
LD_LIBRARY_PATH=$root/$libdir "$root/usr/bin/zt-convert" --version || fail "the unpacked zt-convert does not run"

ctest --build-and-test "$here/find_package" "$work/consumer" --build-generator Ninja \
  --build-options -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$root/usr" \
  -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF --test-command consumer >"$work/consumer.log" 2>&1 || {
  cat "$work/consumer.log"
  fail "a consumer does not build against the unpacked packages"
}
grep -q "$root/$libdir/cmake/ZtCoreEx" "$work/consumer/CMakeCache.txt" || fail "the consumer found another ZtCoreEx"
[[ $status -eq 0 ]] && echo "Debian packages: $(cd "$work" && ls ./*.deb | tr '\n' ' ')all as expected"
exit $status
